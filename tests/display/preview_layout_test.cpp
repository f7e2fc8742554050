// Destination, scroll bars and magnification, each value worked by hand.
#include "display/preview_layout.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tavra/tavra_types.h"

namespace tavra {

void PrintTo(const PreviewPlace& place, std::ostream* out) {
    *out << "(" << place.x << ", " << place.y << ") " << place.width << " x " << place.height;
}

namespace test {
namespace {

using platform::ScrollBar;
using platform::ScrollCode;

constexpr PreviewPlace kPresent{7, 8, 50, 40};
constexpr PreviewPlace kMask{3, 4, 200, 100};
constexpr Size kImage{640, 480};

PreviewPlace aspect(std::uint8_t mode, Size client, const PreviewPlace& mask = kMask) {
    return destinationFor(mode, kPresent, mask, kImage, client);
}

TEST(PreviewLayout, ImageSizeIsCentred) {
    EXPECT_EQ(aspect(TAVRA_ASPECT_IMAGE, {801, 600}), (PreviewPlace{80, 60, 640, 480}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_IMAGE, {640, 100}), (PreviewPlace{0, 0, 640, 480}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_IMAGE, {0, 0}), (PreviewPlace{0, 0, 640, 480}));
}

TEST(PreviewLayout, UnknownModesAreImageSize) {
    for (const std::uint8_t mode : {4, 100, 253}) {
        EXPECT_EQ(aspect(mode, {800, 600}), (PreviewPlace{80, 60, 640, 480})) << +mode;
    }
}

TEST(PreviewLayout, MasksShapeIsFittedIn) {
    // 2 : 1. 100 high could be 200 wide, so 100 wide is 50 high; 500 wide and 100 high is 200 x 100.
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {100, 100}), (PreviewPlace{0, 25, 100, 50}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {501, 100}), (PreviewPlace{150, 0, 200, 100}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {101, 100}), (PreviewPlace{0, 25, 101, 50}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {200, 100}), (PreviewPlace{0, 0, 200, 100}));
}

// 3 : 7 at 1000 high: 428.57.
TEST(PreviewLayout, FittedSizeIsTruncated) {
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {1000, 1000}, {0, 0, 300, 700}), (PreviewPlace{286, 0, 428, 1000}));
}

// The nearest float to 2.4 is 2.4000001, and 300 / that is 124.999992; the one to 1.05 is 1.04999995, and 200
// times that 209.999985. In double precision both would come out whole: 125 and 210.
TEST(PreviewLayout, ShapeIsFittedInSinglePrecision) {
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {300, 200}, {0, 0, 12, 5}), (PreviewPlace{0, 38, 300, 124}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {300, 200}, {0, 0, 21, 20}), (PreviewPlace{45, 0, 209, 200}));
}

TEST(PreviewLayout, MaskWithoutAShapeDoesNoHarm) {
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {100, 80}, {0, 0, 10, 0}), (PreviewPlace{0, 40, 100, 0}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {100, 80}, {0, 0, 0, 10}), (PreviewPlace{50, 0, 0, 80}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FIT, {100, 80}, {0, 0, 0, 0}), (PreviewPlace{50, 0, 0, 80}));
}

TEST(PreviewLayout, OtherAspectModes) {
    EXPECT_EQ(aspect(TAVRA_ASPECT_STRETCH, {801, 3}), (PreviewPlace{0, 0, 801, 3}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_MASK, {801, 3}), (PreviewPlace{300, 0, 200, 100}));
    EXPECT_EQ(aspect(TAVRA_ASPECT_FREE, {801, 3}), kPresent);
    EXPECT_EQ(aspect(TAVRA_ASPECT_SIZE, {101, 100}), (PreviewPlace{25, 30, 50, 40}));
}

TEST(PreviewLayout, RectangleIsMovedByTheScrollPosition) {
    EXPECT_EQ(rectangleOf({10, 20, 30, 40}, 15, 5), (Rectangle{-5, 15, 25, 55}));
    EXPECT_EQ(rectangleOf({0xFFFFFFFF, 0, 2, 1}), (Rectangle{-1, 0, 1, 1}));
}

ScrollInput scrolls(Size content, Size window) {
    ScrollInput input;
    input.destination = {0, 0, content.width, content.height};
    input.content = content;
    input.window = input.client = window;
    input.horizontalThickness = 16;
    input.verticalThickness = 18;
    input.horizontalAllowed = input.verticalAllowed = true;
    return input;
}

TEST(PreviewLayout, BarsAreShownWhereTheContentIsLarger) {
    EXPECT_EQ(scrollBarsFor(scrolls({100, 100}, {100, 100})).horizontal, ScrollBar());
    EXPECT_EQ(scrollBarsFor(scrolls({100, 100}, {100, 100})).vertical, ScrollBar());
    const ScrollBars both = scrollBarsFor(scrolls({300, 200}, {100, 80}));
    EXPECT_EQ(both.horizontal, (ScrollBar{299, 100, 0}));
    EXPECT_EQ(both.vertical, (ScrollBar{199, 80, 0}));
}

TEST(PreviewLayout, OneBarMayBringTheOther) {
    // 84 + 16 is 100 and fits; 85 + 16 does not.
    EXPECT_EQ(scrollBarsFor(scrolls({101, 84}, {100, 100})).vertical, ScrollBar());
    EXPECT_EQ(scrollBarsFor(scrolls({101, 85}, {100, 100})).vertical, (ScrollBar{84, 100, 0}));
    EXPECT_EQ(scrollBarsFor(scrolls({82, 101}, {100, 100})).horizontal, ScrollBar());
    EXPECT_EQ(scrollBarsFor(scrolls({83, 101}, {100, 100})).horizontal, (ScrollBar{82, 100, 0}));
}

TEST(PreviewLayout, StyleMustAllowABar) {
    ScrollInput input = scrolls({300, 200}, {100, 80});
    input.scrollX = input.scrollY = 20;
    input.horizontalAllowed = false;
    EXPECT_EQ(scrollBarsFor(input).horizontal, ScrollBar());
    EXPECT_EQ(scrollBarsFor(input).vertical.position, 20);
    input.horizontalAllowed = true;
    input.verticalAllowed = false;
    EXPECT_EQ(scrollBarsFor(input).horizontal.position, 20);
    EXPECT_EQ(scrollBarsFor(input).vertical, ScrollBar());
}

// The destination's offset counts, and the last position is 299 - 100 + 1.
TEST(PreviewLayout, PositionIsHeldInTheRange) {
    ScrollInput input = scrolls({300, 200}, {100, 80});
    input.destination = {20, 0, 280, 200};
    input.scrollX = 500;
    EXPECT_EQ(scrollBarsFor(input).horizontal, (ScrollBar{299, 100, 200}));
    input.client.width = 400;  // all in sight
    EXPECT_EQ(scrollBarsFor(input).horizontal, (ScrollBar{299, 400, 0}));
}

TEST(PreviewLayout, ScrollCodes) {
    const ScrollBar bar{299, 100, 150};  // last position 200
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::LineBack, 0), 149);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::LineOn, 0), 151);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::PageBack, 0), 50);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::PageOn, 0), 200);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::ThumbReleased, 33), 33);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::ThumbMoves, 260), 200);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::ThumbMoves, -4), 0);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::First, 9), 0);
    EXPECT_EQ(scrolledPosition(bar, ScrollCode::Last, 9), 200);
}

TEST(PreviewLayout, ScrollingStopsAtTheEnds) {
    EXPECT_EQ(scrolledPosition({299, 100, 0}, ScrollCode::LineBack, 0), 0);
    EXPECT_EQ(scrolledPosition({299, 100, 200}, ScrollCode::LineOn, 0), 200);
    EXPECT_EQ(scrolledPosition({299, 100, 100}, ScrollCode::PageBack, 0), 0);  // the page is not below
}

// An image of 640 x 480 halves to 20 x 15.
TEST(PreviewLayout, ClickHalvesTheMaskAroundThePoint) {
    const PreviewPlace whole{0, 0, 640, 480};
    EXPECT_EQ(magnified(whole, whole, kImage, 320, 240, false), (PreviewPlace{160, 120, 320, 240}));
    EXPECT_EQ(magnified(whole, whole, kImage, 100, 50, false), (PreviewPlace{0, 0, 320, 240}));
    EXPECT_EQ(magnified(whole, whole, kImage, 600, 470, false), (PreviewPlace{320, 240, 320, 240}));
}

TEST(PreviewLayout, PointIsScaledFromDestinationToMask) {
    // x: 50 * 320 / 100 + 160 = 320; y: 40 * 240 / 80 + 120 = 240
    EXPECT_EQ(magnified({160, 120, 320, 240}, {0, 0, 100, 80}, kImage, 50, 40, false),
              (PreviewPlace{240, 180, 160, 120}));
}

// Left of the window, where a captured mouse may be released, is far right of it: (2^32 - 640) / 640 and
// (2^32 - 480) / 480 lie beyond every image.
TEST(PreviewLayout, PointIsWorkedOutWithoutASign) {
    const PreviewPlace whole{0, 0, 640, 480};
    const auto minusOne = static_cast<std::uint32_t>(-1);
    EXPECT_EQ(magnified(whole, whole, kImage, minusOne, 240, false), (PreviewPlace{320, 120, 320, 240}));
    EXPECT_EQ(magnified(whole, whole, kImage, 320, minusOne, false), (PreviewPlace{160, 240, 320, 240}));
}

TEST(PreviewLayout, ClickAtTheSmallestMaskOnlyMovesIt) {
    // x: 10 * 20 / 640 + 100 = 100, less 10; y: 240 * 15 / 480 + 50 = 57, less 7
    EXPECT_EQ(magnified({100, 50, 20, 15}, {0, 0, 640, 480}, kImage, 10, 240, false),
              (PreviewPlace{90, 50, 20, 15}));
}

TEST(PreviewLayout, AltClickDoublesUpToTheImage) {
    const PreviewPlace window{0, 0, 640, 480};
    EXPECT_EQ(magnified({160, 120, 320, 240}, window, kImage, 0, 0, true), (PreviewPlace{0, 0, 640, 480}));
    // x: 320 * 100 / 640 + 10 = 60: 100 wide goes to 200, 60 is not above half of it.
    EXPECT_EQ(magnified({10, 400, 100, 60}, window, kImage, 320, 240, true),
              (PreviewPlace{0, 360, 200, 120}));
    EXPECT_EQ(magnified({0, 0, 640, 480}, window, kImage, 9, 9, true), (PreviewPlace{0, 0, 640, 480}));
}

TEST(PreviewLayout, MagnificationOfNothingDoesNoHarm) {
    EXPECT_EQ(magnified(kMask, {0, 0, 0, 5}, kImage, 1, 1, false), kMask);
    EXPECT_EQ(magnified({0, 0, 0, 0}, {0, 0, 5, 5}, {0, 0}, 1, 1, false), PreviewPlace());
}

}  // namespace
}  // namespace test
}  // namespace tavra
