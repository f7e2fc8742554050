// AVI recordings of a camera that is unplugged in their midst: the file is whole, and programs that others
// wrote read each frame in it.
#include <opencv2/videoio.hpp>

#include <cstdlib>

#include "media_api/attached_recording.h"
#include "support/ffmpeg_reader.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 64, kHeight = 48;
constexpr std::uint32_t kFrames = 7;
constexpr std::uint32_t kDeviceGone = 5;  // as the end of the stream tells it

class LostCamera : public RecordingTest, public testing::WithParamInterface<RecordingLayout> {
  protected:
    // Grey, and lighter from frame to frame: motion JPEG keeps that well.
    static constexpr std::uint8_t levelOf(std::uint32_t frame) {
        return static_cast<std::uint8_t>(30 + 25 * frame);
    }

    void recordUntilTheCameraIsGone() {
        openCamera(1, 5, kWidth, kHeight);
        ASSERT_EQ(Tavra_SetWhiteBalanceMode(handle, 0), 1);
        ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, GetParam().format == 2 ? 1 : 0), 1);
        collectImages();
        forgetPlaces();
        ASSERT_EQ(save("a.avi", 1000, GetParam().compressor), 1) << lastError();
        expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
        for (std::uint32_t i = 0; i < kFrames; ++i) sendFrame(100 + i, Bytes(rawSize, levelOf(i)));
        ASSERT_EQ(images.waitFor(kFrames).size(), kFrames);
        usb.unplug(0);
        expectMessages({{kRecordingEnded, 0}, {TAVRA_MESSAGE_TRANSFER_ENDED, kDeviceGone}});
        EXPECT_EQ(status(), 0);
        EXPECT_FALSE(record().recording.exists());
    }

    // Blue, green and red of each pixel.
    static void expectLevel(const std::uint8_t* pixels, std::uint32_t frame) {
        const int tolerance = GetParam().jpeg() ? 2 : 0;
        int worst = 0;
        for (std::size_t i = 0; i < std::size_t{kWidth} * kHeight * 3; ++i) {
            worst = std::max(worst, std::abs(pixels[i] - levelOf(frame)));
        }
        EXPECT_LE(worst, tolerance) << "frame " << frame;
    }

    std::filesystem::path path() const { return folder / "a.avi"; }
};

TEST_P(LostCamera, LeavesAFileWithAllHeadersComplete) {
    ASSERT_NO_FATAL_FAILURE(recordUntilTheCameraIsGone());
    const Bytes file = readFile(path());
    ASSERT_GT(file.size(), 8u);
    EXPECT_EQ(loadLe32(&file[4]), file.size() - 8) << "the size in its first chunk";
    const PlainAvi movie(file);
    EXPECT_EQ(movie.isAvi2(), GetParam().format == 2);
    EXPECT_EQ(movie.handler(), GetParam().jpeg() ? "MJPG" : "DIB ");
    EXPECT_EQ(movie.length(), kFrames);
    EXPECT_EQ(movie.pictures().size(), kFrames);
}

TEST_P(LostCamera, LeavesAMovieThatFfmpegReads) {
    ASSERT_NO_FATAL_FAILURE(recordUntilTheCameraIsGone());
    silenceFfmpeg();  // of pictures as plain as these it warns, whoever wrote them
    const std::optional<ReadMovie> movie = readMovie(path());
    ASSERT_TRUE(movie.has_value());
    EXPECT_EQ(movie->codec, GetParam().jpeg() ? "mjpeg" : "rawvideo");
    EXPECT_EQ(movie->width, static_cast<int>(kWidth));
    EXPECT_EQ(movie->height, static_cast<int>(kHeight));
    EXPECT_EQ(movie->frameCount, kFrames);
    ASSERT_EQ(movie->frames.size(), kFrames);
    for (std::uint32_t i = 0; i < kFrames; ++i) expectLevel(movie->frames[i].pixels.data(), i);
}

TEST_P(LostCamera, LeavesAMovieThatOpenCvReads) {
    ASSERT_NO_FATAL_FAILURE(recordUntilTheCameraIsGone());
    cv::VideoCapture capture(path().string());
    ASSERT_TRUE(capture.isOpened());
    EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_COUNT), kFrames);
    cv::Mat image;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        ASSERT_TRUE(capture.read(image)) << i;
        ASSERT_TRUE(image.isContinuous() && image.type() == CV_8UC3);
        ASSERT_EQ(image.total(), std::size_t{kWidth} * kHeight);
        expectLevel(image.data, i);
    }
    EXPECT_FALSE(capture.read(image));
}

INSTANTIATE_TEST_SUITE_P(Layouts, LostCamera,
                         testing::Values(kAvi1Layout, kAvi1MjpegLayout, kAvi2Layout, kAvi2MjpegLayout),
                         [](const auto& layout) { return std::string(layout.param.name); });

}  // namespace
}  // namespace tavra::test
