// Which frames the loop takes, when it decides, and what it keeps to.
#include "control/control_double.h"

namespace tavra::test {
namespace {

using Block = ControlDouble::Block;

// Off the target by more than any band of these tests.
constexpr std::uint8_t kBlack = 0;
constexpr std::uint8_t kWhite = 255;

class LuminanceLoop : public testing::Test {
  protected:
    LuminanceLoop() {
        control.shutterInMemory() = {10, 0};
        EXPECT_TRUE(control.setMode(alc_mode::kShutter).ok());
    }
    // Decides on each measured frame.
    void everyFrame() { control.setControlSpeed({0, 0, 0, 1}); }
    std::size_t writes() const { return control.written.size(); }

    ControlDouble control;
};

TEST_F(LuminanceLoop, DefaultsOfANewObject) {
    ControlDouble fresh;
    EXPECT_EQ(fresh.presentMode(), 0);
    EXPECT_EQ(fresh.gainInMemory(), 20);
    EXPECT_EQ(fresh.digitalGain(), 64);
    EXPECT_EQ(fresh.maxGain(), 680);
    EXPECT_EQ(fresh.shutterInMemory(), Shutter());
    EXPECT_EQ(fresh.shutterRange(), (ShutterRange{{0, 1}, {0, 0}}));
    EXPECT_EQ(fresh.gainRange().min, 20);
    EXPECT_EQ(fresh.gainRange().max, 680);
    EXPECT_EQ(fresh.brightnessTarget().target, 128);
    EXPECT_EQ(fresh.brightnessTarget().tolerance, 5);
    EXPECT_EQ(fresh.brightnessTarget().threshold, 5);
    EXPECT_EQ(fresh.controlSpeed().shutter, 0);
    EXPECT_EQ(fresh.controlSpeed().gain, 0);
    EXPECT_EQ(fresh.controlSpeed().skipFrames, 3);
    EXPECT_EQ(fresh.controlSpeed().averageFrames, 4);
    for (const std::uint8_t weight : fresh.weights()) EXPECT_EQ(weight, 1);
    ControlDouble lines(false);
    EXPECT_EQ(lines.shutterRange().min, (Shutter{1, 0})) << "no clock part";
    fresh.maxClock = 0;
    fresh.restoreDefaults();
    EXPECT_EQ(fresh.shutterRange().min, (Shutter{1, 0})) << "lines of one clock";
}

TEST_F(LuminanceLoop, NothingIsDueWhileItIsOff) {
    ASSERT_TRUE(control.setMode(0).ok());
    EXPECT_FALSE(control.due());
    EXPECT_TRUE(control.step(control.statistics).ok()) << "and a step does nothing";
    EXPECT_EQ(writes(), 0u);
}

TEST_F(LuminanceLoop, FourFramesAreAveragedAndThreeLeftOut) {
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(writes(), static_cast<std::size_t>(round));
            EXPECT_TRUE(control.frame(kBlack)) << i;
        }
        EXPECT_EQ(writes(), static_cast<std::size_t>(round) + 1);
        for (int i = 0; i < 3; ++i) EXPECT_FALSE(control.frame(kBlack)) << i;
    }
}

TEST_F(LuminanceLoop, ADecisionThatChangesNothingLeavesFramesOutToo) {
    EXPECT_EQ(control.decide(128), 0u);
    EXPECT_EQ(writes(), 0u);
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(control.due());
    EXPECT_TRUE(control.due());
}

TEST_F(LuminanceLoop, FramesLeftOutAreCountedDownWhileItIsOff) {
    control.decide(kBlack);
    ASSERT_TRUE(control.setMode(0).ok());
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(control.due());
    ASSERT_TRUE(control.setMode(alc_mode::kShutter).ok());
    EXPECT_TRUE(control.due());
}

TEST_F(LuminanceLoop, AskingAgainChangesNothingOnceAFrameIsDue) {
    for (int i = 0; i < 5; ++i) EXPECT_TRUE(control.due());
}

TEST_F(LuminanceLoop, AStepThatWasNotDueCountsDownToo) {
    control.decide(kBlack);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(control.step(control.statistics).ok());
    EXPECT_EQ(writes(), 1u);
    EXPECT_TRUE(control.due());
}

TEST_F(LuminanceLoop, TheAverageIsTruncated) {
    control.setControlSpeed({0, 0, 0, 4});
    ASSERT_TRUE(control.setBrightnessTarget({128, 1, 0}).ok());
    control.frame(kBlack);  // the clamp has nothing to do
    for (const std::uint8_t luminance : {255, 255, 1}) control.frame(luminance);
    EXPECT_EQ(writes(), 0u) << "511 / 4 = 127, inside";
    for (const std::uint8_t luminance : {0, 255, 252, 0}) control.frame(luminance);
    EXPECT_EQ(writes(), 1u) << "507 / 4 = 126, outside";
}

TEST_F(LuminanceLoop, AverageOf0FramesActsAs1) {
    control.setControlSpeed({0, 0, 2, 0});
    EXPECT_TRUE(control.frame(kBlack));
    EXPECT_EQ(writes(), 1u);
    EXPECT_FALSE(control.frame(kBlack));
    EXPECT_FALSE(control.frame(kBlack));
    EXPECT_TRUE(control.frame(kBlack));
    EXPECT_EQ(writes(), 2u);
}

TEST_F(LuminanceLoop, AsManyFramesAsAByteCountsAreAveraged) {
    control.setControlSpeed({0, 0, 0, 255});
    for (int i = 0; i < 254; ++i) control.frame(kWhite);
    EXPECT_EQ(writes(), 0u);
    control.frame(kWhite);
    EXPECT_EQ(writes(), 1u);
}

TEST_F(LuminanceLoop, WeightsChooseTheCells) {
    everyFrame();
    CLuminanceCtrl::Weights weights{};
    weights[5] = 1;
    control.setWeights(weights);
    std::vector<std::uint8_t> pixels(16, kWhite);
    pixels[5] = 128;
    control.statistics.Accumulate(4, 4, 1, pixels.data());
    EXPECT_TRUE(control.step(control.statistics).ok());
    EXPECT_EQ(writes(), 0u) << "the cell is on the target";
    control.setWeights({});
    EXPECT_TRUE(control.step(control.statistics).ok());
    EXPECT_EQ(writes(), 1u) << "without weights the frame is black";
    EXPECT_EQ(control.total(), 2001u);
}

TEST_F(LuminanceLoop, ALoopAtRestStartsOutsideTheWiderBandAndMovesIntoTheNarrowOne) {
    everyFrame();
    for (const std::uint8_t inside : {118, 128, 138}) control.frame(inside);
    EXPECT_EQ(writes(), 0u) << "10 away is inside";
    control.frame(117);
    EXPECT_EQ(writes(), 1u);
    control.frame(122);
    EXPECT_EQ(writes(), 2u) << "6 away is outside for a loop that moved";
    control.frame(123);
    EXPECT_EQ(writes(), 2u) << "5 away is inside";
    control.frame(138);
    EXPECT_EQ(writes(), 2u) << "at rest again";
    control.frame(139);
    EXPECT_EQ(writes(), 3u);
}

TEST_F(LuminanceLoop, TheWiderBandDoesNotWrap) {
    everyFrame();
    ASSERT_TRUE(control.setBrightnessTarget({255, 200, 100}).ok());
    control.frame(0);
    EXPECT_EQ(writes(), 0u) << "255 away, and the band is 300";
}

TEST_F(LuminanceLoop, OnceModesEndAtTheFirstDecisionThatChangesNothing) {
    for (const std::uint8_t mode : {alc_mode::kBothOnce, alc_mode::kShutterOnce, alc_mode::kGainOnce}) {
        ControlDouble once;
        once.shutterInMemory() = {10, 0};
        if (mode == alc_mode::kGainOnce) once.gainInMemory() = 100;
        ASSERT_TRUE(once.setMode(mode).ok());
        once.decide(100);
        EXPECT_EQ(once.presentMode(), mode) << "it moved";
        EXPECT_EQ(once.written.size(), 1u);
        once.decide(126);
        EXPECT_EQ(once.presentMode(), 0);
        EXPECT_EQ(once.written.size(), 1u);
        for (int i = 0; i < 20; ++i) EXPECT_FALSE(once.frame(0));
    }
}

TEST_F(LuminanceLoop, OnceModesEndOutsideTheBandIfTheActuatorIsAtItsEnd) {
    control.shutterInMemory() = {0, 0};  // the top
    ASSERT_TRUE(control.setMode(alc_mode::kShutterOnce).ok());
    control.decide(kBlack);
    EXPECT_EQ(control.presentMode(), 0);
    EXPECT_EQ(writes(), 0u);
}

// Both actuators: shutter and gain at their tops under black, at their bottoms under white.
TEST_F(LuminanceLoop, TheOnceModeOfBothEndsWhereNeitherCanMove) {
    control.shutterInMemory() = {0, 0};
    control.gainInMemory() = 680;
    ASSERT_TRUE(control.setMode(alc_mode::kBothOnce).ok());
    control.decide(kBlack);
    EXPECT_EQ(control.presentMode(), 0);
    control.shutterInMemory() = {0, 1};
    control.gainInMemory() = 20;  // the bottom of its range
    ASSERT_TRUE(control.setMode(alc_mode::kBothOnce).ok());
    control.decide(255);
    EXPECT_EQ(control.presentMode(), 0);
    EXPECT_EQ(writes(), 0u);
}

TEST_F(LuminanceLoop, AClampKeepsAOnceModeAlive) {
    control.rangeInMemory() = {{20, 0}, {0, 0}};
    ASSERT_TRUE(control.setMode(alc_mode::kShutterOnce).ok());
    control.decide(128);
    EXPECT_EQ(control.presentMode(), alc_mode::kShutterOnce) << "something changed";
    control.decide(128);
    EXPECT_EQ(control.presentMode(), 0);
}

TEST_F(LuminanceLoop, OtherModesStayAtTheirEnds) {
    control.shutterInMemory() = {0, 0};
    for (int i = 0; i < 3; ++i) control.decide(kBlack);
    EXPECT_EQ(control.presentMode(), alc_mode::kShutter);
    EXPECT_EQ(writes(), 0u);
}

TEST_F(LuminanceLoop, AFailedWriteIsTheResultAndTheValueStays) {
    control.writeResult = Status(0xE0000005);
    EXPECT_EQ(control.decide(kBlack), 0xE0000005u);
    EXPECT_EQ(control.total(), 2001u);
    EXPECT_FALSE(control.due()) << "frames are left out all the same";
    control.writeResult = Status();
    EXPECT_EQ(control.decide(122), 0u);
    EXPECT_EQ(writes(), 2u) << "it counts as moved: the narrow band holds";
}

TEST_F(LuminanceLoop, AFailedWriteOfTheClampIsTheResult) {
    control.rangeInMemory() = {{20, 0}, {0, 0}};
    control.writeResult = Status(0xE0000005);
    EXPECT_EQ(control.decide(128), 0xE0000005u);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{20, 0}));
}

TEST_F(LuminanceLoop, OneDecisionWritesOnceOrNotAtAll) {
    ASSERT_TRUE(control.setMode(alc_mode::kBoth).ok());
    control.gainInMemory() = 600;
    control.rangeInMemory() = {{20, 0}, {0, 0}};
    control.decide(kBlack);
    EXPECT_EQ(control.written, (std::vector<Block>{{{20, 0}, 20}})) << "both clamped, one block";
}

TEST_F(LuminanceLoop, AResetBeginsAnew) {
    control.decide(kBlack);
    control.restoreDefaults();
    EXPECT_EQ(control.presentMode(), 0);
    EXPECT_EQ(control.shutterInMemory(), Shutter());
    ASSERT_TRUE(control.setMode(alc_mode::kShutter).ok());
    EXPECT_TRUE(control.due()) << "a reset leaves no frame out";
    control.shutterInMemory() = {10, 0};
    control.decide(119);
    EXPECT_EQ(writes(), 1u) << "and is at rest";
}

// With the count kept, the fourth frame in all would decide; with the sum kept, those before would darken it.
TEST_F(LuminanceLoop, AResetForgetsTheFramesInHand) {
    for (int inHand = 1; inHand <= 3; ++inHand) {
        for (const std::uint8_t luminance : {kBlack, kWhite}) {
            SCOPED_TRACE(testing::Message() << inHand << " frames, then " << +luminance);
            ControlDouble loop;
            ASSERT_TRUE(loop.setMode(alc_mode::kShutter).ok());
            loop.shutterInMemory() = {10, 0};
            for (int i = 0; i < inHand; ++i) EXPECT_TRUE(loop.frame(255 - luminance));
            loop.restoreDefaults();
            ASSERT_TRUE(loop.setMode(alc_mode::kShutter).ok());
            loop.shutterInMemory() = {10, 0};
            for (int i = 0; i < 3; ++i) EXPECT_TRUE(loop.frame(luminance));
            EXPECT_TRUE(loop.written.empty());
            EXPECT_TRUE(loop.frame(luminance));
            ASSERT_EQ(loop.written.size(), 1u);
            // From 1000 clocks: the largest step up, and 1000 x 128 / 255.
            EXPECT_EQ(loop.total(), luminance == kBlack ? 2001u : 501u);
        }
    }
}

// The clamp.

class RangeClamp : public testing::Test {
  protected:
    // A frame on the target: only the clamp can change anything.
    void clampIn(std::uint8_t mode, ControlDouble& control) {
        control.setControlSpeed({0, 0, 0, 1});
        ASSERT_TRUE(control.setMode(mode).ok());
        control.frame(128);
    }
};

TEST_F(RangeClamp, GainIsForcedIntoItsRangeWhereItIsControlled) {
    for (const std::uint8_t mode : {1, 3, 4, 6, 2, 5}) {
        const bool controlled = mode != 2 && mode != 5;
        ControlDouble below;  // the shutter is free: at its top
        below.gainInMemory() = 5;
        clampIn(mode, below);
        EXPECT_EQ(below.gainInMemory(), controlled ? 20 : 5) << int{mode};
        ControlDouble above;
        above.gainRangeInMemory() = {20, 300};
        above.gainInMemory() = 301;
        clampIn(mode, above);
        EXPECT_EQ(above.gainInMemory(), controlled ? 300 : 301) << int{mode};
        EXPECT_EQ(above.written.size(), controlled ? 1u : 0u);
    }
}

TEST_F(RangeClamp, ARangeUpsideDownSwingsBetweenItsEnds) {
    ControlDouble control;
    control.gainRangeInMemory() = {10, 5};
    control.gainInMemory() = 7;
    for (const int expected : {10, 5, 10, 5}) {
        clampIn(alc_mode::kGain, control);
        EXPECT_EQ(control.gainInMemory(), expected);
    }
}

TEST_F(RangeClamp, TheShutterIsForcedIntoItsRangeWhereItIsControlled) {
    for (const std::uint8_t mode : {1, 2, 4, 5, 3, 6}) {
        const bool controlled = mode != 3 && mode != 6;
        ControlDouble below;
        below.rangeInMemory() = {{3, 7}, {40, 9}};
        below.shutterInMemory() = {3, 6};
        clampIn(mode, below);
        EXPECT_EQ(below.shutterInMemory(), (controlled ? Shutter{3, 7} : Shutter{3, 6})) << int{mode};
        ControlDouble above;
        above.rangeInMemory() = {{3, 7}, {40, 9}};
        above.shutterInMemory() = {40, 10};
        clampIn(mode, above);
        EXPECT_EQ(above.shutterInMemory(), (controlled ? Shutter{40, 9} : Shutter{40, 10})) << int{mode};
    }
}

TEST_F(RangeClamp, TheFreeExposureIsClampedAsWhatItIs) {
    ControlDouble control;
    control.rangeInMemory() = {{0, 1}, {40, 9}};
    clampIn(alc_mode::kShutter, control);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{40, 9}));
    ControlDouble longer;
    longer.shutterInMemory() = {60, 0};
    clampIn(alc_mode::kShutter, longer);
    EXPECT_EQ(longer.shutterInMemory(), (Shutter{50, 20})) << "the free top as lines and clocks";
}

TEST_F(RangeClamp, GainIsOnlyForAShutterAtItsTop) {
    for (const std::uint8_t mode : {alc_mode::kBoth, alc_mode::kBothOnce}) {
        ControlDouble control;
        control.gainInMemory() = 300;
        control.shutterInMemory() = {50, 19};
        clampIn(mode, control);
        EXPECT_EQ(control.gainInMemory(), 20);
        EXPECT_EQ(control.shutterInMemory(), (Shutter{50, 19}));
        ControlDouble atTop;
        atTop.gainInMemory() = 300;
        clampIn(mode, atTop);
        EXPECT_EQ(atTop.gainInMemory(), 300);
        EXPECT_TRUE(atTop.written.empty());
    }
    ControlDouble gainAlone;
    gainAlone.gainInMemory() = 300;
    gainAlone.shutterInMemory() = {3, 0};
    clampIn(alc_mode::kGain, gainAlone);
    EXPECT_EQ(gainAlone.gainInMemory(), 300);
}

TEST_F(RangeClamp, AShutterClampedDownToItsTopKeepsTheGain) {
    ControlDouble control;
    control.gainInMemory() = 300;
    control.rangeInMemory() = {{0, 1}, {40, 9}};
    clampIn(alc_mode::kBoth, control);
    EXPECT_EQ(control.shutterInMemory(), (Shutter{40, 9}));
    EXPECT_EQ(control.gainInMemory(), 300);
}

TEST_F(RangeClamp, AClockPartWithoutEffectTakesTheLinesToTheLongestOfAFrame) {
    ControlDouble lines(false);
    lines.shutterInMemory() = {10, 5};
    clampIn(alc_mode::kShutter, lines);
    EXPECT_EQ(lines.shutterInMemory(), (Shutter{50, 0})) << "5020 clocks, in whole lines";
    ControlDouble noLine(false);
    noLine.shutterInMemory() = {0, 5};
    clampIn(alc_mode::kShutter, noLine);
    EXPECT_EQ(noLine.shutterInMemory(), (Shutter{0, 5})) << "is one line already";
    EXPECT_TRUE(noLine.written.empty());
    ControlDouble belowBottom(false);
    belowBottom.rangeInMemory() = {{20, 0}, {0, 0}};
    belowBottom.shutterInMemory() = {10, 5};
    clampIn(alc_mode::kShutter, belowBottom);
    EXPECT_EQ(belowBottom.shutterInMemory(), (Shutter{20, 0})) << "the range counts last";
}

}  // namespace
}  // namespace tavra::test
