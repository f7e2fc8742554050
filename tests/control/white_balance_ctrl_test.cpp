// The control law as a state machine, fed with frames of known colours.
#include "control/white_balance_ctrl.h"

#include <gmock/gmock.h>

#include "control/white_balance_double.h"

namespace tavra::test {
namespace {

using testing::Each;

TEST_F(WhiteBalance, AColorCameraStartsContinuous) {
    PlainControl control({100, 110, 120, 130}, 5);
    EXPECT_EQ(mode(control), 2);
    EXPECT_EQ(gains(control), (Gains{100, 110, 120, 130}));
    EXPECT_EQ(control.target().r, 100);
    EXPECT_EQ(control.target().b, 100);
    EXPECT_EQ(control.band().tolerance, 5);
    EXPECT_EQ(control.band().threshold, 5);
    EXPECT_THAT(control.weights(), Each(1));
    for (const std::uint16_t code : {2, 3, 4, 16, 19}) {
        PlainControl other(kUnityGains, code);
        EXPECT_EQ(mode(other), 2) << code;
    }
}

TEST_F(WhiteBalance, AMonoLikeCameraStartsOffAndIsNeverDue) {
    for (const std::uint16_t code : {1, 12, 13, 14, 15}) {
        PlainControl control(kUnityGains, code);
        EXPECT_EQ(mode(control), 0) << code;
        for (const std::uint8_t set : {0, 1, 2, 3, 255}) {
            setMode(control, set);
            EXPECT_EQ(mode(control), set);
            EXPECT_FALSE(control.frameIsDue());
        }
    }
}

TEST_F(WhiteBalance, ModesFrom2OnRunTheLoop) {
    PlainControl control;
    for (unsigned set = 0; set < 256; ++set) {
        setMode(control, static_cast<std::uint8_t>(set));
        EXPECT_EQ(control.frameIsDue(), set >= 2) << set;
    }
}

TEST_F(WhiteBalance, TenFramesMakeADecisionAndTenAreLeftOut) {
    PlainControl control;
    see({50, 100, 100, 200});
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(gains(control)[0], 128 << round) << "before frame " << i;
            EXPECT_TRUE(passFrame(control));
        }
        EXPECT_EQ(gains(control)[0], 256 << round);
        for (int i = 0; i < 10; ++i) EXPECT_FALSE(passFrame(control)) << i;
    }
}

TEST_F(WhiteBalance, TheCountdownGoesOnInAnyMode) {
    PlainControl control;
    decideOn(control, {50, 100, 100, 200});
    see({50, 100, 100, 200});
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(passFrame(control));
    setMode(control, 0);
    for (int i = 0; i < 9; ++i) EXPECT_FALSE(control.frameIsDue());
    setMode(control, 2);
    EXPECT_FALSE(control.frameIsDue()) << "the tenth";
    EXPECT_TRUE(control.frameIsDue());
}

TEST_F(WhiteBalance, AStepCountsDownTooWhenItComesEarly) {
    PlainControl control;
    see({50, 100, 100, 200});
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(control.controlStep(statistics));
    EXPECT_EQ(gains(control)[0], 256) << "ten measured, ten counted down";
    EXPECT_TRUE(control.frameIsDue());
    setMode(control, 1);
    for (int i = 0; i < 30; ++i) EXPECT_TRUE(control.controlStep(statistics));
    EXPECT_EQ(gains(control)[0], 256) << "manual";
}

TEST_F(WhiteBalance, AChangeOfModeKeepsTheFramesInHand) {
    PlainControl control;
    see({50, 100, 100, 100});
    for (int i = 0; i < 9; ++i) EXPECT_TRUE(passFrame(control));
    setMode(control, 0);
    EXPECT_FALSE(passFrame(control));
    setMode(control, 2);
    see({100, 100, 100, 100});
    EXPECT_TRUE(passFrame(control));
    EXPECT_EQ(gains(control)[0], 232) << "128 x 100 / ((9 x 50 + 100) / 10) = 12800 / 55";
}

TEST_F(WhiteBalance, GainsFollowTheMeans) {
    PlainControl control({100, 110, 120, 300});
    // green = (90 + 101) / 2 = 95
    decideOn(control, {60, 90, 101, 130});
    EXPECT_EQ(gains(control), (Gains{158, 110, 120, 219})) << "100 x 95 / 60, 300 x 95 / 130";
}

TEST_F(WhiteBalance, MeansOfTenFramesAreTruncated) {
    PlainControl control;
    for (int i = 0; i < 10; ++i) {
        // R 50 and 51, on the whole 50.9; Gr 100.5, Gb 100; B 100
        see({static_cast<std::uint16_t>(i == 0 ? 50 : 51), static_cast<std::uint16_t>(100 + i % 2), 100,
             100});
        EXPECT_TRUE(passFrame(control));
    }
    EXPECT_EQ(gains(control), (Gains{256, 128, 128, 128})) << "128 x 100 / 50";
}

TEST_F(WhiteBalance, TargetsArePercentOfGreen) {
    PlainControl control;
    ASSERT_TRUE(control.setTarget({80, 125}).ok());
    decideOn(control, {100, 99, 99, 100});
    // 79 and 123
    EXPECT_EQ(gains(control), (Gains{101, 128, 128, 157}));
}

TEST_F(WhiteBalance, GainsEndAt1023) {
    PlainControl control({900, 128, 128, 1});
    decideOn(control, {100, 200, 200, 100});
    EXPECT_EQ(gains(control), (Gains{1023, 128, 128, 2}));
}

TEST_F(WhiteBalance, ABlackColorDoublesItsGainFrom1UpTo1023) {
    PlainControl control({0, 128, 128, 3});
    const std::uint16_t red[] = {1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1023, 1023};
    const std::uint16_t blue[] = {6, 12, 24, 48, 96, 192, 384, 768, 1023, 1023, 1023, 1023};
    for (std::size_t i = 0; i < std::size(red); ++i) {
        decideOn(control, {0, 11, 11, 0});
        EXPECT_EQ(gains(control), (Gains{red[i], 128, 128, blue[i]})) << i;
    }
}

TEST_F(WhiteBalance, AGainOf0StaysWhereThereIsAMean) {
    PlainControl control({0, 128, 128, 128});
    decideOn(control, {50, 100, 100, 100});
    EXPECT_EQ(gains(control)[0], 0);
}

// The means stand at the limits or within them; only within there is a decision.
TEST_F(WhiteBalance, GreenMustLieBetweenTheLimits) {
    const struct {
        std::uint16_t gr, gb;
        bool decides;
    } rows[] = {{10, 10, false},  {10, 11, false},  {11, 11, true},    {0, 22, true},    {0, 0, false},
                {244, 244, true}, {244, 245, true}, {245, 245, false}, {255, 255, false}};
    for (const auto& row : rows) {
        PlainControl control;
        setMode(control, 3);
        decideOn(control, {3, row.gr, row.gb, 3});
        EXPECT_EQ(gains(control) != kUnityGains, row.decides) << row.gr << " " << row.gb;
        EXPECT_EQ(mode(control), 3) << "without a decision one-push goes on";
    }
}

TEST_F(WhiteBalance, NoDecisionLeavesTheLastOneInForce) {
    PlainControl control;
    decideOn(control, {90, 100, 100, 100});  // adjusts
    EXPECT_EQ(gains(control)[0], 142);
    decideOn(control, {0, 5, 5, 0});
    ASSERT_TRUE(control.setBand({0, 10}).ok());
    // A distance of 1.0 is not below 10, the limit of a loop that moved; at rest it would be 20.
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control)[0], 143);
}

// A loop at rest needs twice the distance. 1.0 is ten tenths.
TEST_F(WhiteBalance, StartsAtTwiceTheThresholdAndStopsBelowIt) {
    PlainControl control;
    ASSERT_TRUE(control.setBand({0, 6}).ok());
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control), kUnityGains) << "10 is below 12";
    decideOn(control, {99, 100, 100, 101});
    EXPECT_EQ(gains(control), (Gains{129, 128, 128, 126})) << "14 is not; now it runs";
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control), (Gains{130, 128, 128, 126})) << "10 is not below 6";
    decideOn(control, {100, 100, 100, 100});
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control), (Gains{130, 128, 128, 126})) << "at rest again";
    ASSERT_TRUE(control.setBand({0, 5}).ok());
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control), (Gains{131, 128, 128, 126})) << "10 is not below 10";
}

// 5 and 12 are 13: neither axis alone reaches 13.
TEST_F(WhiteBalance, TheDistanceIsOfBothColors) {
    for (const std::uint16_t threshold : {65, 66}) {
        PlainControl control;
        ASSERT_TRUE(control.setBand({0, threshold}).ok());
        decideOn(control, {105, 100, 100, 88});
        EXPECT_EQ(gains(control) != kUnityGains, threshold == 65) << "130 against twice " << threshold;
    }
    // sqrt(2) x 10 = 14.14, truncated: below 15, not below 14.
    for (const std::uint16_t threshold : {7, 8}) {
        PlainControl control;
        ASSERT_TRUE(control.setBand({0, threshold}).ok());
        decideOn(control, {101, 100, 100, 99});
        EXPECT_EQ(gains(control) != kUnityGains, threshold == 7);
    }
}

TEST_F(WhiteBalance, WithoutAThresholdEveryFrameDecides) {
    PlainControl control;
    ASSERT_TRUE(control.setBand({0, 0}).ok());
    setMode(control, 3);
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(gains(control), kUnityGains);
    EXPECT_EQ(mode(control), 1) << "decided, and nothing moved";
}

TEST_F(WhiteBalance, OnePushEndsWhereNothingMoves) {
    PlainControl control;
    setMode(control, 3);
    decideOn(control, {50, 100, 100, 200});
    EXPECT_EQ(mode(control), 3);
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(mode(control), 1);
    EXPECT_EQ(gains(control), (Gains{256, 128, 128, 64}));
    EXPECT_FALSE(control.frameIsDue());
}

TEST_F(WhiteBalance, OnePushOnGreyEndsAtTheFirstDecision) {
    PlainControl control;
    setMode(control, 3);
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(mode(control), 1);
    EXPECT_EQ(gains(control), kUnityGains);
}

TEST_F(WhiteBalance, OnePushAlsoEndsAtTheEndOfTheGains) {
    PlainControl control({1023, 128, 128, 128});
    setMode(control, 3);
    decideOn(control, {50, 100, 100, 100});
    EXPECT_EQ(mode(control), 1) << "far off, and nothing to move";
}

TEST_F(WhiteBalance, ContinuousGoesOnAfterItRests) {
    PlainControl control;
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(mode(control), 2);
    decideOn(control, {50, 100, 100, 100});
    EXPECT_EQ(gains(control)[0], 256);
}

TEST_F(WhiteBalance, WithoutWeightsThereIsNoDecision) {
    PlainControl control;
    setMode(control, 3);
    ASSERT_TRUE(control.setWeights({}).ok());
    decideOn(control, {50, 100, 100, 200});
    EXPECT_EQ(gains(control), kUnityGains);
    EXPECT_EQ(mode(control), 3);
}

// What cannot be decided on leaves one push waiting for a better scene.
TEST_F(WhiteBalance, OnePushGoesOnWithTheFirstFrameThatCanBeDecidedOn) {
    PlainControl control;
    setMode(control, 3);
    decideOn(control, {0, 0, 0, 0});
    EXPECT_EQ(mode(control), 3);
    EXPECT_EQ(gains(control), kUnityGains);
    decideOn(control, {50, 100, 100, 200});
    EXPECT_EQ(mode(control), 3);
    EXPECT_EQ(gains(control), (Gains{256, 128, 128, 64}));
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(mode(control), 1);
}

TEST_F(WhiteBalance, WeightsChooseTheCells) {
    PlainControl control;
    CAveragePixelValue::Weights corner{};
    corner[15] = 7;
    ASSERT_TRUE(control.setWeights(corner).ok());
    EXPECT_EQ(control.weights(), corner);
    Frame frame = frameOf(2, {100, 100, 100, 100});
    const Frame reddish = frameOf(2, {200, 100, 100, 100});
    for (std::size_t y = 12; y < 16; ++y) {
        for (std::size_t x = 12; x < 16; ++x) frame[kSide * y + x] = reddish[kSide * y + x];
    }
    statistics.Accumulate(kSide, kSide, 2, frame.data());
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(passFrame(control));
    EXPECT_EQ(gains(control)[0], 64);
}

// 65535 x 101 / 100 = 66190 wanted; 64889 x 66190 is 35614 above 2^32, and 35614 / 255 = 139.
TEST_F(WhiteBalance, ProductsOutOfRangeWrapIn32Bits) {
    PlainControl control({64889, 128, 128, 128});
    ASSERT_TRUE(control.setTarget({65535, 100}).ok());
    decideOn(control, {255, 101, 101, 101});
    EXPECT_EQ(gains(control), (Gains{139, 128, 128, 128}));
}

TEST_F(WhiteBalance, TargetsOutOfRangeEndAt1023) {
    PlainControl control({65535, 128, 128, 128});
    ASSERT_TRUE(control.setTarget({65535, 0}).ok());
    decideOn(control, {100, 100, 100, 100});
    EXPECT_EQ(gains(control), (Gains{1023, 128, 128, 0}));
}

TEST_F(WhiteBalance, ResetIsLikeNew) {
    PlainControl control({200, 128, 128, 140});
    decideOn(control, {50, 100, 100, 200});
    see({50, 100, 100, 200});
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(passFrame(control));
    setMode(control, 1);
    setGains(control, {1, 2, 3, 4});
    ASSERT_TRUE(control.setTarget({1, 2}).ok());
    ASSERT_TRUE(control.setBand({1, 2}).ok());
    ASSERT_TRUE(control.setWeights({}).ok());
    control.Reset();
    EXPECT_EQ(mode(control), 2);
    EXPECT_EQ(gains(control), (Gains{200, 128, 128, 140}));
    EXPECT_EQ(control.target().r, 100);
    EXPECT_EQ(control.target().b, 100);
    EXPECT_EQ(control.band().tolerance, 5);
    EXPECT_EQ(control.band().threshold, 5);
    EXPECT_THAT(control.weights(), Each(1));
    // The frames in hand are gone, and the loop is at rest.
    ASSERT_TRUE(control.setBand({0, 6}).ok());
    decideOn(control, {99, 100, 100, 100});
    EXPECT_EQ(gains(control)[0], 200);
}

TEST_F(WhiteBalance, ResetEndsTheCountdown) {
    PlainControl control;
    see({50, 100, 100, 200});
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(passFrame(control));
    EXPECT_FALSE(control.frameIsDue());
    control.Reset();
    EXPECT_TRUE(control.frameIsDue());
}

}  // namespace
}  // namespace tavra::test
