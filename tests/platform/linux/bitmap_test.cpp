#include "platform/bitmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "support/drawing.h"

namespace tavra::platform {
namespace {

class BitmapOfDepth : public testing::TestWithParam<std::uint32_t> {
  protected:
    std::uint8_t* pixel(std::uint32_t x, std::uint32_t y) {
        return bitmap.pixels() + y * bitmap.shape().stride() + x * GetParam() / 8;
    }
    std::uint32_t channels() const { return GetParam() == 8 ? 1 : 3; }

    Bitmap bitmap;
};

TEST_P(BitmapOfDepth, StartsZeroedAndAligned) {
    ASSERT_TRUE(bitmap.create({37, 5, GetParam()}).ok());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bitmap.pixels()) % 64, 0u);
    EXPECT_TRUE(std::all_of(bitmap.pixels(), bitmap.pixels() + bitmap.shape().bytes(),
                            [](std::uint8_t byte) { return byte == 0; }));
}

TEST_P(BitmapOfDepth, ARectangleIsDrawnAndTheRestStays) {
    ASSERT_TRUE(bitmap.create({37, 9, GetParam()}).ok());
    for (std::uint32_t y = 0; y < 9; ++y) {
        for (std::uint32_t x = 0; x < 37; ++x) {
            for (std::uint32_t c = 0; c < channels(); ++c) {
                pixel(x, y)[c] = static_cast<std::uint8_t>(x * 5 + y * 3 + c * 40);
            }
        }
    }
    {
        MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        ASSERT_TRUE(test::fillRectangle(context.dc(), {10, 2, 20, 4}, {255, 0, 0}));
    }
    // Pure red: grey 0.299 x 255 = 76.245.
    const std::array<std::uint8_t, 3> red = {0, 0, 255};
    for (std::uint32_t y = 0; y < 9; ++y) {
        for (std::uint32_t x = 0; x < 37; ++x) {
            const bool inside = x >= 10 && x < 30 && y >= 2 && y < 6;
            for (std::uint32_t c = 0; c < channels(); ++c) {
                const unsigned drawn = channels() == 1 ? 76 : red[c];
                const unsigned before = static_cast<std::uint8_t>(x * 5 + y * 3 + c * 40);
                ASSERT_EQ(pixel(x, y)[c], inside ? drawn : before) << x << ", " << y << ", " << c;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Depths, BitmapOfDepth, testing::Values(8u, 24u, 32u));

TEST(Bitmap, OfNoSizeCanBeMade) {
    Bitmap bitmap;
    EXPECT_TRUE(bitmap.create({0, 0, 24}).ok());
    EXPECT_NE(bitmap.pixels(), nullptr);
    bitmap.free();
    EXPECT_EQ(bitmap.pixels(), nullptr);
}

TEST(MemoryContext, OfNoBitmapHasNoContext) {
    Bitmap bitmap;
    const MemoryContext context(bitmap);
    EXPECT_EQ(context.dc(), nullptr);
}

TEST(MemoryContext, OfAnImageTooLargeToDrawOnHasNoContext) {
    Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({40000, 1, 8}).ok());
    const MemoryContext context(bitmap);
    EXPECT_EQ(context.dc(), nullptr);
}

}  // namespace
}  // namespace tavra::platform
