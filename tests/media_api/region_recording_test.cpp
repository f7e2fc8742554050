// Recordings of a camera that sends several regions: the movie holds the image that they are composed to.
#include "capture_api/region_camera.h"
#include "media_api/avi_recording_fixture.h"

namespace tavra::test {
namespace {

class RegionRecording : public AviRecordingTest {
  protected:
    // Columns 0 to 4 and rows 0, 1 and 7 are in a region.
    static constexpr std::uint32_t kWidth = 5, kHeight = 3;

    void openRegions(std::uint16_t colorArray) {
        DoubleCamera& camera = describe(1, colorArray);
        const std::uint32_t bytes = useRegions(camera, {{4, 2, 0, 0}, {2, 1, 3, 7}}, 8);
        open();
        ASSERT_EQ(rawSize, bytes);
    }
    // The frame with this number as it is composed, by hand.
    Bytes composed(std::uint32_t number) const {
        const Bytes raw = framePattern(number);
        return {raw[0], raw[1], raw[2], raw[3], 0,  //
                raw[4], raw[5], raw[6], raw[7], 0,  //
                0,      0,      0,      raw[8], raw[9]};
    }
};

TEST_F(RegionRecording, KeepsTheComposedMosaic) {
    openRegions(5);
    const RawMovie recorded = recordRaw(2);
    EXPECT_EQ(recorded.field(8), kWidth);
    EXPECT_EQ(recorded.field(12), kHeight);
    EXPECT_EQ(recorded.field(36), kWidth * kHeight);
    ASSERT_GE(recorded.frames.size(), 2u);
    for (std::uint32_t i = 0; i < 2; ++i) {
        EXPECT_EQ(recorded.frames[i].tag, 5u);
        EXPECT_EQ(recorded.frames[i].image, composed(i)) << i;
    }
}

TEST_F(RegionRecording, TurnsTheComposedMosaic) {
    openRegions(5);
    ASSERT_EQ(Tavra_SetRotationMode(handle, 1), 1);
    const RawMovie recorded = recordRaw(1);
    EXPECT_EQ(recorded.field(8), kHeight);
    EXPECT_EQ(recorded.field(12), kWidth);
    ASSERT_GE(recorded.frames.size(), 1u);
    EXPECT_EQ(recorded.frames[0].image, turnedClockwise(composed(0), kWidth));
}

class RegionImages
    : public RegionRecording,
      public testing::WithParamInterface<std::tuple<std::uint32_t, std::uint8_t, std::uint32_t>> {};

TEST_P(RegionImages, AreThePreviewsPixelForPixel) {
    const auto [format, rotation, priority] = GetParam();
    openRegions(format == 1 ? 1 : 5);
    ASSERT_EQ(Tavra_SetPreviewPixelFormat(handle, format), 1);
    ASSERT_EQ(Tavra_SetRotationMode(handle, rotation), 1);
    ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, priority), 1);
    const PlainAvi movie = recordImages({3, 4, 6});
    EXPECT_EQ(movie.width(), rotation == 0 ? kWidth : kHeight);
    EXPECT_EQ(movie.height(), rotation == 0 ? kHeight : kWidth);
    EXPECT_EQ(movie.length(), 4u);
    ASSERT_EQ(seen.size(), 3u);
    expectSeen(movie);
}

INSTANTIATE_TEST_SUITE_P(All, RegionImages,
                         testing::Combine(testing::Values(1u, 4u),
                                          testing::Values(std::uint8_t{0}, std::uint8_t{1}),
                                          testing::Values(0u, 1u)));

// Regions cannot be switched while they are recorded, so that all frames have one size.
TEST_F(RegionRecording, LeavesOutAFrameOfAnotherLength) {
    openRegions(5);
    collectRaw();
    startBoth();
    sendAndAwait(0, 1);
    sendFrame(2, Bytes(rawSize - 1));
    sendAndAwait(3, 1);
    ASSERT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
    for (const RawMovie::Frame& frame : movie().frames) EXPECT_EQ(frame.image, composed(frame.number));
}

}  // namespace
}  // namespace tavra::test
