// Finished images from the stream, with a recorder of the test's own put where the capture thread looks for
// it: what is handed to it, and when.
#include <thread>
#include <utility>

#include "media/movie/recorder_support.h"
#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

class ImageRecording : public RecordingTest {
  protected:
    // Rows of 6 x 3 bytes, padded to 20.
    void attach(std::uint16_t format, std::uint32_t framesPerFile = 1000) {
        ASSERT_EQ(recorder->SetFileFormat(1, 0), 0u);
        ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
        ASSERT_EQ(recorder->SetImageFormat(6, 4, 20, 4), 0u);
        ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
        ASSERT_EQ(recorder->Start(), 0u);
        recorder->AddRef();
        putRecorder(record(), *recorder, format);
    }

    // Frames from 0 on, for a writer that stops in the first of them.
    void stall(std::uint32_t buffers, std::uint32_t frames) {
        ASSERT_EQ(recorder->SetBufferCount(buffers), 0u);
        ASSERT_NO_FATAL_FAILURE(attach(1));
        log.gate.reset();
        for (std::uint32_t i = 0; i < frames; ++i) sendFrame(i, framePattern(i));
        EXPECT_TRUE(log.stopped.wait(kPatienceMs));
    }
    // Until the second frame is at the recorder, which has no buffer for it.
    void stallWithAFrameThatWaits() {
        openCamera(1, 5);
        collectRaw();
        start();
        ASSERT_NO_FATAL_FAILURE(stall(1, 2));
        EXPECT_EQ(raws.waitFor(2).size(), 2u);
        while (record().recording.operationMutex.try_lock()) {
            record().recording.operationMutex.unlock();
            std::this_thread::yield();
        }
    }

    // The test's own reference keeps the recorder open behind the camera's release, its worker at work.
    std::vector<LayoutLog::Frame> written() {
        EXPECT_EQ(recorder->SetStatus(0), 0u);
        return log.frames();
    }

    MovieFilesDouble files;
    LayoutLog log;
    Recorder recorder{files};
};

TEST_F(ImageRecording, TakesFinishedImagesForBothAviFormats) {
    openCamera(1, 5);
    collectImages();
    start();
    for (const std::uint16_t format : {1, 2}) {
        attach(format);
        const std::size_t before = images.count();
        for (std::uint32_t i = 0; i < 3; ++i) sendFrame(5 + i, framePattern(i));
        const std::vector<SeenImage> seen = images.waitFor(before + 3);
        ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
        const std::vector<LayoutLog::Frame> frames = written();
        ASSERT_GE(frames.size(), before + 3);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(frames[before + i],
                      (LayoutLog::Frame{static_cast<std::uint32_t>(i), 0, seen[before + i].data}));
        }
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

TEST_F(ImageRecording, CountsTheOldestKindAsRaw) {
    openCamera(1, 5);
    collectImages();
    start();
    attach(0);
    sendFrame(0, framePattern(0));
    images.waitFor(1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const std::vector<LayoutLog::Frame> frames = written();
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].tag, 5u) << "the frame, ahead of its colours";
}

TEST_F(ImageRecording, HoldsTheCameraUpWhileTheWriterStalls) {
    openCamera(1, 5);
    collectRaw();
    start();
    ASSERT_NO_FATAL_FAILURE(stall(2, 40));
    EXPECT_EQ(raws.waitFor(3).size(), 3u) << "two have a buffer, the third waits for one";
    EXPECT_EQ(log.frames().size(), 1u);
    std::thread stopper([&] { EXPECT_EQ(Tavra_StopTransfer(handle), 1); });
    log.gate.set();
    stopper.join();
    const std::vector<LayoutLog::Frame> frames = written();
    EXPECT_GE(frames.size(), 3u);
    for (std::uint32_t i = 0; i < frames.size(); ++i) EXPECT_EQ(frames[i].index, i) << "nothing is lost";
    EXPECT_EQ(status(), 0);
}

// More frames than there is room for anywhere on the way: the camera waits.
TEST_F(ImageRecording, LosesNothingHoweverLongTheWriterStalls) {
    openCamera(1, 5);
    collectImages();
    start();
    constexpr std::uint32_t kFrames = 256;
    ASSERT_NO_FATAL_FAILURE(stall(3, kFrames));
    log.gate.set();
    const std::vector<SeenImage> seen = images.waitFor(kFrames);
    ASSERT_EQ(seen.size(), kFrames);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const std::vector<LayoutLog::Frame> frames = written();
    ASSERT_EQ(frames.size(), kFrames);
    for (std::uint32_t i = 0; i < kFrames; ++i) EXPECT_EQ(frames[i], (LayoutLog::Frame{i, 0, seen[i].data}));
}

// The end of a recording waits until the frame has its buffer, which is then written as well.
TEST_F(ImageRecording, IsNotEndedAheadOfAFrameThatWaits) {
    ASSERT_NO_FATAL_FAILURE(stallWithAFrameThatWaits());
    std::thread stopper([&] { EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1); });
    log.gate.set();
    stopper.join();
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(written().size(), 2u);
    stopAndExpectCode(0);
}

// The handle goes while a frame waits for its buffer: the close waits for both, and what was taken is
// written.
TEST_F(ImageRecording, IsEndedByACloseWhileTheQueueIsFull) {
    ASSERT_NO_FATAL_FAILURE(stallWithAFrameThatWaits());
    std::thread closer([this] { Tavra_Close(std::exchange(handle, nullptr)); });
    log.gate.set();
    closer.join();
    EXPECT_EQ(written().size(), 2u);
}

TEST_F(ImageRecording, IgnoresImagesOfAnotherShape) {
    openCamera(1, 5);
    collectImages();
    start();
    attach(1);
    {
        RecordingSlot& slot = record().recording;
        const std::lock_guard operation(slot.operationMutex);
        slot.shape.height = 5;
    }
    sendFrame(0, framePattern(0));
    images.waitFor(1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_TRUE(written().empty());
}

}  // namespace
}  // namespace tavra::test
