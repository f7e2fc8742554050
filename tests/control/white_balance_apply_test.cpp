// The gains on frames, and cameras that have the white balance to themselves.
#include <gmock/gmock.h>

#include <utility>

#include "control/white_balance_double.h"

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

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

}  // namespace
}  // namespace tavra::test
