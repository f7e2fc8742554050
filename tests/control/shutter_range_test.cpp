#include "control/shutter_range.h"

#include <gtest/gtest.h>

namespace tavra::test {
namespace {

// Lines of 100 clocks; a frame takes 50 lines and 20 clocks, the longest exposure 200 lines and 30.
const ShutterScale kScale{99, {50, 20}, {200, 30}, true};
constexpr std::uint32_t kFree = 5020;
constexpr std::uint32_t kLongest = 20030;

bool takes(const ShutterRange& range) {
    const Status status = checkShutterRange(range, kScale);
    EXPECT_TRUE(status.ok() || status.code() == 87);
    return status.ok();
}

TEST(ShutterRange, NoEndIsBeyondTheLongestExposure) {
    EXPECT_TRUE(takes({{200, 30}, {200, 30}}));
    EXPECT_FALSE(takes({{201, 0}, {200, 30}}));
    EXPECT_FALSE(takes({{200, 31}, {200, 31}}));
    EXPECT_FALSE(takes({{1, 0}, {201, 0}}));
    EXPECT_FALSE(takes({{1, 0}, {200, 31}}));
}

TEST(ShutterRange, ClocksFitALine) {
    EXPECT_TRUE(takes({{1, 99}, {3, 99}}));
    EXPECT_FALSE(takes({{1, 100}, {3, 0}}));
    EXPECT_FALSE(takes({{1, 0}, {3, 100}}));
}

TEST(ShutterRange, ABottomBelowAFreeTop) {
    EXPECT_TRUE(takes({{0, 1}, {}}));
    EXPECT_TRUE(takes({{0, 0}, {}}));
    EXPECT_TRUE(takes({{49, 99}, {}}));
    EXPECT_FALSE(takes({{51, 0}, {}}));
    EXPECT_TRUE(takes({{50, 50}, {}})) << "compared with the lines";
    EXPECT_FALSE(takes({{50, 51}, {}}));
}

TEST(ShutterRange, ABottomBelowTheTop) {
    EXPECT_TRUE(takes({{10, 5}, {10, 5}}));
    EXPECT_TRUE(takes({{10, 5}, {11, 0}}));
    EXPECT_FALSE(takes({{10, 6}, {10, 5}}));
    EXPECT_FALSE(takes({{11, 0}, {10, 99}}));
}

TEST(ShutterRange, AFreeBottomIsAsLongAsAFrame) {
    EXPECT_TRUE(takes({{0, 0}, {50, 50}})) << "compared with the lines";
    EXPECT_TRUE(takes({{0, 0}, {51, 0}}));
    EXPECT_FALSE(takes({{0, 0}, {50, 49}}));
    EXPECT_FALSE(takes({{0, 0}, {49, 99}}));
}

TEST(ShutterRange, MoreClocksThanLinesOfAFrameDoNotCount) {
    ShutterScale scale = kScale;
    scale.maxShort = {5, 20};
    EXPECT_TRUE(checkShutterRange({{0, 0}, {5, 5}}, scale).ok());
    EXPECT_TRUE(checkShutterRange({{0, 0}, {5, 10}}, scale).ok());
    EXPECT_EQ(checkShutterRange({{0, 0}, {5, 4}}, scale).code(), 87u);
    EXPECT_TRUE(checkShutterRange({{5, 5}, {}}, scale).ok());
    EXPECT_EQ(checkShutterRange({{5, 6}, {}}, scale).code(), 87u);
}

TEST(ShutterRange, ABottomOfClocksOnly) {
    EXPECT_TRUE(takes({{0, 7}, {0, 7}}));
    EXPECT_TRUE(takes({{0, 7}, {1, 0}}));
    EXPECT_FALSE(takes({{0, 8}, {0, 7}}));
}

TEST(ShutterRange, ATopInClocksPushesTheBottomDown) {
    const struct {
        std::uint32_t bottom, top, newBottom;
    } rows[] = {{100, 3000, 100},  {4000, 3000, 3000}, {0, 3000, 0},        {100, 0, 100},
                {kFree, 0, kFree}, {kFree + 1, 0, 0},  {100, kLongest, 100}};
    for (const auto& row : rows) {
        ShutterRange range{kScale.split(row.bottom), {7, 7}};
        EXPECT_TRUE(moveRangeTop(range, row.top, kScale).ok());
        EXPECT_EQ(range, (ShutterRange{kScale.split(row.newBottom), kScale.split(row.top)})) << row.top;
    }
}

TEST(ShutterRange, ABottomInClocksPushesTheTopUp) {
    const struct {
        std::uint32_t top, bottom, newTop;
    } rows[] = {{3000, 100, 3000}, {3000, 4000, 4000}, {0, kFree, 0}, {0, kFree + 1, kFree + 1}, {0, 100, 0},
                {kFree, 0, kFree}, {kFree - 1, 0, 0},  {0, 0, 0},     {3000, kLongest, kLongest}};
    for (const auto& row : rows) {
        ShutterRange range{{7, 7}, kScale.split(row.top)};
        EXPECT_TRUE(moveRangeBottom(range, row.bottom, kScale).ok());
        EXPECT_EQ(range, (ShutterRange{kScale.split(row.bottom), kScale.split(row.newTop)})) << row.bottom;
    }
}

TEST(ShutterRange, EndsInClocksBeyondTheLongestAreRefused) {
    const ShutterRange before{{1, 2}, {3, 4}};
    ShutterRange range = before;
    EXPECT_EQ(moveRangeTop(range, kLongest + 1, kScale).code(), 87u);
    EXPECT_EQ(moveRangeBottom(range, kLongest + 1, kScale).code(), 87u);
    EXPECT_EQ(range, before);
}

}  // namespace
}  // namespace tavra::test
