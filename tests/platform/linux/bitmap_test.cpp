#include "platform/bitmap.h"

#include <cairo/cairo.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "platform/paint.h"
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

// Each width ends its rows in another way; every pixel is drawn on once, alone.
TEST_P(BitmapOfDepth, OnePixelIsDrawnAndTheRestStays) {
    DrawingMemory memory;
    for (std::uint32_t width = 7; width >= 1; --width) {
        ASSERT_TRUE(bitmap.create({width, 2, GetParam()}).ok());
        for (std::uint32_t drawn = 0; drawn < 2 * width; ++drawn) {
            for (std::uint32_t i = 0; i < 2 * width * channels(); ++i) {
                pixel(i / channels() % width, i / channels() / width)[i % channels()] =
                    static_cast<std::uint8_t>(i * 5 + 3);
            }
            {
                MemoryContext context(bitmap, &memory);
                const auto x = static_cast<int>(drawn % width), y = static_cast<int>(drawn / width);
                ASSERT_NE(context.dc(), nullptr);
                ASSERT_TRUE(test::fillRectangle(context.dc(), {x, y, 1, 1}, {255, 255, 255}));
            }
            for (std::uint32_t i = 0; i < 2 * width * channels(); ++i) {
                const std::uint32_t at = i / channels();
                ASSERT_EQ(pixel(at % width, at / width)[i % channels()],
                          at == drawn ? 255 : static_cast<std::uint8_t>(i * 5 + 3))
                    << width << ": " << drawn << ", " << i;
            }
        }
    }
}

// Pages in the middle of the bitmap refuse to be written. 32 bits are drawn on where they are.
TEST_P(BitmapOfDepth, RowsThatNobodyDrawsOnAreNotWritten) {
    ASSERT_TRUE(bitmap.create({1000, 600, GetParam()}).ok());
    std::fill(bitmap.pixels(), bitmap.pixels() + bitmap.shape().bytes(), std::uint8_t{77});
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const std::uintptr_t first = (reinterpret_cast<std::uintptr_t>(pixel(0, 100)) + page - 1) / page * page;
    const std::uintptr_t end = reinterpret_cast<std::uintptr_t>(pixel(0, 500)) / page * page;
    ASSERT_GT(end, first);
    ASSERT_EQ(mprotect(reinterpret_cast<void*>(first), end - first, PROT_READ), 0);
    for (const bool draws : {false, true}) {
        MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        if (!draws) continue;
        EXPECT_TRUE(test::fillRectangle(context.dc(), {0, 0, 1000, 50}, {255, 255, 255}));
        EXPECT_TRUE(test::fillRectangle(context.dc(), {999, 599, 1, 1}, {255, 255, 255}));
    }
    ASSERT_EQ(mprotect(reinterpret_cast<void*>(first), end - first, PROT_READ | PROT_WRITE), 0);
    EXPECT_EQ(*pixel(0, 49), 255);
    EXPECT_EQ(*pixel(0, 50), 77);
    EXPECT_EQ(*pixel(998, 599), 77);
    EXPECT_EQ(*pixel(999, 599), 255);
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
    MemoryContext context(bitmap);
    EXPECT_EQ(context.dc(), nullptr);
}

TEST(MemoryContext, OfAnImageTooLargeToDrawOnHasNoContext) {
    Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({40000, 1, 8}).ok());
    MemoryContext context(bitmap);
    EXPECT_EQ(context.dc(), nullptr);
}

// 0x00BBGGRR, and rows of 4 pixels are 12 bytes.
TEST(MemoryContext, ASolidFillCoversItsAreaAndNoMore) {
    platform::Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({4, 3, 24}).ok());
    {
        platform::MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        EXPECT_TRUE(platform::fillSolid(context.dc(), {1, 1, 3, 2}, 0x00332211).ok());
    }
    for (std::size_t i = 0; i < 36; ++i) {
        const bool inside = i >= 12 + 3 && i < 12 + 9;
        const std::uint8_t expected = i % 3 == 0 ? 0x33 : i % 3 == 1 ? 0x22 : 0x11;
        EXPECT_EQ(bitmap.pixels()[i], inside ? expected : 0) << i;
    }
}

// A context that an application has driven into an error draws nothing any more.
TEST(MemoryContext, ASolidFillOfAContextInErrorFails) {
    platform::Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({2, 1, 32}).ok());
    {
        platform::MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        void* const cairo = dlopen("libcairo.so.2", RTLD_NOW | RTLD_NOLOAD);
        ASSERT_NE(cairo, nullptr);
        const auto restore = reinterpret_cast<decltype(&cairo_restore)>(dlsym(cairo, "cairo_restore"));
        ASSERT_NE(restore, nullptr);
        restore(static_cast<cairo_t*>(context.dc()));  // nothing was saved
        dlclose(cairo);
        EXPECT_EQ(platform::fillSolid(context.dc(), {0, 0, 2, 1}, 0xFFFFFF), Status(31));
    }
    EXPECT_EQ(bitmap.pixels()[0], 0);
}

// The library's own drawing lies over what was drawn through the context, and the other way round.
TEST(MemoryContext, PaintAndContextDrawOnTheSamePixels) {
    platform::Bitmap bitmap;
    ASSERT_TRUE(bitmap.create({4, 1, 8}).ok());
    {
        platform::MemoryContext context(bitmap);
        ASSERT_NE(context.dc(), nullptr);
        EXPECT_TRUE(platform::fillSolid(context.dc(), {0, 0, 3, 1}, 0xFFFFFF).ok());
        EXPECT_TRUE(context.paint().fillBlack({0, 0, 2, 1}).ok());
        EXPECT_TRUE(platform::fillSolid(context.dc(), {0, 0, 1, 1}, 0xFFFFFF).ok());
    }
    const std::uint8_t expected[] = {255, 0, 255, 0};
    for (std::size_t x = 0; x < 4; ++x) EXPECT_EQ(bitmap.pixels()[x], expected[x]) << x;
}

}  // namespace
}  // namespace tavra::platform
