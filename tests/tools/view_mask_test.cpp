#include "view_mask.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

// Width, height, x, y.
void expectPart(const Geometry& part, std::uint32_t width, std::uint32_t height, std::uint32_t x,
                std::uint32_t y) {
    EXPECT_EQ(geometryText(part), geometryText({width, height, x, y}));
}

TEST(ViewMask, HalvesAboutTheMiddle) {
    expectPart(zoomedIn({640, 480, 0, 0}, {640, 480}), 320, 240, 160, 120);
    expectPart(zoomedIn({320, 240, 320, 240}, {640, 480}), 160, 120, 400, 300);
    expectPart(zoomedIn({641, 479, 0, 0}, {641, 479}), 320, 239, 160, 120);
}

TEST(ViewMask, DoublesWithinTheImage) {
    expectPart(zoomedOut({160, 120, 400, 300}, {640, 480}), 320, 240, 320, 240);
    expectPart(zoomedOut({160, 120, 480, 0}, {640, 480}), 320, 240, 320, 0);
    expectPart(zoomedOut({640, 480, 0, 0}, {640, 480}), 640, 480, 0, 0);
}

TEST(ViewMask, ComesBackToTheWholeOfAnOddImage) {
    Geometry part = wholeOf({641, 479});
    for (int i = 0; i < 4; ++i) part = zoomedIn(part, {641, 479});
    for (int i = 0; i < 4; ++i) part = zoomedOut(part, {641, 479});
    expectPart(part, 641, 479, 0, 0);
}

TEST(ViewMask, StopsAtEightPixels) {
    expectPart(zoomedIn({8, 9, 100, 100}, {640, 480}), 8, 8, 100, 100);
    expectPart(zoomedIn({4, 2, 0, 0}, {4, 2}), 4, 2, 0, 0);
    expectPart(zoomedIn({1, 1, 0, 0}, {1, 1}), 1, 1, 0, 0);
}

TEST(ViewMask, MovesByQuartersAsFarAsTheImageGoes) {
    expectPart(movedBy({320, 240, 160, 120}, {640, 480}, 1, -1), 320, 240, 240, 60);
    expectPart(movedBy({320, 240, 300, 20}, {640, 480}, 1, -1), 320, 240, 320, 0);
    expectPart(movedBy({640, 480, 0, 0}, {640, 480}, 1, 1), 640, 480, 0, 0);
}

TEST(ViewMask, TellsTheMagnification) {
    EXPECT_EQ(magnificationOf({640, 480, 0, 0}, {640, 480}), 1);
    EXPECT_EQ(magnificationOf({160, 120, 0, 0}, {640, 480}), 4);
    EXPECT_EQ(magnificationOf({0, 0, 0, 0}, {640, 480}), 1);
}

TEST(ViewMask, BeginsWithTheImagesSizeWithinTheScreen) {
    EXPECT_EQ(firstWindowSize({640, 480}, {1920, 1080}, true), (Extent{640, 480}));
    EXPECT_EQ(firstWindowSize({4096, 3000}, {1920, 1080}, false), (Extent{1920, 1080}));
    EXPECT_EQ(firstWindowSize({640, 2000}, {1920, 1080}, false), (Extent{640, 1080}));
}

TEST(ViewMask, KeepsTheShapeOfAnImageThatIsFittedIn) {
    EXPECT_EQ(firstWindowSize({4000, 3000}, {2000, 1000}, true), (Extent{1333, 1000}));
    EXPECT_EQ(firstWindowSize({3000, 4000}, {2000, 1000}, true), (Extent{750, 1000}));
    EXPECT_EQ(firstWindowSize({100000, 1}, {1000, 1000}, true), (Extent{1000, 1}));
    EXPECT_EQ(firstWindowSize({0, 0}, {1000, 1000}, true), (Extent{0, 0}));
}

}  // namespace
}  // namespace tavra::tool
