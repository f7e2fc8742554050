#include "control/shutter.h"

#include <gtest/gtest.h>

namespace tavra::test {
namespace {

// Lines of 100 clocks; a frame takes 50 lines and 20 clocks, the longest exposure 200 lines and 30.
ShutterScale scale(bool clockUnit) {
    return {99, {50, 20}, {200, 30}, clockUnit};
}

TEST(Shutter, TotalsOfACameraWithAClockPart) {
    const ShutterScale clocks = scale(true);
    EXPECT_EQ(clocks.ToTotalClocks({0, 0}), 5020u) << "the longest that fits a frame";
    EXPECT_EQ(clocks.ToTotalClocks({0, 1}), 1u);
    EXPECT_EQ(clocks.ToTotalClocks({3, 7}), 307u);
    EXPECT_EQ(clocks.ToTotalClocks({200, 30}), 20030u);
    EXPECT_EQ(clocks.ToTotalClocks({200, 31}), 20030u);
    EXPECT_EQ(clocks.ToTotalClocks({201, 0}), 20030u);
    EXPECT_EQ(clocks.ToTotalClocks({5, 500}), 1000u) << "more clocks than a line has";
}

TEST(Shutter, TotalsOfACameraOfWholeLines) {
    const ShutterScale lines = scale(false);
    EXPECT_EQ(lines.ToTotalClocks({0, 0}), 5000u);
    EXPECT_EQ(lines.ToTotalClocks({0, 1}), 100u) << "one whole line";
    EXPECT_EQ(lines.ToTotalClocks({3, 7}), 300u);
    EXPECT_EQ(lines.ToTotalClocks({201, 0}), 20000u);
}

TEST(Shutter, TheFreeExposureIsCutToTheLongestToo) {
    ShutterScale clocks = scale(true);
    clocks.maxLong = {40, 10};
    EXPECT_EQ(clocks.ToTotalClocks({0, 0}), 4010u);
    clocks.maxShort = {};
    EXPECT_EQ(clocks.ToTotalClocks({0, 0}), 0u) << "a camera that tells none";
}

TEST(Shutter, ClocksSplitIntoLinesAndClocks) {
    const ShutterScale clocks = scale(true);
    EXPECT_EQ(clocks.clocks({3, 7}), 307u);
    EXPECT_EQ(clocks.clocks({0, 0}), 0u);
    EXPECT_EQ(clocks.split(307), (Shutter{3, 7}));
    EXPECT_EQ(clocks.split(99), (Shutter{0, 99}));
    EXPECT_EQ(clocks.split(100), (Shutter{1, 0}));
    EXPECT_EQ(clocks.maxShortClocks(), 5020u);
    EXPECT_EQ(clocks.maxLongClocks(), 20030u);
}

TEST(Shutter, ALineOf2To32ClocksIsNeverFull) {
    ShutterScale endless = scale(true);
    endless.maxClock = 0xFFFFFFFF;
    EXPECT_EQ(endless.split(0xFFFFFFFF), (Shutter{0, 0xFFFFFFFF}));
    EXPECT_EQ(endless.clocks({7, 5}), 5u) << "totals wrap";
}

TEST(Shutter, OrderIsByLinesThenClocks) {
    EXPECT_TRUE((Shutter{2, 0}.isAbove({1, 99})));
    EXPECT_TRUE((Shutter{2, 1}.isAbove({2, 0})));
    EXPECT_FALSE((Shutter{2, 1}.isAbove({2, 1})));
    EXPECT_FALSE((Shutter{1, 99}.isAbove({2, 0})));
}

}  // namespace
}  // namespace tavra::test
