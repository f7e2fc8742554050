// Recording through the exported functions, with the frames that a test sends.
#include <algorithm>
#include <map>
#include <thread>

#include "base/little_endian.h"
#include "capture_api/stream_fixture.h"
#include "media/movie/recorder_support.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kRecordingStarted = 45064;
constexpr std::uint32_t kRecordingEnded = 45065;
constexpr std::size_t kHeaderBytes = 376;
constexpr std::size_t kFrameHeaderBytes = 24;

class Recording : public StreamTest {
  protected:
    std::u16string name(const std::string& file = "a.smf") const { return wideName(folder / file); }
    TavraBool save(const std::string& file = "a.smf", std::uint32_t frames = 1000,
                   std::uint32_t compressor = 0) {
        return Tavra_SaveAVIW(handle, name(file).c_str(), compressor, frames);
    }
    void expectFailure(TavraBool result, std::uint32_t code) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(lastError(), code);
        record().lastError = 0;
    }
    std::uint8_t status() {
        std::uint8_t value = 9;
        EXPECT_EQ(Tavra_GetAVIStatus(handle, &value, nullptr, nullptr), 1);
        return value;
    }

    // The next messages, in whatever order: the stream's and the recording's come from two threads.
    void expectMessages(std::map<std::uint32_t, std::uint64_t> wanted) {
        while (!wanted.empty()) {
            ReceivedMessage got;
            ASSERT_TRUE(receiver.wait(got, kPatienceMs)) << wanted.begin()->first << " did not come";
            const auto found = wanted.find(got.message);
            ASSERT_NE(found, wanted.end()) << got.message;
            EXPECT_EQ(got.parameter1, reinterpret_cast<std::uintptr_t>(handle));
            EXPECT_EQ(got.parameter2, found->second);
            wanted.erase(found);
        }
    }
    // Starts a recording, and a stream with it.
    void startBoth(std::uint32_t frames = 1000) {
        ASSERT_EQ(save("a.smf", frames), 1) << lastError();
        expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
    }
    // Sends frames that go into the recording, and sees to it that they are there.
    void sendAndAwait(std::uint32_t first, std::uint32_t count) {
        const std::size_t before = raws.count();
        for (std::uint32_t i = 0; i < count; ++i) sendFrame(first + i, framePattern(first + i));
        EXPECT_EQ(raws.waitFor(before + count).size(), before + count);
        // A raw callback is ahead of the recorder; the next one is behind it.
        sendFrame(first + count, framePattern(first + count));
        EXPECT_EQ(raws.waitFor(before + count + 1).size(), before + count + 1);
    }
    Bytes framePattern(std::uint32_t number) const { return pattern(static_cast<std::uint8_t>(number * 5)); }

    struct Movie {
        Bytes header;
        struct Frame {
            std::uint32_t number, tag;
            Bytes image;
        };
        std::vector<Frame> frames;
        std::uint32_t field(std::size_t offset) const { return loadLe32(&header[offset]); }
    };
    Movie movie(const std::string& file = "a.smf") const {
        const Bytes bytes = readFile(folder / file);
        Movie result;
        if (bytes.size() < kHeaderBytes) {
            ADD_FAILURE() << bytes.size() << " bytes";
            return result;
        }
        result.header.assign(bytes.begin(), bytes.begin() + kHeaderBytes);
        const std::size_t image = result.field(8) * result.field(12);
        EXPECT_EQ(result.field(36), image);
        EXPECT_EQ((bytes.size() - kHeaderBytes) % (kFrameHeaderBytes + image), 0u) << "whole frames";
        for (std::size_t at = kHeaderBytes; at < bytes.size(); at += kFrameHeaderBytes + image) {
            const auto data = bytes.begin() + static_cast<std::ptrdiff_t>(at + kFrameHeaderBytes);
            result.frames.push_back({loadLe32(&bytes[at]), loadLe32(&bytes[at + 4]),
                                     Bytes(data, data + static_cast<std::ptrdiff_t>(image))});
        }
        return result;
    }

    const TempFolder folder;
};

// ---- the frames

TEST_F(Recording, KeepsTheMosaicAsItComesAndEndsTheStreamThatItStarted) {
    openCamera(1, 5);
    startBoth(3);
    for (std::uint32_t i = 0; i < 4; ++i) sendFrame(10 + i, framePattern(i));
    expectMessages({{kRecordingEnded, 0}});
    sendFrame(14, framePattern(4));
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
    EXPECT_EQ(status(), 0);
    const Movie recorded = movie();
    EXPECT_EQ(recorded.field(8), 6u);
    EXPECT_EQ(recorded.field(12), 4u);
    EXPECT_EQ(loadLe16(&recorded.header[22]), 24u);
    EXPECT_EQ(recorded.field(44), 3u);
    ASSERT_EQ(recorded.frames.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(recorded.frames[i].number, i);
        EXPECT_EQ(recorded.frames[i].tag, 5u);
        EXPECT_EQ(recorded.frames[i].image, framePattern(i));
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    expectNoMessage();
}

TEST_F(Recording, LeavesAStreamThatRanBeforeAsItWas) {
    openCamera();
    start();
    ASSERT_EQ(save("a.smf", 1), 1);
    expectMessages({{kRecordingStarted, 0}});
    sendFrame(0, framePattern(0));
    sendFrame(1, framePattern(1));
    expectMessages({{kRecordingEnded, 0}});
    sendFrame(2, framePattern(2));  // here the capture thread hears of it
    collectRaw();
    for (std::uint32_t number = 3; raws.count() == 0; ++number) {
        sendFrame(number, framePattern(number));
        std::this_thread::yield();
    }
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(movie().frames.size(), 1u);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

TEST_F(Recording, CountsFramesThatTheCameraLost) {
    openCamera();
    collectRaw();
    startBoth();
    for (const std::uint32_t number : {7u, 9u, 12u, 13u}) sendFrame(number, framePattern(number));
    ASSERT_EQ(raws.waitFor(4).size(), 4u);
    std::uint8_t state = 9;
    std::uint32_t frames = 0, position = 0;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, &frames, &position), 1);
    EXPECT_EQ(state, 1);
    EXPECT_EQ(frames, 1000u);
    EXPECT_GE(position, 5u);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    const Movie recorded = movie();
    ASSERT_GE(recorded.frames.size(), 3u);
    EXPECT_EQ(recorded.frames[0].number, 0u);
    EXPECT_EQ(recorded.frames[1].number, 2u);
    EXPECT_EQ(recorded.frames[2].number, 5u);
}

TEST_F(Recording, KeepsBytesOfWiderSamples) {
    openCamera(16, 1, 5, 3);
    collectRaw();
    startBoth();
    sendAndAwait(0, 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    const Movie recorded = movie();
    ASSERT_GE(recorded.frames.size(), 1u);
    const Bytes raw = framePattern(0);
    for (std::size_t i = 0; i < 15; ++i) EXPECT_EQ(recorded.frames[0].image[i], raw[2 * i + 1]);
}

TEST_F(Recording, KeepsFramesTurned) {
    openCamera(1, 5);
    ASSERT_EQ(Tavra_SetRotationMode(handle, 1), 1);
    collectRaw();
    startBoth();
    sendAndAwait(0, 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    const Movie recorded = movie();
    ASSERT_GE(recorded.frames.size(), 1u);
    EXPECT_EQ(recorded.field(8), 4u);
    EXPECT_EQ(recorded.field(12), 6u);
    EXPECT_EQ(recorded.frames[0].tag, 4u) << "B G / G R turned clockwise is G B / R G";
    const Bytes raw = framePattern(0);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) {
            EXPECT_EQ(recorded.frames[0].image[x * 4 + 3 - y], raw[y * 6 + x]) << x << ',' << y;
        }
    }
}

TEST_F(Recording, HasNoRawFramesOfAMonoTransferFormat) {
    openCamera(32);
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    EXPECT_TRUE(movie().frames.empty());
    expectMessages({{kRecordingEnded, 0}});
}

TEST_F(Recording, ThinsByTheFrameSize) {
    openCamera();
    ASSERT_EQ(Tavra_SetAVIFrameSize(handle, 1), 1);
    collectRaw();
    startBoth();
    sendAndAwait(0, 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    const Movie recorded = movie();
    EXPECT_EQ(recorded.field(8), 3u);
    EXPECT_EQ(recorded.field(12), 2u);
    ASSERT_GE(recorded.frames.size(), 1u);
    const Bytes raw = framePattern(0);
    EXPECT_EQ(recorded.frames[0].image, (Bytes{raw[0], raw[2], raw[4], raw[12], raw[14], raw[16]}));
}

// ---- a recorder for finished images, put where the capture thread looks for it

class ImageRecording : public Recording {
  protected:
    // Rows of 6 x 3 bytes, padded to 20.
    void attach(std::uint16_t format, std::uint32_t framesPerFile = 1000) {
        ASSERT_EQ(recorder->SetFileFormat(1, 0), 0u);
        ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
        ASSERT_EQ(recorder->SetImageFormat(6, 4, 20, 4), 0u);
        ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
        ASSERT_EQ(recorder->Start(), 0u);
        recorder->AddRef();
        RecordingSlot& slot = record().recording;
        const std::lock_guard operation(slot.operationMutex);
        slot.format = format;
        slot.shape = record().imagesA.shape();
        slot.put(&*recorder);
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
    ASSERT_EQ(recorder->SetBufferCount(2), 0u);
    attach(1);
    log.gate.reset();
    constexpr std::uint32_t kFrames = 40;
    for (std::uint32_t i = 0; i < kFrames; ++i) sendFrame(i, framePattern(i));
    EXPECT_TRUE(log.stopped.wait(kPatienceMs));
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

// ---- status

TEST_F(Recording, HasNoStatusToSetWithoutARecording) {
    openCamera();
    for (const std::uint8_t value : {0, 1, 2, 3, 255}) expectFailure(Tavra_SetAVIStatus(handle, value), 87);
    std::uint8_t state = 9;
    std::uint32_t frames = 77, position = 78;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &state, &frames, &position), 1);
    EXPECT_EQ(state, 0);
    EXPECT_EQ(frames, 77u);
    EXPECT_EQ(position, 78u);
    EXPECT_EQ(Tavra_GetAVIStatus(handle, nullptr, nullptr, nullptr), 1);
}

TEST_F(Recording, IsNotPausedThoughTheCallSucceeds) {
    openCamera();
    startBoth();
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 1), 1);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 2), 1);
    EXPECT_EQ(status(), 1);
    expectFailure(Tavra_SetAVIStatus(handle, 3), 87);
    EXPECT_EQ(status(), 1);
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    expectMessages({{kRecordingEnded, 0}});
    expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
}

TEST_F(Recording, EndsOnRequestAndItsStreamWithTheNextFrame) {
    openCamera();
    startBoth();
    EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    expectMessages({{kRecordingEnded, 0}});
    EXPECT_EQ(movie().frames.size(), 0u);
    sendFrame(0, framePattern(0));
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
}

TEST_F(Recording, CanFollowAnotherAtOnce) {
    openCamera();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(save("a.smf"), 1);
        sendFrame(0, framePattern(0));
        ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    }
    ASSERT_EQ(save("b.smf", 1), 1) << "on the stream that is there, or on a new one";
    ReceivedMessage got;
    for (std::uint32_t number = 0; std::filesystem::file_size(folder / "b.smf") < 424; ++number) {
        sendFrame(number, framePattern(number));
        while (receiver.wait(got, 1)) {
        }
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie("b.smf").frames.at(0).number, 0u);
}

// Keeps the capture thread in the frame that ended a recording, until the next one is being started.
struct LastFrame {
    TAVRA_COMMON_PARAM& camera;
    platform::Event reached{platform::Event::Reset::Manual};

    static void hold(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                     void* context, std::uint32_t*) {
        auto& self = *static_cast<LastFrame*>(context);
        if (self.camera.recording.exists()) return;
        self.reached.set();
        while (!self.camera.recording.exists() && self.camera.transferMutex.try_lock()) {
            self.camera.transferMutex.unlock();
            std::this_thread::yield();
        }
    }
};

// The stream of the first ends with it: the second gets one of its own.
TEST_F(Recording, CanFollowOneThatEndedByItsFrames) {
    openCamera(1, 5);
    LastFrame last{record()};
    std::uint32_t identifier = 0;
    ASSERT_EQ(Tavra_AddPreviewBitmapCallback(handle, LastFrame::hold, &last, &identifier), 1);
    startBoth(1);
    std::uint32_t number = 0;
    for (; !last.reached.wait(0); ++number) sendFrame(number, framePattern(number));
    ASSERT_EQ(save("b.smf", 1), 1);
    ASSERT_EQ(Tavra_RemovePreviewBitmapCallback(handle, identifier), 1);
    expectMessages({{kRecordingEnded, 0},
                    {TAVRA_MESSAGE_TRANSFER_ENDED, 0},
                    {TAVRA_MESSAGE_TRANSFER_STARTED, 0},
                    {kRecordingStarted, 0}});
    for (int i = 0; i < 2; ++i, ++number) sendFrame(number, framePattern(number));
    expectMessages({{kRecordingEnded, 0}});
    EXPECT_EQ(movie("b.smf").frames.size(), 1u);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
}

TEST_F(Recording, RefusesASecondOne) {
    openCamera();
    startBoth();
    expectFailure(save("b.smf"), 0xE0000008);
    expectFailure(save("no dot"), 0xE0000008);
    EXPECT_EQ(status(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "b.smf"));
}

TEST_F(Recording, HoldsClockRotationAndFrameSizeStill) {
    openCamera();
    startBoth();
    expectFailure(Tavra_SetClock(handle, 0, 1), 0xE0000008);
    expectFailure(Tavra_SetRotationMode(handle, 1), 0xE0000008);
    expectFailure(Tavra_SetAVIFrameSize(handle, 1), 0xE0000008);
    EXPECT_EQ(Tavra_SetAVIQuality(handle, 10), 1);
    EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1), 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    EXPECT_EQ(Tavra_SetAVIFrameSize(handle, 1), 1);
    EXPECT_EQ(Tavra_SetClock(handle, 0, 24545455), 1);
    EXPECT_EQ(loadLe32(&movie().header[48]), 75u) << "the quality of its start";
}

// ---- what ends a recording

TEST_F(Recording, EndsWithTheStream) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, kRecordingEnded) << "first the recording";
    expectMessages({{TAVRA_MESSAGE_TRANSFER_ENDED, 0}});
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(movie().frames.size(), 3u);
    expectFailure(Tavra_SetAVIStatus(handle, 0), 87);
}

TEST_F(Recording, EndsWhenTheStreamIsStartedAnew) {
    openCamera();
    startBoth();
    ASSERT_EQ(Tavra_StartTransfer(handle), 1);
    expectMessages(
        {{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
    EXPECT_EQ(status(), 0);
}

TEST_F(Recording, IsWholeWhenTheCameraIsClosed) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    Tavra_Close(handle);
    handle = nullptr;
    EXPECT_EQ(movie().frames.size(), 3u);
}

TEST_F(Recording, IsWholeWhenTheCameraIsUnplugged) {
    openCamera();
    collectRaw();
    startBoth();
    sendAndAwait(0, 2);
    usb.unplug(0);
    expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, 5}});
    EXPECT_EQ(status(), 0);
    const Movie recorded = movie();
    ASSERT_EQ(recorded.frames.size(), 3u);
    EXPECT_EQ(recorded.frames[2].image, framePattern(2));
    ASSERT_EQ(save("b.smf"), 1) << "a recording begins and ends with the stream";
    ReceivedMessage got;
    do {
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    } while (got.message != TAVRA_MESSAGE_TRANSFER_ENDED);
    EXPECT_EQ(status(), 0);
}

// ---- names

TEST_F(Recording, IsChosenByTheExtension) {
    openCamera();
    for (const char* file : {"a.smf", "a.SMF", "a.sm", "a.s", "a.b.Smf"}) {
        ASSERT_EQ(save(file), 1) << file;
        ASSERT_EQ(Tavra_StopTransfer(handle), 1);
        EXPECT_EQ(movie(file).field(0), 0x464D53u);
    }
    for (const char* file : {"a", "a.smfx", "a.mov", "a.av i", "a. smf"})
        expectFailure(save(file), 0xE000000F);
    expectFailure(Tavra_SaveAVIW(handle, nullptr, 0, 1), 0xE000000F);
    expectFailure(Tavra_SaveAVIW(handle, u"", 0, 1), 0xE000000F);
}

TEST_F(Recording, TakesNarrowNamesOfUpTo259Characters) {
    openCamera();
    ASSERT_EQ(Tavra_SaveAVIA(handle, (folder / "narrow.smf").string().c_str(), 0x20202020, 5), 1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie("narrow.smf").field(40), 0x20202020u);
    const std::string longest = std::string(255, 'x') + ".smf";
    expectFailure(Tavra_SaveAVIA(handle, longest.c_str(), 0, 1), 0xE0000009);
    expectFailure(Tavra_SaveAVIA(handle, ("x" + longest).c_str(), 0, 1), 0xE000000F);
    expectFailure(Tavra_SaveAVIA(handle, nullptr, 0, 1), 0xE000000F);
}

TEST_F(Recording, CannotBeMadeWhereNoFileCan) {
    openCamera();
    expectFailure(save("no such folder/a.smf"), 0xE0000009);
    std::filesystem::create_directory(folder / "folder.smf");
    expectFailure(save("folder.smf"), 0xE0000009);
    EXPECT_EQ(status(), 0);
    expectNoMessage();
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 1)) << "no stream was started";
}

TEST_F(Recording, ReplacesAnOldFile) {
    openCamera();
    SCOPED_TRACE("");
    std::ofstream(folder / "a.smf") << std::string(100000, 'x');
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_TRUE(movie().frames.empty());
}

// ---- rate and settings in the header

TEST_F(Recording, TellsClockAndClocksAFrame) {
    DoubleCamera& camera = describe();
    camera.clock = 36000000;
    camera.setScan16(26, 1000);
    camera.setScan16(28, 1200);
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 36000000u);
    EXPECT_EQ(movie().field(28), 1200000u);
}

TEST_F(Recording, TellsTheRateThatTheCameraTells) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    camera.status(86) = 0x89AB;
    camera.status(87) = 0x0123;
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 0x012389ABu);
    EXPECT_EQ(movie().field(28), 0x10000u);
}

TEST_F(Recording, TellsTheRateOfTheRegisterPages) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    camera.addRegisterPages();
    camera.pageRegister(21, 20) = 48000000;
    camera.pageRegister(21, 84) = 1600000;
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 48000000u);
    EXPECT_EQ(movie().field(28), 1600000u);
}

TEST_F(Recording, FailsWithTheCodeOfARateThatCannotBeRead) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    open();
    usb.unplug(0);
    expectFailure(save(), 0xE0000005);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.smf"));
}

TEST_F(Recording, KeepsTheSettingsOfDevelopment) {
    openCamera(1, 5);
    Bytes table(256);
    for (std::size_t i = 0; i < 256; ++i) table[i] = static_cast<std::uint8_t>(255 - i);
    std::int16_t matrix[12];
    for (std::int16_t i = 0; i < 12; ++i) matrix[i] = static_cast<std::int16_t>(100 * i - 500);
    ASSERT_EQ(Tavra_SetColorInterpolationMethod(handle, 4), 1);
    ASSERT_EQ(Tavra_SetGammaModeEx(handle, 0, 255, 100, 0, 0, table.data()), 1);
    ASSERT_EQ(Tavra_SetSharpnessMode(handle, 1, 0x0123, 7), 1);
    ASSERT_EQ(Tavra_SetColorMatrix(handle, 255, matrix), 1);
    ASSERT_EQ(Tavra_SetHueSaturationMode(handle, 1, static_cast<std::uint16_t>(-300), 150), 1);
    ASSERT_EQ(Tavra_SetAVIQuality(handle, 60), 1);
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes header = movie().header;
    EXPECT_EQ(loadLe32(&header[48]), 60u);
    EXPECT_EQ(Bytes(&header[56], &header[64]), Bytes(8));
    EXPECT_EQ(loadLe32(&header[64]), 4u);
    EXPECT_EQ(header[68], 255);
    EXPECT_EQ(header[69], 0);
    EXPECT_EQ(loadLe16(&header[70]), 100u);
    EXPECT_EQ(loadLe16(&header[72]), 0u);
    EXPECT_EQ(Bytes(&header[80], &header[336]), table);
    EXPECT_EQ(header[336], 1);
    EXPECT_EQ(header[337], 7);
    EXPECT_EQ(loadLe16(&header[338]), 0x0123u);
    EXPECT_EQ(header[340], 255);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[344 + 2 * i])), matrix[i]);
    }
    EXPECT_EQ(header[368], 1);
    EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[372])), -300);
    EXPECT_EQ(loadLe16(&header[374]), 150u);
}

TEST_F(Recording, KeepsAPowerCurveWithItsNumbers) {
    openCamera(1, 5);
    ASSERT_EQ(Tavra_SetGammaModeEx(handle, 0, 1, 45, static_cast<std::uint16_t>(-20), 30, nullptr), 1);
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes header = movie().header;
    EXPECT_EQ(header[68], 1);
    EXPECT_EQ(header[69], 30);
    EXPECT_EQ(loadLe16(&header[70]), 45u);
    EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[72])), -20);
}

// ---- options

TEST_F(Recording, HasOptionsWithLimits) {
    openCamera();
    std::uint8_t size = 9;
    std::uint32_t quality = 0, format = 9;
    ASSERT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
    ASSERT_EQ(Tavra_GetAVIQuality(handle, &quality), 1);
    ASSERT_EQ(Tavra_GetAVIPriorityFileFormat(handle, &format), 1);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(quality, 75u);
    EXPECT_EQ(format, 0u);
    for (const auto& [given, stored] : {std::pair{1, 1}, {2, 2}, {3, 0}, {255, 0}}) {
        ASSERT_EQ(Tavra_SetAVIFrameSize(handle, static_cast<std::uint8_t>(given)), 1);
        ASSERT_EQ(Tavra_GetAVIFrameSize(handle, &size), 1);
        EXPECT_EQ(size, stored);
    }
    for (const auto& [given, stored] : {std::pair{0u, 0u}, {100u, 100u}, {101u, 100u}, {0xFFFFFFFFu, 100u}}) {
        ASSERT_EQ(Tavra_SetAVIQuality(handle, given), 1);
        ASSERT_EQ(Tavra_GetAVIQuality(handle, &quality), 1);
        EXPECT_EQ(quality, stored);
    }
    ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, 1), 1);
    expectFailure(Tavra_SetAVIPriorityFileFormat(handle, 2), 87);
    ASSERT_EQ(Tavra_GetAVIPriorityFileFormat(handle, &format), 1);
    EXPECT_EQ(format, 1u);
    expectFailure(Tavra_GetAVIFrameSize(handle, nullptr), 87);
    expectFailure(Tavra_GetAVIQuality(handle, nullptr), 87);
    expectFailure(Tavra_GetAVIPriorityFileFormat(handle, nullptr), 87);
}

TEST_F(Recording, NeedsAHandle) {
    std::uint8_t byte = 0;
    std::uint32_t word = 0;
    EXPECT_EQ(Tavra_SaveAVIW(nullptr, u"a.smf", 0, 1), 0);
    EXPECT_EQ(Tavra_SaveAVIA(nullptr, "a.smf", 0, 1), 0);
    EXPECT_EQ(Tavra_SetAVIStatus(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIStatus(nullptr, &byte, &word, &word), 0);
    EXPECT_EQ(Tavra_SetAVIFrameSize(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIFrameSize(nullptr, &byte), 0);
    EXPECT_EQ(Tavra_SetAVIQuality(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIQuality(nullptr, &word), 0);
    EXPECT_EQ(Tavra_SetAVIPriorityFileFormat(nullptr, 0), 0);
    EXPECT_EQ(Tavra_GetAVIPriorityFileFormat(nullptr, &word), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

}  // namespace
}  // namespace tavra::test
