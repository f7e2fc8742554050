// Recordings of virtual cameras: what stands in the file is what the camera sent.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include "e2e/camera_fixture.h"
#include "support/temp_folder.h"

namespace tavra::e2e {
namespace {

constexpr std::size_t kHeaderBytes = 376;
constexpr std::size_t kFrameHeaderBytes = 24;

std::uint32_t word(const Bytes& bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 |
           static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

struct Movie {
    struct Frame {
        std::uint32_t number = 0, colorArray = 0;
        Bytes image;
    };
    Bytes header;
    std::vector<Frame> frames;

    explicit Movie(const std::filesystem::path& path) {
        const Bytes bytes = test::readFile(path);
        EXPECT_GE(bytes.size(), kHeaderBytes);
        if (bytes.size() < kHeaderBytes) return;
        header.assign(bytes.begin(), bytes.begin() + kHeaderBytes);
        const std::size_t image = word(header, 8) * word(header, 12);
        EXPECT_EQ((bytes.size() - kHeaderBytes) % (kFrameHeaderBytes + image), 0u);
        for (std::size_t at = kHeaderBytes; at < bytes.size(); at += kFrameHeaderBytes + image) {
            const auto data = bytes.begin() + static_cast<std::ptrdiff_t>(at + kFrameHeaderBytes);
            frames.push_back({word(bytes, at), word(bytes, at + 4),
                              Bytes(data, data + static_cast<std::ptrdiff_t>(image))});
        }
    }
};

class RecordingOf {
  public:
    explicit RecordingOf(const std::string& cameras) { useCameras(cameras); }

    const test::TempFolder folder;
    std::filesystem::path path(const char* name = "movie.smf") const { return folder / name; }
    TavraBool save(TavraHandle camera, std::uint32_t frames, const char* name = "movie.smf") const {
        return Tavra_SaveAVIW(camera, path(name).u16string().c_str(), 0, frames);
    }
};

// Takes the messages of a recording that ends by itself and of the stream that it started. The recording's
// result; the stream's must be `streamEnd`.
std::uint64_t awaitEnd(Camera& camera, std::uint64_t streamEnd = 0) {
    std::uint64_t result = 999;
    bool begun = false, streamBegun = false;
    for (;;) {
        const auto [message, parameter] = camera.next();
        if (message == TAVRA_MESSAGE_RECORDING_PROGRESS) begun = true;
        if (message == TAVRA_MESSAGE_TRANSFER_STARTED) streamBegun = true;
        if (message == TAVRA_MESSAGE_RECORDING_ENDED) {
            EXPECT_TRUE(begun);
            result = parameter;
        }
        if (message == TAVRA_MESSAGE_TRANSFER_ENDED) {
            EXPECT_TRUE(streamBegun);
            EXPECT_EQ(parameter, streamEnd);
            return result;
        }
        if (message == 0) return result;
    }
}

// Every recorded frame is the raw frame of its number, byte for byte.
void expectRecorded(const Movie& movie, const std::vector<Frame>& raws) {
    ASSERT_FALSE(movie.frames.empty());
    ASSERT_FALSE(raws.empty());
    for (const Movie::Frame& frame : movie.frames) {
        const std::uint32_t number = raws[0].number + frame.number;
        const auto raw = std::find_if(raws.begin(), raws.end(), [number](const Frame& candidate) {
            return candidate.number == number;
        });
        ASSERT_NE(raw, raws.end()) << number;
        EXPECT_EQ(frame.image, raw->bytes) << number;
        EXPECT_EQ(frame.colorArray, raw->colorArray);
    }
}

void recordAndCompare(const std::string& camera, std::uint32_t width, std::uint32_t height) {
    SCOPED_TRACE(camera);
    const RecordingOf recording(camera);
    Camera opened;
    ASSERT_TRUE(opened.isOpen());
    ASSERT_EQ(Tavra_SetWhiteBalanceMode(opened, 0), 1);  // a recorded mosaic is balanced, what came is not
    FrameLog log;
    log.takeRawOf(opened);
    ASSERT_EQ(recording.save(opened, 12), 1) << Tavra_GetLastError(opened);
    EXPECT_EQ(awaitEnd(opened), 0u);
    const Movie movie(recording.path());
    EXPECT_EQ(movie.frames.size(), 12u);
    for (std::uint32_t i = 0; i < movie.frames.size(); ++i) EXPECT_EQ(movie.frames[i].number, i);
    EXPECT_EQ(word(movie.header, 8), width);
    EXPECT_EQ(word(movie.header, 12), height);
    float fps = 0;
    ASSERT_TRUE(Tavra_GetOutputFPS(opened, &fps));
    EXPECT_FLOAT_EQ(fps,
                    static_cast<float>(word(movie.header, 24)) / static_cast<float>(word(movie.header, 28)));
    expectRecorded(movie, log.waitFor(12));
}

TEST(Recordings, HoldTheCamerasFrames) {
    recordAndCompare("mono:transfer=1:pace=off:width=32:height=8", 32, 8);
    recordAndCompare("mono:transfer=1:pace=off:width=64:height=4", 64, 4);
    recordAndCompare("bayer:transfer=1:pace=off:width=32:height=8", 32, 8);
}

TEST(Recordings, AreTurnedAsTheImageIs) {
    const RecordingOf recording("mono:transfer=1:pace=off:noise=off:width=32:height=8");
    Camera camera;
    FrameLog log;
    log.takeRawOf(camera);
    ASSERT_EQ(Tavra_SetRotationMode(camera, 2), 1);
    ASSERT_EQ(recording.save(camera, 1), 1);
    EXPECT_EQ(awaitEnd(camera), 0u);
    const Movie movie(recording.path());
    ASSERT_EQ(movie.frames.size(), 1u);
    const Bytes raw = log.waitFor(1)[0].bytes;
    EXPECT_EQ(word(movie.header, 8), 8u);
    EXPECT_EQ(word(movie.header, 12), 32u);
    for (std::uint32_t y = 0; y < 8; ++y) {
        for (std::uint32_t x = 0; x < 32; ++x) {
            ASSERT_EQ(movie.frames[0].image[(31 - x) * 8 + y], raw[y * 32 + x]) << x << ',' << y;
        }
    }
}

TEST(Recordings, AreWholeWhenTheCameraLeaves) {
    for (std::uint32_t frame = 1; frame <= 12; frame += 3) {
        SCOPED_TRACE(frame);
        const RecordingOf recording("mono:transfer=1:noise=off:pace=off" + kSmallSensor +
                                    ":fault.vanish_at_frame=" + std::to_string(frame));
        Camera camera;
        FrameLog log;
        log.takeRawOf(camera);
        ASSERT_EQ(recording.save(camera, 1000), 1);
        EXPECT_EQ(awaitEnd(camera, TAVRA_ERROR_DEVICE_GONE), 0u);
        const Movie movie(recording.path());
        EXPECT_EQ(movie.frames.size(), log.count()) << "every frame that came";
        std::uint8_t status = 9;
        ASSERT_EQ(Tavra_GetAVIStatus(camera, &status, nullptr, nullptr), 1);
        EXPECT_EQ(status, 0);
    }
}

TEST(Recordings, AreWholeWhenTheCameraIsClosed) {
    const RecordingOf recording("mono:transfer=1:pace=off:width=32:height=8");
    std::size_t count = 0;
    {
        Camera camera;
        FrameLog log;
        log.takeRawOf(camera);
        ASSERT_EQ(recording.save(camera, 1000000), 1);
        log.waitFor(30);
        camera.close();
        count = log.count();
    }
    const Movie movie(recording.path());
    EXPECT_GE(movie.frames.size(), 29u);
    EXPECT_LE(movie.frames.size(), count);
}

TEST(Recordings, FollowOneAnotherOnARunningStream) {
    const RecordingOf recording("mono:transfer=1:pace=off:width=32:height=8");
    Camera camera;
    FrameLog log;
    log.takeRawOf(camera);
    camera.start();
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(recording.save(camera, 4), 1);
        EXPECT_EQ(camera.expect(TAVRA_MESSAGE_RECORDING_PROGRESS), 0u);
        EXPECT_EQ(camera.expect(TAVRA_MESSAGE_RECORDING_ENDED), 0u);
        // The capture thread hears of the end with its next frame.
        for (std::uint8_t status = 1; status != 0 || Tavra_SetAVIStatus(camera, 1) != 0;) {
            ASSERT_EQ(Tavra_GetAVIStatus(camera, &status, nullptr, nullptr), 1);
            std::this_thread::yield();
        }
        EXPECT_EQ(Movie(recording.path()).frames.size(), 4u);
    }
    camera.stop();
}

TEST(Recordings, EndByRequestWhileTheQueueIsBusy) {
    const RecordingOf recording("mono:transfer=1:pace=off:width=320:height=240");
    Camera camera;
    for (int round = 0; round < 5; ++round) {
        ASSERT_EQ(recording.save(camera, 1000000), 1);
        for (std::uint32_t position = 0; position < 20;) {
            ASSERT_EQ(Tavra_GetAVIStatus(camera, nullptr, nullptr, &position), 1);
            std::this_thread::yield();
        }
        ASSERT_EQ(Tavra_SetAVIStatus(camera, 0), 1);
        const Movie movie(recording.path());
        EXPECT_GE(movie.frames.size(), 10u);
        ASSERT_EQ(Tavra_StopTransfer(camera), 1);
    }
}

TEST(Recordings, OfTwoCamerasGoOnBesideEachOther) {
    const RecordingOf recording(
        "mono:transfer=1:userid=1:width=32:height=8,bayer:transfer=1:userid=2:width=64:height=8");
    Camera first(1), second(2);
    ASSERT_EQ(recording.save(first, 10, "first.smf"), 1);
    ASSERT_EQ(recording.save(second, 10, "second.smf"), 1);
    EXPECT_EQ(awaitEnd(first), 0u);
    EXPECT_EQ(awaitEnd(second), 0u);
    EXPECT_EQ(word(Movie(recording.path("first.smf")).header, 8), 32u);
    EXPECT_EQ(word(Movie(recording.path("second.smf")).header, 8), 64u);
    EXPECT_FALSE(Movie(recording.path("second.smf")).frames.empty());
}

TEST(Recordings, AreReadBack) {
    const RecordingOf recording("bayer:transfer=1:pace=off:width=32:height=8");
    Camera camera;
    ASSERT_EQ(recording.save(camera, 6), 1);
    EXPECT_EQ(awaitEnd(camera), 0u);
    const TavraSmfHandle reader = Tavra_SMFOpenFileW(recording.path().u16string().c_str());
    ASSERT_NE(reader, nullptr);
    std::uint32_t count = 0, last = 0;
    EXPECT_EQ(Tavra_GetSMFFileInfo(reader, &count, &last), 1);
    EXPECT_EQ(count, 6u);
    EXPECT_EQ(last, 5u);
    Tavra_SMFCloseFile(reader);
}

}  // namespace
}  // namespace tavra::e2e
