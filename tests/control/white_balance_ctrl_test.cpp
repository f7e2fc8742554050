// The control law as a state machine, fed with frames of known colours. No camera.
#include "control/white_balance_ctrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

using Frame = std::vector<std::uint8_t>;
using Gains = WhiteBalanceGains;

constexpr std::uint32_t kSide = 16;
constexpr Gains kUnityGains{128, 128, 128, 128};

// The operations of a camera, written down.
class PlainControl final : public CWhiteBalanceCtrl {
  public:
    explicit PlainControl(const Gains& resetGain = kUnityGains, std::uint16_t colorArray = 2,
                          bool hardware = false)
        : CWhiteBalanceCtrl(resetGain, colorArray, hardware) {}

    Status WriteMode(std::uint8_t mode) override {
        cameraMode = mode;
        return next();
    }
    Status ReadMode(std::uint8_t& mode) override {
        mode = cameraMode;
        return next();
    }
    Status WriteGain(const Gains& gains) override {
        cameraGains = gains;
        return next();
    }
    Status ReadGain(Gains& gains) override {
        gains = cameraGains;
        return next();
    }

    std::uint8_t cameraMode = 77;
    Gains cameraGains{};
    int requests = 0;
    std::uint32_t failure = 0;

  private:
    Status next() {
        ++requests;
        return Status(failure);
    }
};

Frame frameOf(std::uint16_t colorArray, const Gains& rGrGbB) {
    // Index into R, Gr, Gb, B by position, for the codes 2 to 5.
    constexpr std::size_t kColors[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
    Frame frame;
    for (std::uint32_t y = 0; y < kSide; ++y) {
        for (std::uint32_t x = 0; x < kSide; ++x) {
            const std::size_t color = kColors[colorArray - 2][x % 2 + 2 * (y % 2)];
            frame.push_back(static_cast<std::uint8_t>(rGrGbB[color]));
        }
    }
    return frame;
}

class WhiteBalance : public testing::Test {
  protected:
    static std::uint8_t mode(CWhiteBalanceCtrl& control) {
        std::uint8_t value = 99;
        EXPECT_TRUE(control.getMode(value).ok());
        return value;
    }
    static Gains gains(CWhiteBalanceCtrl& control) {
        Gains values{};
        EXPECT_TRUE(control.getGains(values).ok());
        return values;
    }
    static void setMode(CWhiteBalanceCtrl& control, std::uint8_t mode) {
        ASSERT_TRUE(control.setMode(mode).ok());
    }
    static void setGains(CWhiteBalanceCtrl& control, const Gains& values) {
        ASSERT_TRUE(control.setGains(values).ok());
    }

    // Measures means that are R, Gr, Gb, B, whatever the gains.
    void see(const Gains& rGrGbB) { statistics.Accumulate(kSide, kSide, 2, frameOf(2, rGrGbB).data()); }
    // One frame of what is seen, as the capture thread treats it: true if a step was made.
    bool passFrame(CWhiteBalanceCtrl& control) {
        if (!control.frameIsDue()) return false;
        EXPECT_TRUE(control.controlStep(statistics));
        return true;
    }
    // Frames up to a decision, and those that are left out after it.
    void decideOn(CWhiteBalanceCtrl& control, const Gains& rGrGbB) {
        see(rGrGbB);
        for (int i = 0; i < 20; ++i) EXPECT_EQ(passFrame(control), i < 10) << "frame " << i;
    }

    CAveragePixelValue statistics;
};

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

class GainStage : public WhiteBalance {
  protected:
    // A frame of 100 everywhere after the gains, as its four positions.
    static std::array<unsigned, 4> applied(CWhiteBalanceCtrl& control, std::uint16_t code) {
        Frame frame(4, 100);
        EXPECT_TRUE(control.ApplyGain(2, 2, code, frame.data()).ok());
        return {frame[0], frame[1], frame[2], frame[3]};
    }
};

constexpr std::array<unsigned, 4> kUnchanged{100, 100, 100, 100};

// 100 becomes 50, 75, 150 and 200.
constexpr Gains kFourGains{64, 96, 192, 256};

TEST_F(GainStage, EachColorHasItsGain) {
    PlainControl control(kFourGains);
    EXPECT_THAT(applied(control, 2), ElementsAre(50, 75, 150, 200));
    EXPECT_THAT(applied(control, 3), ElementsAre(75, 50, 200, 150));
    EXPECT_THAT(applied(control, 4), ElementsAre(150, 200, 50, 75));
    EXPECT_THAT(applied(control, 5), ElementsAre(200, 150, 75, 50));
}

TEST_F(GainStage, OtherCodesAreTakenInPairsLike2) {
    PlainControl control(kFourGains);
    for (const std::uint16_t code : {0, 6, 11, 12, 13, 15, 16, 17, 18, 19, 20}) {
        EXPECT_THAT(applied(control, code), ElementsAre(50, 75, 150, 200)) << code;
    }
}

TEST_F(GainStage, GreenAtUnityKeepsItsSamples) {
    PlainControl control({64, 128, 128, 256});
    EXPECT_THAT(applied(control, 2), ElementsAre(50, 100, 100, 200));
    EXPECT_THAT(applied(control, 3), ElementsAre(100, 50, 200, 100));
    EXPECT_THAT(applied(control, 4), ElementsAre(100, 200, 50, 100));
    EXPECT_THAT(applied(control, 5), ElementsAre(200, 100, 100, 50));
    for (const std::uint16_t code : {0, 6, 11, 12, 15, 16, 17, 18, 19, 20}) {
        EXPECT_EQ(applied(control, code), kUnchanged) << code;
    }
    setGains(control, {64, 128, 127, 256});
    EXPECT_THAT(applied(control, 16), ElementsAre(50, 100, 99, 200)) << "one green is not enough";
    setGains(control, {64, 127, 128, 256});
    EXPECT_THAT(applied(control, 16), ElementsAre(50, 99, 100, 200));
}

TEST_F(GainStage, NothingIsDoneWithMode0OrOnMonoFrames) {
    PlainControl control(kFourGains);
    setMode(control, 0);
    EXPECT_EQ(applied(control, 2), kUnchanged);
    for (const std::uint8_t set : {1, 2, 3, 200}) {
        setMode(control, set);
        EXPECT_THAT(applied(control, 2), ElementsAre(50, 75, 150, 200));
        EXPECT_EQ(applied(control, 1), kUnchanged);
    }
}

TEST_F(GainStage, CamerasWithAPatternApplyNothing) {
    for (const std::uint16_t code : {12, 13, 14, 15}) {
        PlainControl control(kFourGains, code);
        setMode(control, 1);
        EXPECT_EQ(applied(control, 2), kUnchanged);
    }
    PlainControl mono(kFourGains, 1);
    EXPECT_EQ(applied(mono, 2), kUnchanged) << "off at first";
    setMode(mono, 1);
    EXPECT_THAT(applied(mono, 2), ElementsAre(50, 75, 150, 200)) << "the frame's code counts";
}

TEST_F(GainStage, OddLastRowsAndColumnsStay) {
    PlainControl control({0, 0, 0, 0});
    Frame frame(15, 9);
    ASSERT_TRUE(control.ApplyGain(5, 3, 2, frame.data()).ok());
    EXPECT_THAT(frame, ElementsAre(0, 0, 0, 0, 9, 0, 0, 0, 0, 9, 9, 9, 9, 9, 9));
    for (const auto& [width, height] : {std::pair(15u, 1u), std::pair(1u, 15u), std::pair(0u, 0u)}) {
        Frame line(15, 9);
        ASSERT_TRUE(control.ApplyGain(width, height, 2, line.data()).ok());
        EXPECT_THAT(line, Each(9)) << width << " x " << height;
    }
}

TEST_F(GainStage, GainsOfADecisionReachTheNextFrame) {
    PlainControl control;
    decideOn(control, {50, 100, 100, 200});
    EXPECT_THAT(applied(control, 2), ElementsAre(200, 100, 100, 50));
}

TEST(HardwareWhiteBalance, ModeAndGainsAreTheCameras) {
    PlainControl control({1, 2, 3, 4}, 2, true);
    std::uint8_t mode = 0;
    EXPECT_TRUE(control.getMode(mode).ok());
    EXPECT_EQ(mode, 77);
    EXPECT_TRUE(control.setMode(9).ok());
    EXPECT_EQ(control.cameraMode, 9);
    EXPECT_TRUE(control.setGains({5, 6, 7, 8}).ok());
    EXPECT_EQ(control.cameraGains, (Gains{5, 6, 7, 8}));
    control.cameraGains = {9, 8, 7, 6};
    Gains gains{};
    EXPECT_TRUE(control.getGains(gains).ok());
    EXPECT_EQ(gains, (Gains{9, 8, 7, 6}));
    EXPECT_EQ(control.requests, 4);
    control.failure = 0xE0000005;
    EXPECT_EQ(control.getMode(mode), Status(0xE0000005));
    EXPECT_EQ(control.setMode(1), Status(0xE0000005));
    EXPECT_EQ(control.getGains(gains), Status(0xE0000005));
    EXPECT_EQ(control.setGains(gains), Status(0xE0000005));
}

TEST(HardwareWhiteBalance, TheLoopLiesIdle) {
    PlainControl control({1, 2, 3, 4}, 2, true);
    EXPECT_TRUE(control.setMode(2).ok());
    EXPECT_FALSE(control.frameIsDue());
    CAveragePixelValue statistics;
    EXPECT_FALSE(control.controlStep(statistics));
    Frame frame(4, 100);
    EXPECT_EQ(control.ApplyGain(2, 2, 2, frame.data()), Status(87));
    EXPECT_THAT(frame, Each(100));
}

TEST(HardwareWhiteBalance, SettingsOfTheLoopCannotBeSet) {
    PlainControl control({1, 2, 3, 4}, 2, true);
    EXPECT_EQ(control.setTarget({100, 100}), Status());
    EXPECT_EQ(control.setTarget({100, 101}), Status(87));
    EXPECT_EQ(control.setTarget({99, 100}), Status(87));
    EXPECT_EQ(control.setBand({5, 5}), Status(87));
    EXPECT_EQ(control.setWeights({}), Status(87));
    EXPECT_EQ(control.target().r, 100);
    EXPECT_EQ(control.target().b, 100);
    EXPECT_EQ(control.band().tolerance, 0);
    EXPECT_EQ(control.band().threshold, 0);
    EXPECT_THAT(control.weights(), Each(1));
    control.Reset();
    EXPECT_EQ(control.requests, 0) << "a reset is not the camera's";
}

// A grey card under daylight, with shot noise, seen through a mosaic; the loop starts from the gains of
// another light.
class GreyCard {
  public:
    GreyCard(std::uint16_t code, double r, double g, double b) : code_(code), light_{r, g, g, b} {}

    Frame shoot() {
        constexpr std::size_t kColors[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
        Frame frame;
        for (std::uint32_t y = 0; y < kSize; ++y) {
            for (std::uint32_t x = 0; x < kSize; ++x) {
                const double level = light_[kColors[code_ - 2][x % 2 + 2 * (y % 2)]];
                std::normal_distribution<double> noise(level, std::sqrt(level) / 4);
                frame.push_back(static_cast<std::uint8_t>(std::clamp(noise(random_), 0.0, 255.0)));
            }
        }
        return frame;
    }

    // Frames as the capture thread treats them: gains, statistics, step.
    void run(CWhiteBalanceCtrl& control, CAveragePixelValue& statistics, int frames) {
        for (int i = 0; i < frames; ++i) {
            const bool due = control.frameIsDue();
            Frame frame = shoot();
            ASSERT_TRUE(control.ApplyGain(kSize, kSize, code_, frame.data()).ok());
            if (!due) continue;
            statistics.Accumulate(kSize, kSize, code_, frame.data());
            ASSERT_TRUE(control.controlStep(statistics));
        }
    }

    static constexpr std::uint32_t kSize = 16;

  private:
    std::uint16_t code_;
    std::array<double, 4> light_;
    std::mt19937 random_{3};
};

// As whatever light the gains were for: under 3000 K red is strong and blue weak, under 9000 K it is the
// other way round.
TEST(WhiteBalanceLoop, AGreyCardEndsGreyFromTheGainsOfAnyLight) {
    const Gains starts[] = {
        {96, 128, 128, 310}, {290, 128, 128, 110}, {128, 128, 128, 128}, {0, 140, 120, 1023}};
    for (std::uint16_t code = 2; code <= 5; ++code) {
        for (const Gains& start : starts) {
            for (const std::uint8_t mode : {2, 3}) {
                PlainControl control(start, code);
                ASSERT_TRUE(control.setMode(mode).ok());
                CAveragePixelValue statistics;
                GreyCard card(code, 85, 140, 105);
                card.run(control, statistics, 20 * (start[0] == 0 ? 16 : 8));
                Frame frame = card.shoot();
                ASSERT_TRUE(control.ApplyGain(GreyCard::kSize, GreyCard::kSize, code, frame.data()).ok());
                statistics.Accumulate(GreyCard::kSize, GreyCard::kSize, code, frame.data());
                CAveragePixelValue::Means means{};
                statistics.GetWeightedAverage({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}, means);
                const double green = (means[1] + means[2]) / 2.0;
                EXPECT_NEAR(means[0], green, 0.02 * green) << "code " << code << " from R " << start[0];
                EXPECT_NEAR(means[3], green, 0.02 * green) << "code " << code << " from B " << start[3];
                std::uint8_t end = 0;
                ASSERT_TRUE(control.getMode(end).ok());
                EXPECT_EQ(end, mode == 3 ? 1 : 2) << "one-push has come to rest";
            }
        }
    }
}

}  // namespace
}  // namespace tavra::test
