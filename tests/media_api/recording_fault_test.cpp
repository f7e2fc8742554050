// Recordings whose disk fails or fills up while the camera streams on, with every layout and a disk of the
// test's own.
#include <string>

#include "media/movie/create_avi.h"
#include "media_api/avi_reader.h"
#include "media_api/recording_fixture.h"
#include "support/movie_files_double.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kMotionJpeg = 'M' | 'J' << 8 | 'P' << 16 | 'G' << 24;
constexpr std::uint32_t kFault = 1117;
constexpr std::uint32_t kFrames = 3;

struct Layout {
    const char* name;
    std::uint16_t format;
    std::uint32_t compressor;
    // Writes for kFrames frames. A failure behind them, when the file is closed, is not reported.
    std::size_t frameWrites;
};

constexpr Layout kLayouts[] = {
    {"Avi1", 1, 0, 1 + kFrames},  // an empty chunk leads
    {"Avi1Mjpeg", 1, kMotionJpeg, kFrames},
    {"Avi2", 2, 0, kFrames},
    {"Avi2Mjpeg", 2, kMotionJpeg, kFrames},
    {"Smf", 10, 0, 1 + 2 * kFrames},  // the header; a header and an image for each
};

class RecordingFault : public RecordingTest {
  protected:
    // Puts a recorder where the capture thread looks for it. It has the slot's reference alone.
    void attach(const Layout& layout, MovieFilesDouble& files, std::uint32_t framesPerFile) {
        const bool raw = layout.format == 10;
        auto* const recorder = new movie::CCreateAVI({.files = &files});
        recorder->AddRef();
        ASSERT_EQ(recorder->SetFileFormat(layout.format, layout.compressor), 0u);
        ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
        ASSERT_EQ(recorder->SetImageFormat(6, 4, raw ? 6 : 20, raw ? 1 : 4), 0u);
        ASSERT_EQ(recorder->AddFile(u"/movie"), 0u);
        ASSERT_EQ(recorder->SetNotifyWindow(receiver.window()), 0u);
        ASSERT_EQ(recorder->SetNotifyParam(reinterpret_cast<std::uintptr_t>(handle)), 0u);
        ASSERT_EQ(recorder->Start(), 0u);
        RecordingSlot& slot = record().recording;
        const std::lock_guard operation(slot.operationMutex);
        slot.format = layout.format;
        slot.shape = record().imagesA.shape();
        slot.put(recorder);
        EXPECT_EQ(expectMessage(kRecordingStarted), 0u);
    }

    // A frame that has been through the whole chain when this returns.
    void passFrame() {
        const std::size_t before = images.count();
        sendFrame(number_, framePattern(number_));
        ++number_;
        EXPECT_EQ(images.waitFor(before + 1).size(), before + 1);
    }

    // Behind the end of its writer, the recording ends with the next frame, and the stream goes on.
    void expectClosed(const MovieFilesDouble& files) {
        passFrame();
        EXPECT_FALSE(record().recording.exists());
        EXPECT_EQ(files.openFiles(), 0u);
        expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
        passFrame();
    }

    std::uint32_t number_ = 0;
};

class EveryWrite : public RecordingFault, public testing::WithParamInterface<Layout> {};

TEST_P(EveryWrite, EndsTheRecordingWithItsCodeAndClosesTheFile) {
    openCamera(1, 5);
    collectImages();
    start();
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE(nth);
        ASSERT_LT(nth, 30u);
        MovieFilesDouble files;
        files.failWrite(nth, kFault);
        attach(GetParam(), files, kFrames);
        // The frame behind the last is what ends a file.
        for (std::uint32_t i = 0; i <= kFrames; ++i) passFrame();
        const std::uint64_t code = expectMessage(kRecordingEnded);
        expectClosed(files);
        EXPECT_EQ(code, nth <= GetParam().frameWrites ? kFault : 0u);
        if (files.writeCount() < nth) break;
    }
    stopAndExpectCode(0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, EveryWrite, testing::ValuesIn(kLayouts),
                         [](const auto& layout) { return std::string(layout.param.name); });

// The writer stops in front of the end of the room, so that there is place for the indexes.
TEST_F(RecordingFault, ADiskThatFillsUpLeavesAMovieThatCanBeRead) {
    openCamera(1, 5);
    collectImages();
    start();
    MovieFilesDouble files;
    const std::uint64_t room = 0x101000 + 60000;
    files.setRoom(room);
    files.free = {.value = room};
    attach(kLayouts[2], files, 1000);
    while (record().recording.exists()) passFrame();
    EXPECT_EQ(expectMessage(kRecordingEnded), 0u);
    expectClosed(files);
    stopAndExpectCode(0);

    const PlainAvi movie(files.bytes(u"/movie"));
    const std::vector<Bytes> pictures = movie.pictures();
    const std::vector<SeenImage> seen = images.waitFor(0);
    EXPECT_GE(pictures.size(), 5u);
    EXPECT_EQ(movie.length(), pictures.size());
    ASSERT_LT(pictures.size(), seen.size());
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        // Rows of 18 bytes, filled up to 20, the last one first.
        for (std::size_t y = 0; y < 4; ++y) {
            const auto row = pictures[i].begin() + static_cast<std::ptrdiff_t>(20 * y);
            EXPECT_TRUE(
                std::equal(row, row + 18, seen[i].data.begin() + static_cast<std::ptrdiff_t>(20 * (3 - y))));
        }
    }
}

TEST_F(RecordingFault, ADiskThatIsFullUnawaresKeepsWholeRawFrames) {
    openCamera(1, 5);
    collectImages();
    start();
    MovieFilesDouble files;
    files.setRoom(376 + 5 * 48 + 30);  // the sixth frame is cut
    attach(kLayouts[4], files, 1000);
    while (record().recording.exists()) passFrame();
    EXPECT_EQ(expectMessage(kRecordingEnded), 112u);
    expectClosed(files);
    Bytes bytes = files.bytes(u"/movie");
    ASSERT_GE(bytes.size(), 376u + 5 * 48);
    bytes.resize(376 + 5 * 48);
    const RawMovie recorded = readRawMovie(bytes);
    ASSERT_EQ(recorded.frames.size(), 5u);
    for (std::uint32_t i = 0; i < 5; ++i) EXPECT_EQ(recorded.frames[i].image, framePattern(i));
    stopAndExpectCode(0);
}

TEST_F(RecordingFault, WithoutABufferThereIsNoRecording) {
    openCamera();
    record().recording.bufferCount = 0;
    expectFailure(save(), 8);
    EXPECT_EQ(status(), 0);
    EXPECT_FALSE(record().transferRunning()) << "no stream was started";
    expectNoMessage();
    std::filesystem::remove(folder / "a.smf");  // which nobody holds
    EXPECT_TRUE(folder.isEmpty());
    record().recording.bufferCount = 1;
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

}  // namespace
}  // namespace tavra::test
