// Plain drawing, on a paint that writes down what it is asked for.
#include "display/draw_image_gdi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "display/draw_image_factory.h"
#include "support/window_double.h"

namespace tavra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DrawImageGdi : public testing::Test {
  protected:
    void draw(std::uint32_t mode, const Rectangle& source, const Rectangle& destination,
              const BackgroundRectangles& background = {}) {
        CDrawImageGDI object(system, mode);
        DrawImageInfo info;
        info.deviceContext = &paint;
        info.bitmap = &bitmap;
        EXPECT_EQ(object.DrawImage(source, destination, background, info), 0u);
    }

    WindowDouble system;
    RecordingPaint paint;
    platform::Bitmap bitmap;
};

TEST_F(DrawImageGdi, SameSizeIsABlockCopy) {
    draw(CDrawImageGDI::kHalftone, {3, 4, 13, 24}, {50, 60, 60, 80});
    EXPECT_THAT(paint.log, ElementsAre("copy 50,60,60,80 from 3,4"));
}

TEST_F(DrawImageGdi, OtherSizesAreStretchedByTheMode) {
    draw(CDrawImageGDI::kColorOnColor, {0, 0, 10, 10}, {0, 0, 20, 10});
    draw(CDrawImageGDI::kHalftone, {0, 0, 10, 10}, {0, 0, 10, 11});
    EXPECT_THAT(paint.log, ElementsAre("stretch 0,0,20,10 from 0,0,10,10 nearest",
                                       "stretch 0,0,10,11 from 0,0,10,10 smooth"));
}

TEST_F(DrawImageGdi, TurnedOverRectanglesDrawOnlyTheStrips) {
    draw(CDrawImageGDI::kColorOnColor, {300, 0, 100, 50}, {0, 0, -200, 50},
         {Rectangle{0, 0, -300, 80}, {-300, 0, 100, 0}, {-200, 0, 100, 80}, {-300, 50, -200, 80}});
    EXPECT_THAT(paint.log, ElementsAre("black -200,0,100,80", "black -300,50,-200,80"));
}

TEST_F(DrawImageGdi, StripsWithoutASizeAreSkipped) {
    draw(CDrawImageGDI::kColorOnColor, {}, {},
         {Rectangle{0, 0, 0, 80}, {0, 0, 100, 0}, {90, 0, 100, 80}, {0, 70, 90, 80}});
    EXPECT_THAT(paint.log, ElementsAre("black 90,0,100,80", "black 0,70,90,80"));
}

TEST_F(DrawImageGdi, DisplayModesNameTheirBackEnd) {
    for (const std::uint8_t plain : {0, 8, 12, 200, 255}) {
        const auto object = makeDrawImage(plain, system);
        EXPECT_NE(dynamic_cast<CDrawImageGDI*>(object.get()), nullptr) << +plain;
    }
    EXPECT_TRUE(isPlainDisplayMode(0));
    EXPECT_TRUE(isPlainDisplayMode(8));
    EXPECT_FALSE(isPlainDisplayMode(12));
}

}  // namespace
}  // namespace tavra::test
