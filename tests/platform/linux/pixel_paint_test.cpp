// Painting on pixels in memory: a small canvas, worked by hand.
#include "platform/linux/pixel_paint.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/linux/small_font.h"

namespace tavra::platform {
namespace {

using Grey = std::vector<std::uint8_t>;

class PixelPainting : public testing::Test {
  protected:
    // A bitmap of one byte a pixel with these values, rows of `width`.
    void source(std::uint32_t width, const Grey& values) {
        const auto height = static_cast<std::uint32_t>(values.size() / width);
        ASSERT_TRUE(bitmap.create({width, height, 8}).ok());
        for (std::size_t i = 0; i < values.size(); ++i) {
            bitmap.pixels()[i / width * bitmap.shape().stride() + i % width] = values[i];
        }
    }
    PixelPaint canvas(std::uint32_t width, std::uint32_t height) {
        pixels.assign(std::size_t{width} * height, 9);
        return PixelPaint({pixels.data(), width, width, height, 1});
    }

    Bitmap bitmap;
    Grey pixels;
};

TEST_F(PixelPainting, CopyIsClippedAtBothEnds) {
    source(3, {1, 2, 3, 4, 5, 6});
    EXPECT_TRUE(canvas(4, 3).copy({-1, 1, 2, 3}, bitmap, 0, 0).ok());
    EXPECT_EQ(pixels, (Grey{9, 9, 9, 9, 2, 3, 9, 9, 5, 6, 9, 9}));
    EXPECT_TRUE(canvas(4, 1).copy({0, 0, 4, 1}, bitmap, 1, 1).ok());  // two pixels lie behind the bitmap
    EXPECT_EQ(pixels, (Grey{5, 6, 9, 9}));
    EXPECT_TRUE(canvas(4, 1).copy({0, 0, 4, 1}, bitmap, -2, -1).ok());
    EXPECT_EQ(pixels, (Grey{9, 9, 9, 9}));
}

// The middles 0.5, 1.5, ... of five pixels lie at 0.3, 0.9, 1.5, 2.1, 2.7 of three.
TEST_F(PixelPainting, NearestTakesThePixelUnderTheMiddle) {
    source(3, {1, 2, 3});
    EXPECT_TRUE(canvas(5, 1).stretch({0, 0, 5, 1}, bitmap, {0, 0, 3, 1}, StretchQuality::Nearest).ok());
    EXPECT_EQ(pixels, (Grey{1, 1, 2, 3, 3}));
    EXPECT_TRUE(canvas(2, 1).stretch({0, 0, 2, 1}, bitmap, {0, 0, 3, 1}, StretchQuality::Nearest).ok());
    EXPECT_EQ(pixels, (Grey{1, 3}));
    EXPECT_TRUE(canvas(4, 1).stretch({-2, 0, 4, 1}, bitmap, {0, 0, 3, 1}, StretchQuality::Nearest).ok());
    EXPECT_EQ(pixels, (Grey{2, 2, 3, 3}));
}

// Twice as large, the middles lie at -0.25, 0.25, 0.75, 1.25 of the distance between two pixels.
TEST_F(PixelPainting, SmoothMixesNeighbours) {
    source(2, {0, 100});
    EXPECT_TRUE(canvas(4, 1).stretch({0, 0, 4, 1}, bitmap, {0, 0, 2, 1}, StretchQuality::Smooth).ok());
    EXPECT_EQ(pixels, (Grey{0, 25, 75, 100}));
}

TEST_F(PixelPainting, SmoothShrinkingTakesTheMean) {
    source(4, {10, 20, 30, 41, 50, 60, 70, 80});
    EXPECT_TRUE(canvas(2, 1).stretch({0, 0, 2, 1}, bitmap, {0, 0, 4, 2}, StretchQuality::Smooth).ok());
    EXPECT_EQ(pixels, (Grey{35, 55}));  // 140 / 4, 221 / 4
}

TEST_F(PixelPainting, ColorsKeepTheirOrder) {
    ASSERT_TRUE(bitmap.create({1, 1, 24}).ok());
    for (std::uint8_t i = 0; i < 3; ++i) bitmap.pixels()[i] = static_cast<std::uint8_t>(10 + i);
    pixels.assign(4, 9);
    EXPECT_TRUE(PixelPaint({pixels.data(), 4, 1, 1, 4}).copy({0, 0, 1, 1}, bitmap, 0, 0).ok());
    EXPECT_EQ(pixels, (Grey{10, 11, 12, 0}));
}

TEST_F(PixelPainting, FillAndLinesStayInside) {
    PixelPaint paint = canvas(3, 3);
    EXPECT_TRUE(paint.fillBlack({-5, -5, 1, 1}).ok());
    EXPECT_TRUE(paint.line(2, -4, 2, 40).ok());
    EXPECT_EQ(pixels, (Grey{0, 9, 0, 9, 9, 0, 9, 9, 0}));
    EXPECT_TRUE(paint.line(INT32_MAX, 0, INT32_MAX, 5).ok());
    EXPECT_TRUE(paint.fillBlack({2, 2, 1, 1}).ok());
    EXPECT_EQ(pixels, (Grey{0, 9, 0, 9, 9, 0, 9, 9, 0}));
}

TEST_F(PixelPainting, TextIsBlackOnAWhiteBox) {
    PixelPaint paint = canvas(16, 18);
    EXPECT_EQ(paint.textHeight(), 16);
    EXPECT_TRUE(paint.text(1, 1, "I").ok());
    // A cell of 7 x 16 at (1, 1); the letter's upper bar is 3 pixels wide and stands twice.
    const auto at = [this](std::size_t x, std::size_t y) { return pixels[y * 16 + x]; };
    EXPECT_EQ(at(0, 1), 9);
    EXPECT_EQ(at(1, 1), 255);
    EXPECT_EQ(at(7, 16), 255);
    EXPECT_EQ(at(8, 16), 9);
    EXPECT_EQ(at(7, 17), 9);
    for (const std::size_t y : {2, 3}) {
        EXPECT_EQ(at(2, y), 255);
        EXPECT_EQ(at(3, y), 0);
        EXPECT_EQ(at(4, y), 0);
        EXPECT_EQ(at(5, y), 0);
        EXPECT_EQ(at(6, y), 255);
    }
    EXPECT_EQ(at(3, 4), 255);
    EXPECT_EQ(at(4, 4), 0);
}

TEST_F(PixelPainting, TextOutsideDoesNoHarm) {
    PixelPaint paint = canvas(4, 4);
    EXPECT_TRUE(paint.text(INT32_MAX - 3, INT32_MAX - 3, "ab").ok());
    EXPECT_TRUE(paint.text(INT32_MIN, INT32_MIN, "ab").ok());
    EXPECT_EQ(pixels, Grey(16, 9));
}

TEST(SmallFont, EveryPrintableCharacterHasAGlyphOfItsOwn) {
    for (char a = '!'; a <= '~'; ++a) {
        EXPECT_NE(glyphOf(a), glyphOf(' ')) << a;
        for (char b = static_cast<char>(a + 1); b <= '~' && b > a; ++b) {
            EXPECT_NE(glyphOf(a), glyphOf(b)) << a << b;
        }
    }
    EXPECT_EQ(glyphOf('\n'), glyphOf('?'));
    EXPECT_EQ(glyphOf(static_cast<char>(0xE4)), glyphOf('?'));
}

}  // namespace
}  // namespace tavra::platform
