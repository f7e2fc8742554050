// How far one decision moves shutter or gain.
#include "control/control_double.h"

namespace tavra::test {
namespace {

class LuminanceStep : public testing::Test {
  protected:
    // One decision from this exposure; the new one.
    static Shutter shutterStep(ControlDouble& control, const Shutter& from, std::uint8_t luminance,
                               std::uint8_t speed = 0) {
        control.setControlSpeed({speed, 0, 0, 1});
        EXPECT_TRUE(control.setMode(alc_mode::kShutter).ok());
        control.shutterInMemory() = from;
        control.frame(luminance);
        return control.shutterInMemory();
    }
    // One decision from this gain, on a scale of 0.1 dB unless the control says otherwise; the new one.
    static int gainStep(ControlDouble& control, std::uint16_t from, std::uint8_t luminance,
                        std::uint8_t speed = 0) {
        control.setControlSpeed({0, speed, 0, 1});
        EXPECT_TRUE(control.setMode(alc_mode::kGain).ok());
        control.gainInMemory() = from;
        control.frame(luminance);
        return control.gainInMemory();
    }
};

// Shutter.

TEST_F(LuminanceStep, TheShutterGoesStraightToTheIdeal) {
    ControlDouble control;
    EXPECT_EQ(shutterStep(control, {10, 0}, 100), (Shutter{12, 80})) << "1000 x 128 / 100";
    EXPECT_EQ(shutterStep(control, {10, 0}, 200), (Shutter{6, 40})) << "1000 x 128 / 200";
    EXPECT_EQ(shutterStep(control, {10, 0}, 101), (Shutter{12, 67})) << "truncated";
}

TEST_F(LuminanceStep, OneDecisionAtMostDoublesTheExposurePlusOneUnit) {
    ControlDouble control;
    EXPECT_EQ(shutterStep(control, {10, 0}, 20), (Shutter{20, 1}));
    EXPECT_EQ(shutterStep(control, {10, 0}, 0), (Shutter{20, 1})) << "black: 1000 x 128 is out of reach";
    EXPECT_EQ(shutterStep(control, {0, 1}, 0), (Shutter{0, 3})) << "1 + 1 + 1";
}

TEST_F(LuminanceStep, TheSpeedDividesTheStepOfTheShutter) {
    ControlDouble control;
    EXPECT_EQ(shutterStep(control, {10, 0}, 0, 3), (Shutter{12, 51})) << "1000 / 4 + 1";
    EXPECT_EQ(shutterStep(control, {10, 0}, 255, 3), (Shutter{7, 49})) << "1000 - 250 - 1";
    EXPECT_EQ(shutterStep(control, {0, 10}, 0, 255), (Shutter{0, 11})) << "a step of 0, and the unit";
    EXPECT_EQ(shutterStep(control, {10, 0}, 240, 3), (Shutter{7, 49})) << "533 is below the floor";
}

TEST_F(LuminanceStep, DarkeningEndsAtOneUnit) {
    ControlDouble control;
    EXPECT_EQ(shutterStep(control, {0, 3}, 255), (Shutter{0, 1})) << "3 x 128 / 255 = 1";
    EXPECT_EQ(shutterStep(control, {0, 1}, 255), (Shutter{0, 1})) << "ideal 0, floor 1";
    EXPECT_EQ(control.written.size(), 1u) << "the second changed nothing";
}

TEST_F(LuminanceStep, TheRangeIsTheEndOfTheShutter) {
    ControlDouble control;
    control.rangeInMemory() = {{8, 0}, {11, 11}};
    EXPECT_EQ(shutterStep(control, {10, 0}, 60), (Shutter{11, 11}));
    EXPECT_EQ(shutterStep(control, {10, 0}, 250), (Shutter{8, 0}));
    EXPECT_EQ(shutterStep(control, {11, 11}, 60), (Shutter{11, 11}));
}

TEST_F(LuminanceStep, FromTheFreeExposureItStartsAtWhatThatIs) {
    ControlDouble control;
    EXPECT_EQ(shutterStep(control, {0, 0}, 251), (Shutter{25, 60})) << "5020 x 128 / 251";
}

TEST_F(LuminanceStep, TheTopOfALongRangeFallsBackToTheFreeExposure) {
    ControlDouble control;
    control.rangeInMemory() = {{0, 1}, {200, 30}};
    EXPECT_EQ(shutterStep(control, {199, 0}, 100), (Shutter{0, 0}));
    EXPECT_EQ(shutterStep(control, {180, 0}, 117), (Shutter{196, 92})) << "18000 x 128 / 117, below the top";
}

TEST_F(LuminanceStep, WholeLinesMoveByLines) {
    ControlDouble lines(false);
    // d = 1: the bound is 1000 clocks and one line above.
    EXPECT_EQ(shutterStep(lines, {10, 0}, 0), (Shutter{21, 0}));
    // d = 3: a step of 333 loses its part of a line.
    EXPECT_EQ(shutterStep(lines, {10, 0}, 0, 2), (Shutter{14, 0})) << "1000 + 300 + 100";
    EXPECT_EQ(shutterStep(lines, {10, 0}, 255, 2), (Shutter{6, 0})) << "1000 - 300 - 100";
    EXPECT_EQ(shutterStep(lines, {2, 0}, 255), (Shutter{1, 0})) << "not below one line";
}

TEST_F(LuminanceStep, WithoutAClockPartTheIdealIsAMultipleOfTheDivisor) {
    ControlDouble lines(false);
    EXPECT_EQ(shutterStep(lines, {10, 0}, 101, 0), (Shutter{12, 67})) << "1267, a multiple of 1";
    EXPECT_EQ(shutterStep(lines, {10, 0}, 101, 2), (Shutter{12, 66})) << "1267 is nearer to 1266";
    EXPECT_EQ(shutterStep(lines, {10, 0}, 101, 1), (Shutter{12, 68})) << "half up";
    EXPECT_EQ(shutterStep(lines, {10, 0}, 103, 3), (Shutter{12, 44})) << "1242 is half way to 1244";
}

TEST_F(LuminanceStep, AVeryLongExposureOverflowsTheIdeal) {
    ControlDouble control;
    control.maxLong = {0x7FFFFF, 0};
    control.rangeInMemory() = {{0, 1}, {0x7FFFFF, 0}};
    // 40000000 x 128 = 5120000000, less 2^32 is 825032704; by 117 that is 7051561.
    const Shutter shutter = shutterStep(control, {400000, 0}, 117);
    EXPECT_EQ(shutter, (Shutter{70515, 61}));
}

// Gain. Setting value 200 is 20 dB, a factor of 10, 60 is 6 dB, 1.9953.

TEST_F(LuminanceStep, TheGainGoesStraightToTheIdeal) {
    ControlDouble control;
    control.gainRangeInMemory() = {0, 680};
    control.gainScale = GainScale(0);
    // 10.84 dB is a factor of 3.4834. 100 / 3.4834 = 28 truncated; 128 / 28 = 4.5714: 13.2011 dB, value
    // 117.9.
    EXPECT_EQ(gainStep(control, 100, 100), 117);
    // 180 / 3.4834 = 51; 128 / 51 = 2.5098: 7.9928 dB, value 78.43.
    EXPECT_EQ(gainStep(control, 100, 180), 78);
}

TEST_F(LuminanceStep, TheGainMovesByABoundedFactor) {
    ControlDouble control;
    control.gainRangeInMemory() = {0, 680};
    control.gainScale = GainScale(0);
    // Doubled: 6.9668, 16.8606 dB, value 145.6.
    EXPECT_EQ(gainStep(control, 100, 1), 145);
    // By a quarter: 4.3543, 12.7783 dB, 114.7; and 2.6126, 8.3413 dB, 81.07.
    EXPECT_EQ(gainStep(control, 100, 1, 3), 114);
    EXPECT_EQ(gainStep(control, 100, 255, 3), 81);
}

TEST_F(LuminanceStep, ABlackImageHasTheTargetAsIdealFactor) {
    ControlDouble control;
    control.gainRangeInMemory() = {0, 680};
    control.gainScale = GainScale(0);
    ASSERT_TRUE(control.setBrightnessTarget({4, 0, 0}).ok());
    // Ideal factor 4, 12.0412 dB, value 109.1; the bound would allow 145.
    EXPECT_EQ(gainStep(control, 100, 0), 109);
}

TEST_F(LuminanceStep, ATargetOf0DarkensAllTheWay) {
    ControlDouble control;
    control.gainRangeInMemory() = {0, 680};
    control.gainScale = GainScale(0);
    ASSERT_TRUE(control.setBrightnessTarget({0, 0, 0}).ok());
    EXPECT_EQ(gainStep(control, 100, 90), 0) << "0.0001 is -80 dB";
    // Nothing is left at a factor of 1: 3 / 3.4834 = 0. The ideal is then 1: 0 dB, value 17.9.
    EXPECT_EQ(gainStep(control, 100, 3), 17);
}

TEST_F(LuminanceStep, AtLeastOneValueIsMade) {
    ControlDouble control;
    control.gainRangeInMemory() = {0, 680};
    // 200 is 20 dB there, but 20 dB are 169 back: the way back is another than the way there.
    // 117 / 10 = 11; 128 / 11 = 11.6364: 21.3164 dB, (21.3164 + 2.36) / 0.132 = 179, not above 200.
    EXPECT_EQ(gainStep(control, 200, 117), 201);
    // 10 dB is 3.1623; 139 / 3.1623 = 43; 128 / 43 = 2.9767: 9.4748 dB, value 89.7: below 100.
    EXPECT_EQ(gainStep(control, 100, 139), 89);
    // 1 dB is 1.1220; 139 / 1.1220 = 123; 128 / 123 = 1.0407: 0.3461 dB, value 20.5, not below 10.
    EXPECT_EQ(gainStep(control, 10, 139), 9);
    EXPECT_EQ(gainStep(control, 0, 255), 0);
}

// Steps that come out otherwise where more than single precision is carried from one to the next.

TEST_F(LuminanceStep, ADoubledFactorIsTwiceInSinglePrecision) {
    // A factor of 1 and a black image: min(1 + 1, 128) = 2. In single precision log10(2) is 0.30103001 and 20
    // times it 6.0206003 dB, which back is a factor of 2.00000009. Carried in double it is 6.0205998 dB as
    // the scale takes it, and a factor of 1.99999998.
    ControlDouble fractions(true, 2);
    fractions.gainRangeInMemory() = {0, 680};
    EXPECT_EQ(gainStep(fractions, 0, 0), 8)
        << "trunc(2.00000009 x 64) / 8 - 8, not trunc(127.999999) / 8 - 8";
    ControlDouble octaves(true, 3);
    octaves.gainRangeInMemory() = {0, 680};
    EXPECT_EQ(gainStep(octaves, 0, 0), 64) << "one octave, and not none, which would make the one value";
}

TEST_F(LuminanceStep, TheBrightnessAtAFactorOf1IsOfSinglePrecision) {
    // 0.07038 x 440 + 2 is 32.9672012 dB in single precision, by 20 that is 1.6483600, and the factor 44.5
    // (44.5000003, between numbers that are 0.0000038 apart): 89 / 44.5 = 2. The ideal is 128 / 2 = 64, below
    // the bound of 89: 36.1236 dB, (36.1236 - 2) / 0.07038 - 128 = 356.85. In double the factor is 44.500005,
    // and 89 by that 1.9999998, cut to 1: the ideal is 128, the bound of 89 holds, 38.9878 dB, value 397.5.
    ControlDouble control(true, 1);
    control.gainRangeInMemory() = {0, 680};
    EXPECT_EQ(gainStep(control, 312, 89), 356);
}

TEST_F(LuminanceStep, TheRangeIsTheEndOfTheGain) {
    ControlDouble control;
    control.gainRangeInMemory() = {90, 110};
    control.gainScale = GainScale(0);
    EXPECT_EQ(gainStep(control, 100, 60), 110);
    EXPECT_EQ(gainStep(control, 110, 60), 110);
    EXPECT_EQ(gainStep(control, 100, 250), 90);
    EXPECT_EQ(gainStep(control, 90, 250), 90);
    EXPECT_EQ(control.written.size(), 2u) << "at an end nothing is written";
}

// Both.

class LuminanceActuator : public testing::Test {
  protected:
    LuminanceActuator() {
        control.setControlSpeed({0, 0, 0, 1});
        control.gainScale = GainScale(0);
        EXPECT_TRUE(control.setMode(alc_mode::kBoth).ok());
    }
    ControlDouble control;
};

TEST_F(LuminanceActuator, BrighteningBeginsWithTheShutter) {
    control.shutterInMemory() = {10, 0};
    control.frame(100);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{12, 80}));
    EXPECT_EQ(control.gainInMemory(), 20);
}

TEST_F(LuminanceActuator, BrighteningEndsWithTheGain) {
    control.gainInMemory() = 100;
    control.frame(100);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{0, 0})) << "at its top";
    EXPECT_EQ(control.gainInMemory(), 117);
}

TEST_F(LuminanceActuator, DarkeningBeginsWithTheGain) {
    control.gainInMemory() = 100;
    control.frame(180);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{0, 0}));
    EXPECT_EQ(control.gainInMemory(), 78);
}

TEST_F(LuminanceActuator, DarkeningEndsWithTheShutter) {
    control.frame(251);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{25, 60}));
    EXPECT_EQ(control.gainInMemory(), 20);
}

TEST_F(LuminanceActuator, GainAtItsBottomIsNeverMovedDown) {
    control.shutterInMemory() = {0, 1};
    control.frame(255);
    EXPECT_TRUE(control.written.empty()) << "both are at their ends";
}

TEST_F(LuminanceActuator, OnceTheShutterLeavesItsTopTheGainGoesBackToItsBottom) {
    control.gainInMemory() = 100;
    control.rangeInMemory().max = {60, 0};  // a new top, above the present exposure
    control.frame(10);
    EXPECT_EQ(control.gainInMemory(), 20);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{0, 0})) << "the decision was the clamp's";
    control.frame(120);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{53, 54})) << "5020 x 128 / 120, after a move";
}

}  // namespace
}  // namespace tavra::test
