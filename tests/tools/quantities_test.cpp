#include "quantities.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "exit_code.h"

namespace tavra::tool {
namespace {

// What the failure says, or "none".
template <typename Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
        return failure.what();
    }
    return "none";
}

TEST(Quantities, TimesNeedAUnit) {
    EXPECT_DOUBLE_EQ(parseTime("8ms", "t"), 0.008);
    EXPECT_DOUBLE_EQ(parseTime("0.5s", "t"), 0.5);
    EXPECT_DOUBLE_EQ(parseTime("250us", "t"), 250e-6);
    EXPECT_DOUBLE_EQ(parseTime("1/100s", "t"), 0.01);
    for (const char* bad :
         {"", "8", "ms", "-1ms", "0s", "1/0s", "/2s", "1e3s", "8 ms", "8min", "infs", "2000000s"}) {
        EXPECT_THROW(parseTime(bad, "t"), Failure) << bad;
    }
    EXPECT_EQ(failureOf([] { parseTime("8", "exposure"); }),
              "exposure cannot be '8': a time such as 8ms, 500us, 0.5s or 1/100s");
}

TEST(Quantities, TimesAreShownInTheUnitOfTheirSize) {
    EXPECT_EQ(timeText(0.0000015), "1.5us");
    EXPECT_EQ(timeText(0.008), "8.000ms");
    EXPECT_EQ(timeText(2.5), "2.500s");
}

TEST(Quantities, NumbersStayInTheirLimitsAndMayHaveTheirUnit) {
    EXPECT_DOUBLE_EQ(parseReal("6", "gain", {0, 24}, "dB"), 6);
    EXPECT_DOUBLE_EQ(parseReal("-2.5dB", "gain", {-3, 24}, "dB"), -2.5);
    EXPECT_DOUBLE_EQ(parseReal("24", "gain", {0, 24}), 24);
    for (const char* bad : {"", "25", "-1", "6x", "dB", "nan", "inf", "1e1", "0x4", " 1"}) {
        EXPECT_THROW(parseReal(bad, "gain", {0, 24}, "dB"), Failure) << bad;
    }
    EXPECT_EQ(failureOf([] {
                  parseReal("25", "gain", {0, 24.5}, "dB");
              }),
              "gain cannot be '25': a number from 0 to 24.5dB");
    EXPECT_EQ(parseWhole("255", "n", {0, 255}), 255u);
    for (const char* bad : {"256", "-1", "1.5", "", "1a"}) {
        EXPECT_THROW(parseWhole(bad, "n", {0, 255}), Failure) << bad;
    }
}

TEST(Quantities, RealTextHasNoNeedlessDigits) {
    EXPECT_EQ(realText(1, 3), "1");
    EXPECT_EQ(realText(1.25, 3), "1.25");
    EXPECT_EQ(realText(100, 2), "100");
    EXPECT_EQ(realText(100, 0), "100");
    EXPECT_EQ(realText(-0.001, 2), "0");
    EXPECT_EQ(realText(2.0 / 3, 3), "0.667");
}

TEST(Quantities, ListsHaveTheirCount) {
    EXPECT_EQ(splitText("1,,2", ',').size(), 3u);
    EXPECT_EQ(splitText("", ',').size(), 1u);
    EXPECT_EQ(parseReals("1,-2.5,0", 3, "row", {-3, 3}), (std::vector<double>{1, -2.5, 0}));
    for (const char* bad : {"1,2", "1,2,3,4", "1,2,", "1,2,9"}) {
        EXPECT_THROW(parseReals(bad, 3, "row", {-3, 3}), Failure) << bad;
    }
}

TEST(Quantities, WeightsAreSixteenOrOneForAll) {
    const Weights same = parseWeights("7", "w");
    EXPECT_TRUE(std::all_of(same.begin(), same.end(), [](int weight) { return weight == 7; }));
    const std::string sixteen = "0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,255";
    EXPECT_EQ(weightsText(parseWeights(sixteen, "w")), sixteen);
    EXPECT_EQ(parseWeights(sixteen, "w")[15], 255);
    for (const char* bad : {"", "1,2", "256", "0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,x"}) {
        EXPECT_THROW(parseWeights(bad, "w"), Failure) << bad;
    }
}

TEST(Quantities, RangesHaveTwoEnds) {
    const TextRange range = parseRange("100us..0.5s", "r", "1..2");
    EXPECT_EQ(range.lowest, "100us");
    EXPECT_EQ(range.highest, "0.5s");
    for (const char* bad : {"", "..", "1..", "..2", "1.5"}) {
        EXPECT_THROW(parseRange(bad, "r", "1..2"), Failure) << bad;
    }
}

}  // namespace
}  // namespace tavra::tool
