// Raw movies of mirrored cameras: each frame tells the mosaic that it has, whoever mirrored it.
#include <iterator>

#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kWidth = 6, kHeight = 4;

// Of the four pixels in the corner: 2 is R G / G B, 3 is G R / B G, 4 is G B / R G and 5 is B G / G R.
// Columns and rows are even in number, so that a mirror exchanges the columns or the rows of the four.
constexpr std::uint32_t mirrored(std::uint32_t array, bool columns, bool rows) {
    constexpr std::uint32_t kColumns[] = {3, 2, 5, 4}, kRows[] = {4, 5, 2, 3};
    if (columns) array = kColumns[array - 2];
    if (rows) array = kRows[array - 2];
    return array;
}

Bytes mirroredFrame(const Bytes& raw, bool columns, bool rows) {
    Bytes result(raw.size());
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const std::uint32_t fromX = columns ? kWidth - 1 - x : x, fromY = rows ? kHeight - 1 - y : y;
            result[y * kWidth + x] = raw[fromY * kWidth + fromX];
        }
    }
    return result;
}

class RecordingMirror : public RecordingTest, public testing::WithParamInterface<std::uint16_t> {};

// The library turns the frame's bytes over; what the camera has turned over comes so, and only its mosaic is
// another.
TEST_P(RecordingMirror, EachFrameHasTheMosaicOfItsTime) {
    constexpr std::uint8_t kModes[] = {0,  1,  2,  3, TAVRA_MIRROR_CAMERA_HORIZONTAL, 32, 48, 17, 34,
                                       51, 18, 35, 0};
    DoubleCamera& camera = describe(1, GetParam(), kWidth, kHeight);
    camera.setCapability(1, 6);
    camera.setCapability(1, 7);
    open();
    ASSERT_EQ(Tavra_SetWhiteBalanceMode(handle, 0), 1);  // the mosaic is recorded as it is sent
    collectImages();
    startBoth();
    for (std::uint32_t i = 0; i < std::size(kModes); ++i) {
        ASSERT_EQ(Tavra_SetMirrorMode(handle, kModes[i]), 1);
        sendFrame(i, framePattern(i));
        ASSERT_EQ(images.waitFor(i + 1).size(), i + 1);  // an image comes behind the raw frame
    }
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const RawMovie recorded = movie();
    ASSERT_EQ(recorded.frames.size(), std::size(kModes));
    for (std::uint32_t i = 0; i < std::size(kModes); ++i) {
        const unsigned mode = kModes[i];
        SCOPED_TRACE(mode);
        const std::uint32_t sent = mirrored(GetParam(), (mode & 16) != 0, (mode & 32) != 0);
        EXPECT_EQ(recorded.frames[i].tag, mirrored(sent, (mode & 1) != 0, (mode & 2) != 0));
        EXPECT_EQ(recorded.frames[i].image, mirroredFrame(framePattern(i), (mode & 1) != 0, (mode & 2) != 0));
    }
}

INSTANTIATE_TEST_SUITE_P(Mosaics, RecordingMirror, testing::Values(2, 3, 4, 5));

}  // namespace
}  // namespace tavra::test
