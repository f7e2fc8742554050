#include "exposure.h"

#include <gtest/gtest.h>

#include "model_toml.h"

namespace tavra::usbd {
namespace {

// 100 lines and 20 without image, 1000 clocks each, at 12 MHz: a frame of 10 ms.
Model model() {
    Model model;
    model.identity.productType = 300;
    model.identity.clockValue = 12000000;
    model.geometry.sensorHeight = 100;
    model.timing.clocksPerLine = 1000;
    model.timing.blankLines = 20;
    return model;
}

ExposureRegisters at12MHz() {
    ExposureRegisters registers;
    registers.clockHz = 12000000;
    return registers;
}

TEST(Exposure, TheFrameTimeFollowsFromLinesAndClock) {
    const Model m = model();
    const ExposureTiming timing(m, at12MHz(), 100, 1);
    EXPECT_DOUBLE_EQ(timing.frameSeconds(), 0.010);
    EXPECT_EQ(timing.clocksPerFrame(), 120000u);
    EXPECT_EQ(timing.scan().linesPerFrame, 120);
    EXPECT_EQ(timing.scan().clocksPerLine, 1000);
}

TEST(Exposure, NoLinesAndNoClocksIsTheLongestOfAFrame) {
    const Model m = model();
    const ExposureTiming timing(m, at12MHz(), 100, 1);
    EXPECT_DOUBLE_EQ(timing.exposureSeconds(), 0.010);
    EXPECT_EQ(timing.scan().lastExposureClock, 999u);
    EXPECT_EQ(timing.scan().shortLines, 120u);
    EXPECT_EQ(timing.scan().shortClock, 0u);
}

TEST(Exposure, LinesAndClocksAddUp) {
    const Model m = model();
    ExposureRegisters registers = at12MHz();
    registers.lines = 6;
    registers.clocks = 600;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).exposureSeconds(), 6600 / 12e6);
}

TEST(Exposure, ALongExposureStretchesTheFrame) {
    const Model m = model();
    ExposureRegisters registers = at12MHz();
    registers.lines = 240;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).exposureSeconds(), 0.010)
        << "not in this scan mode";
    const ExposureTiming timing(m, registers, 100, 4);
    EXPECT_DOUBLE_EQ(timing.exposureSeconds(), 0.020);
    EXPECT_DOUBLE_EQ(timing.frameSeconds(), 0.020);
    EXPECT_EQ(timing.scan().longLines, 4090u);
}

TEST(Exposure, UnitsOfACameraThatTellsItsFields) {
    Model m = model();
    m.capability[3] = 1;
    ExposureRegisters registers = at12MHz();
    registers.lines = 3;
    m.timing.exposureUnit = ExposureUnit::Line;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).exposureSeconds(), 3 * 1000 / 12e6);
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().shortLines, 120u);
    m.timing.exposureUnit = ExposureUnit::Microsecond;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).exposureSeconds(), 3e-6);
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().shortLines, 10000u);
    m.timing.exposureUnit = ExposureUnit::BaseClock;
    m.timing.baseClockMHz = 50;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).exposureSeconds(), 6e-8);
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().lastExposureClock, 0u);
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().shortLines, 500000u);
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().longLines, 200000000u) << "four seconds";
}

TEST(Exposure, VerticalBlankAddsLines) {
    const Model m = model();
    ExposureRegisters registers = at12MHz();
    registers.verticalBlank = 120;
    EXPECT_DOUBLE_EQ(ExposureTiming(m, registers, 100, 1).frameSeconds(), 0.020);
    registers.verticalBlank = 1u << 20;
    EXPECT_EQ(ExposureTiming(m, registers, 100, 1).scan().linesPerFrame, 0xFFFF)
        << "as many as the record can tell";
}

TEST(Gain, StepsAreDecibelsFromTheDefault) {
    Model m = model();
    m.sensor.gainStepDb = 0.1;
    m.geometry.defaultGain = 10;
    EXPECT_DOUBLE_EQ(gainFactor(m, 10), 1.0);
    EXPECT_NEAR(gainFactor(m, 210), 10.0, 1e-12);
    EXPECT_NEAR(gainFactor(m, 0), 0.8912509381337456, 1e-12) << "one decibel less";
}

TEST(Gain, DigitalGainByScale) {
    Model m = model();
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 64), 1.0);
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 96), 1.5);
    m.sensor.digitalGain = DigitalGainScale::Plus64;
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 0), 1.0);
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 64), 2.0);
    m.sensor.digitalGain = DigitalGainScale::Decibel;
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 200), 10.0);
}

TEST(Gain, ACameraMayHaveNoDigitalGain) {
    Model m = model();
    m.capability[18] = 0x0100;
    EXPECT_DOUBLE_EQ(digitalGainFactor(m, 128), 1.0);
}

TEST(Gain, TheDigitalScaleFollowsTheType) {
    const auto scale = [](const std::string& more) {
        Model m;
        std::string complaint;
        EXPECT_TRUE(parseModel("[identity]\nmaximum_width = 64\nmaximum_height = 48\nproduct_type = " + more,
                               {}, m, complaint))
            << complaint;
        return m.sensor.digitalGain;
    };
    EXPECT_EQ(scale("300"), DigitalGainScale::Times64);
    EXPECT_EQ(scale("300\n[capability]\nword16 = 0x0080"), DigitalGainScale::Plus64);
    EXPECT_EQ(scale("300\n[capability]\nword7 = 0x1C00\nword16 = 0x0080"), DigitalGainScale::Decibel);
    EXPECT_EQ(scale("300\n[capability]\nword7 = 0x1C00"), DigitalGainScale::Times64);
    EXPECT_EQ(scale("16386"), DigitalGainScale::Decibel);
    EXPECT_EQ(scale("16386\n[sensor]\ndigital_gain = \"plus64\""), DigitalGainScale::Plus64);
}

TEST(Exposure, ATriggerMayTimeIt) {
    const Model m = model();
    ExposureRegisters registers = at12MHz();
    registers.lines = 6;
    registers.triggerSeconds = 0.025;
    const ExposureTiming timing(m, registers, 100, 1);
    EXPECT_DOUBLE_EQ(timing.exposureSeconds(), 0.025);
    EXPECT_DOUBLE_EQ(timing.frameSeconds(), 0.025);
}

TEST(FullScale, IsATenthAboveTheDefaultExposure) {
    Model m = model();
    EXPECT_DOUBLE_EQ(fullScaleSeconds(m), 0.011);
    m.sensor.fullScaleMs = 5;
    EXPECT_DOUBLE_EQ(fullScaleSeconds(m), 0.005);
}

}  // namespace
}  // namespace tavra::usbd
