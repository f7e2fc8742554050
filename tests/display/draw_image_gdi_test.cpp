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
    std::uint32_t resultOf(std::uint32_t mode, const Rectangle& source, const Rectangle& destination,
                           const BackgroundRectangles& background) {
        CDrawImageGDI object(system, mode);
        DrawImageInfo info;
        info.deviceContext = &paint;
        info.bitmap = &bitmap;
        return object.DrawImage(source, destination, background, info);
    }
    void draw(std::uint32_t mode, const Rectangle& source, const Rectangle& destination,
              const BackgroundRectangles& background = {}) {
        EXPECT_EQ(resultOf(mode, source, destination, background), 0u);
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

TEST_F(DrawImageGdi, FailedImageIsTheResultAndItsStripsArePainted) {
    const BackgroundRectangles strips{Rectangle{0, 0, 9, 80}, {9, 0, 100, 5}, {}, {}};
    paint.failures = {{"copy", 6}, {"stretch", 8}, {"black 0,0,9,80", 5}};
    EXPECT_EQ(resultOf(CDrawImageGDI::kColorOnColor, {0, 0, 10, 10}, {9, 5, 19, 15}, strips), 6u);
    EXPECT_EQ(resultOf(CDrawImageGDI::kColorOnColor, {0, 0, 10, 10}, {9, 5, 29, 15}, strips), 8u);
    EXPECT_THAT(paint.log,
                ElementsAre("copy 9,5,19,15 from 0,0", "black 0,0,9,80", "black 9,0,100,5",
                            "stretch 9,5,29,15 from 0,0,10,10 nearest", "black 0,0,9,80", "black 9,0,100,5"));
}

TEST_F(DrawImageGdi, FirstStripThatFailsIsTheResultAndTheOthersArePainted) {
    const BackgroundRectangles strips{
        Rectangle{0, 0, 9, 80}, {9, 0, 100, 5}, {19, 5, 100, 80}, {9, 15, 19, 80}};
    paint.failures = {{"black 9,0,100,5", 8}, {"black 19,5,100,80", 6}};
    EXPECT_EQ(resultOf(CDrawImageGDI::kHalftone, {0, 0, 10, 10}, {9, 5, 19, 15}, strips), 8u);
    EXPECT_THAT(paint.log, ElementsAre("copy 9,5,19,15 from 0,0", "black 0,0,9,80", "black 9,0,100,5",
                                       "black 19,5,100,80", "black 9,15,19,80"));
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
