// The information overlay in the images of a stream.
#include <algorithm>

#include "capture_api/stream_fixture.h"
#include "control/luminance_ctrl_usb.h"
#include "support/drawing.h"

namespace tavra::test {
namespace {

class OverlayInImages : public StreamTest {
  protected:
    // A mono image of 400 x 100 pixels with one value, as it looks when it is published.
    Bytes publishedImage(std::uint32_t mode, std::uint8_t value, TavraPreviewGDICallback callback = nothing) {
        openCamera(1, 1, 400, 100);
        EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
        EXPECT_TRUE(Tavra_SetDisplayInfoMode(handle, mode));
        std::uint32_t identifier = 0;
        EXPECT_TRUE(Tavra_AddPreviewGDICallback(handle, callback, nullptr, &identifier));
        start();
        sendFrame(5, Bytes(rawSize, value));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), 5u);
        stopAndExpectCode(0);
        const platform::Bitmap& bitmap = record().imagesA.image(record().imagesA.takeReady()).bitmap;
        return Bytes(bitmap.pixels(), bitmap.pixels() + bitmap.shape().bytes());
    }
    static void nothing(TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void*, std::uint32_t) {}
    static void paintAll(TavraDC dc, std::uint32_t width, std::uint32_t height, std::uint32_t, void*,
                         std::uint32_t) {
        const Rectangle all{0, 0, static_cast<int>(width), static_cast<int>(height)};
        EXPECT_TRUE(fillRectangle(dc, all, {30, 30, 30}));
    }
    static std::size_t countOf(const Bytes& image, std::uint8_t value) {
        return static_cast<std::size_t>(std::count(image.begin(), image.end(), value));
    }
};

TEST_F(OverlayInImages, IsAbsentAtMode0) {
    EXPECT_EQ(publishedImage(0, 90), Bytes(400 * 100, 90));
}

TEST_F(OverlayInImages, OtherBitsDrawNothingAndKeepStatistics) {
    EXPECT_EQ(publishedImage(4, 90), Bytes(400 * 100, 90));
    std::uint8_t luminance = 0;
    record().statistics.GetWeightedLuminance(record().exposure->weights(), luminance);
    EXPECT_EQ(luminance, 90);
}

TEST_F(OverlayInImages, StatisticsAreBlackOnWhiteAtTheTop) {
    const Bytes image = publishedImage(TAVRA_DISPLAY_INFO_STATISTICS, 90);
    EXPECT_EQ(image[0], 255);              // the box
    EXPECT_EQ(image[99 * 400 + 399], 90);  // and not all of the image
    EXPECT_GT(countOf(image, 0), 400u);    // the letters
    EXPECT_GT(countOf(image, 255), 4000u);
}

TEST_F(OverlayInImages, GridHasLinesAtTheBoundaries) {
    const Bytes image = publishedImage(TAVRA_DISPLAY_INFO_GRID, 90);
    std::uint16_t x[3], y[3];
    ASSERT_TRUE(Tavra_GetControlArea(handle, x, y));
    for (std::size_t row = 0; row < 100; ++row) EXPECT_EQ(image[row * 400 + x[1] * 400u / 10000], 0) << row;
    for (std::size_t column = 0; column < 400; ++column) {
        EXPECT_EQ(image[y[1] * 100u / 10000 * 400 + column], 0) << column;
    }
}

// Nothing of the frame is left, and box and letters stand over what was painted.
TEST_F(OverlayInImages, IsDrawnOverWhatACallbackPaintedInTheSameFrame) {
    const Bytes image = publishedImage(TAVRA_DISPLAY_INFO_STATISTICS, 90, paintAll);
    EXPECT_EQ(image[0], 255);
    EXPECT_EQ(image[99 * 400 + 399], 30);
    EXPECT_EQ(countOf(image, 90), 0u);
    EXPECT_GT(countOf(image, 0), 400u);
    EXPECT_GT(countOf(image, 255), 4000u);
}

}  // namespace
}  // namespace tavra::test
