// What GDI draws on the context of a bitmap, and that it tells where there is none.
#include "platform/windows/gdi_paint.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace tavra::platform {
namespace {

constexpr StretchQuality kNearest = StretchQuality::Nearest;

class GdiPainting : public testing::Test {
  protected:
    GdiPainting() {
        EXPECT_TRUE(canvas.create({4, 2, 32}).ok());
        EXPECT_TRUE(image.create({4, 2, 32}).ok());
        for (std::size_t i = 0; i < image.shape().bytes(); ++i) image.pixels()[i] = 0x77;
    }
    // The blue of each pixel.
    std::vector<int> blues() const {
        std::vector<int> found;
        for (std::size_t i = 0; i < 8; ++i) found.push_back(canvas.pixels()[4 * i]);
        return found;
    }

    Bitmap canvas, image;
};

TEST_F(GdiPainting, SucceedsOnAContext) {
    {
        MemoryContext context(canvas);
        GdiPaint paint(static_cast<HDC>(context.dc()));
        EXPECT_TRUE(paint.copy({0, 0, 4, 2}, image, 0, 0).ok());
        EXPECT_TRUE(paint.fillBlack({0, 0, 2, 1}).ok());
        EXPECT_TRUE(fillSolid(context.dc(), {2, 1, 4, 2}, 0x550000).ok());
        EXPECT_TRUE(paint.line(0, 1, 1, 1).ok());
    }
    EXPECT_EQ(blues(), (std::vector<int>{0, 0, 0x77, 0x77, 0, 0, 0x55, 0x55}));
    {
        MemoryContext context(canvas);
        GdiPaint paint(static_cast<HDC>(context.dc()));
        EXPECT_TRUE(paint.stretch({0, 0, 4, 2}, image, {0, 0, 2, 1}, kNearest).ok());
    }
    EXPECT_EQ(blues(), std::vector<int>(8, 0x77));
}

TEST_F(GdiPainting, WithoutAContextEverythingFails) {
    GdiPaint paint(nullptr);
    EXPECT_FALSE(paint.copy({0, 0, 4, 2}, image, 0, 0).ok());
    EXPECT_FALSE(paint.stretch({0, 0, 4, 2}, image, {0, 0, 2, 1}, kNearest).ok());
    EXPECT_FALSE(paint.fillBlack({0, 0, 4, 2}).ok());
    EXPECT_FALSE(paint.text(0, 0, "x").ok());
    EXPECT_FALSE(paint.line(0, 0, 3, 0).ok());
    EXPECT_FALSE(fillSolid(nullptr, {0, 0, 4, 2}, 0).ok());
}

TEST_F(GdiPainting, WithoutABitmapThereIsNothingToCopy) {
    const Bitmap none;
    MemoryContext context(canvas);
    GdiPaint paint(static_cast<HDC>(context.dc()));
    EXPECT_FALSE(paint.copy({0, 0, 4, 2}, none, 0, 0).ok());
    EXPECT_FALSE(paint.stretch({0, 0, 4, 2}, none, {0, 0, 2, 1}, kNearest).ok());
    EXPECT_TRUE(paint.fillBlack({0, 0, 4, 2}).ok()) << "is as good as before";
}

}  // namespace
}  // namespace tavra::platform
