#include "platform/bitmap.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "support/drawing.h"

namespace tavra::platform {
namespace {

using test::fillRectangle;

class BitmapOfDepth : public testing::TestWithParam<std::uint32_t> {
  protected:
    // Rows of 37 pixels end on no multiple of four bytes at 8 and 24 bits.
    static constexpr std::uint32_t kWidth = 37, kHeight = 9;
    static std::uint32_t pixelBytes() { return GetParam() / 8; }
    static std::uint32_t paddedRow() { return (kWidth * pixelBytes() + 3) / 4 * 4; }

    void make() { ASSERT_TRUE(bitmap.create({kWidth, kHeight, GetParam()}).ok()); }
    std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) {
        return bitmap.pixels() + y * paddedRow() + x * pixelBytes();
    }
    DIBSECTION section() const {
        DIBSECTION found{};
        EXPECT_EQ(GetObjectW(bitmap.native(), sizeof found, &found), static_cast<int>(sizeof found));
        return found;
    }

    Bitmap bitmap;
};

TEST_P(BitmapOfDepth, IsASectionWithAHeaderOf40Bytes) {
    make();
    const DIBSECTION found = section();
    EXPECT_EQ(found.dsBmih.biSize, 40u);
    EXPECT_EQ(found.dsBmih.biWidth, static_cast<LONG>(kWidth));
    EXPECT_EQ(std::abs(found.dsBmih.biHeight), static_cast<LONG>(kHeight)) << "the sign is not told";
    EXPECT_EQ(found.dsBmih.biPlanes, 1);
    EXPECT_EQ(found.dsBmih.biBitCount, GetParam());
    EXPECT_EQ(found.dsBmih.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(found.dsBmih.biSizeImage, paddedRow() * kHeight);
    EXPECT_EQ(found.dsBm.bmWidthBytes, static_cast<LONG>(paddedRow()));
    EXPECT_EQ(found.dsBm.bmBits, bitmap.pixels());
}

TEST_P(BitmapOfDepth, StartsZeroed) {
    make();
    EXPECT_TRUE(std::all_of(bitmap.pixels(), bitmap.pixels() + paddedRow() * kHeight,
                            [](std::uint8_t byte) { return byte == 0; }));
}

// The section reads its own pixels, so what it takes for the first row is seen by a drawing into it.
TEST_P(BitmapOfDepth, HasTheTopRowFirstAndKeepsWhatIsNotDrawnOn) {
    make();
    std::fill_n(bitmap.pixels(), paddedRow() * kHeight, std::uint8_t{0x55});
    {
        MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        ASSERT_TRUE(fillRectangle(context.dc(), {10, 2, 20, 3}, {255, 255, 255}));
    }
    const std::uint32_t channels = GetParam() == 8 ? 1 : 3;
    for (std::uint32_t y = 0; y < kHeight; ++y) {
        for (std::uint32_t x = 0; x < kWidth; ++x) {
            const bool inside = x >= 10 && x < 30 && y >= 2 && y < 5;
            for (std::uint32_t c = 0; c < channels; ++c) {
                ASSERT_EQ(pixel(x, y)[c], inside ? 0xFF : 0x55) << x << ", " << y << ", " << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Depths, BitmapOfDepth, testing::Values(8u, 24u, 32u));

TEST(Bitmap, Of8BitsHasAPaletteOf256Greys) {
    Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({5, 3, 8}).ok());
    MemoryContext context(bitmap);
    ASSERT_NE(context.dc(), nullptr);
    std::array<RGBQUAD, 257> colors{};
    ASSERT_EQ(GetDIBColorTable(static_cast<HDC>(context.dc()), 0, colors.size(), colors.data()), 256u);
    for (unsigned i = 0; i < 256; ++i) {
        EXPECT_EQ(colors[i].rgbBlue, i);
        EXPECT_EQ(colors[i].rgbGreen, i);
        EXPECT_EQ(colors[i].rgbRed, i);
        EXPECT_EQ(colors[i].rgbReserved, 0);
    }
}

TEST(Bitmap, Of24BitsHasBlueAheadOfGreenAheadOfRed) {
    Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({1, 1, 24}).ok());
    {
        MemoryContext context(bitmap);
        ASSERT_TRUE(fillRectangle(context.dc(), {0, 0, 1, 1}, {0xFE, 0xDC, 0xBA}));
    }
    EXPECT_EQ(bitmap.pixels()[0], 0xBA);
    EXPECT_EQ(bitmap.pixels()[1], 0xDC);
    EXPECT_EQ(bitmap.pixels()[2], 0xFE);
}

TEST(Bitmap, OfNoSizeCanBeMade) {
    Bitmap bitmap;
    EXPECT_TRUE(bitmap.create({0, 0, 24}).ok());
    EXPECT_NE(bitmap.pixels(), nullptr);
    bitmap.free();
    EXPECT_EQ(bitmap.pixels(), nullptr);
    EXPECT_EQ(bitmap.native(), nullptr);
}

TEST(Bitmap, OfASideThatTheSystemCannotCountIsOutOfMemory) {
    Bitmap bitmap;
    EXPECT_EQ(bitmap.create({1, 0x80000000, 8}).code(), 8u);
    EXPECT_EQ(bitmap.pixels(), nullptr);
}

TEST(Bitmap, MadeAnewHasTheNewShapeAlone) {
    Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({4, 4, 32}).ok());
    const auto before = static_cast<HGDIOBJ>(bitmap.native());
    ASSERT_TRUE(bitmap.create({8, 2, 8}).ok());
    EXPECT_EQ(bitmap.shape().width, 8u);
    EXPECT_TRUE(GetObjectType(before) == 0 || before == bitmap.native()) << "the old section is gone";
}

TEST(MemoryContext, OfNoBitmapHasNoContext) {
    Bitmap bitmap;
    MemoryContext context(bitmap);
    EXPECT_EQ(context.dc(), nullptr);
}

}  // namespace
}  // namespace tavra::platform
