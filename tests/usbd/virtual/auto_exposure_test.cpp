// The exposure control and the white balance in the camera.
#include "auto_exposure.h"

#include <gtest/gtest.h>

#include <cmath>

#include "light.h"
#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

using test::Camera;
using test::meanOf;
using test::rawOf;
using test::readTransfer;
using test::useCameras;

// Counted in lines of 1000 clocks; 100 fit a frame, 4000 is the longest of all; gain from 0 to 200 tenths of
// a decibel.
Model lineModel() {
    Model model;
    model.identity.enableShutterSpeed = 0;
    model.geometry.maximumGain = 240;
    model.sensor.gainStepDb = 0.1;
    return model;
}

ScanTiming lines() {
    ScanTiming scan;
    scan.lastExposureClock = 999;
    scan.shortLines = 100;
    scan.longLines = 4000;
    return scan;
}

AutoExposure both() {
    AutoExposure control;
    control.shutter = control.gain = true;
    control.target = 128;
    control.highestGain = 200;
    return control;
}

ExposureRegisters at(std::uint32_t exposureLines, std::uint16_t gain) {
    ExposureRegisters registers;
    registers.lines = exposureLines;
    registers.gain = gain;
    return registers;
}

constexpr double kLevel = 1.0 / 255;

TEST(AutoExposure, AFrameNearTheTargetMovesNothing) {
    ExposureRegisters registers = at(50, 10);
    for (const double mean : {125.0, 128.0, 131.0}) {
        EXPECT_FALSE(adjustExposure(lineModel(), both(), lines(), mean * kLevel, registers)) << mean;
    }
    AutoExposure off = both();
    off.shutter = off.gain = false;
    EXPECT_FALSE(adjustExposure(lineModel(), off, lines(), 0.1, registers));
    EXPECT_EQ(registers.lines, 50u);
    EXPECT_EQ(registers.gain, 10);
}

TEST(AutoExposure, MoreLightComesFromTheShutterFirst) {
    ExposureRegisters registers = at(40, 0);
    EXPECT_TRUE(adjustExposure(lineModel(), both(), lines(), 80 * kLevel, registers));
    EXPECT_EQ(registers.lines, 64u) << "40 * 128 / 80";
    EXPECT_EQ(registers.gain, 0);
    EXPECT_TRUE(adjustExposure(lineModel(), both(), lines(), 64 * kLevel, registers));
    EXPECT_EQ(registers.lines, 100u) << "no more than a frame";
    EXPECT_EQ(registers.gain, 21) << "128 / 100 is 2.14 dB";
}

TEST(AutoExposure, LessLightComesFromGainFirst) {
    ExposureRegisters registers = at(100, 100);
    EXPECT_TRUE(adjustExposure(lineModel(), both(), lines(), 160 * kLevel, registers));
    EXPECT_EQ(registers.gain, 81) << "0.8 is 1.94 dB less";
    EXPECT_NEAR(registers.lines, 100, 1);
    registers = at(100, 20);
    EXPECT_TRUE(adjustExposure(lineModel(), both(), lines(), 1.0, registers));
    EXPECT_EQ(registers.gain, 0);
    EXPECT_EQ(registers.lines, 63u) << "128 / 255 and the two decibels that were gain: 0.502 * 1.259";
}

TEST(AutoExposure, AStepIsAFactorOfTwoAtMost) {
    ExposureRegisters registers = at(10, 0);
    adjustExposure(lineModel(), both(), lines(), 0, registers);
    EXPECT_EQ(registers.lines, 20u);
    AutoExposure dark = both();
    dark.target = 10;
    adjustExposure(lineModel(), dark, lines(), 1, registers);
    EXPECT_EQ(registers.lines, 10u);
}

TEST(AutoExposure, TheRangeIsKept) {
    AutoExposure control = both();
    control.shortestLines = 30;
    control.longestLines = 1000;
    control.lowestGain = 5;
    control.highestGain = 50;
    ExposureRegisters registers = at(900, 5);
    adjustExposure(lineModel(), control, lines(), 0, registers);
    EXPECT_EQ(registers.lines, 1000u) << "the range, not the frame";
    EXPECT_EQ(registers.gain, 50);
    registers = at(40, 5);
    adjustExposure(lineModel(), control, lines(), 1, registers);
    EXPECT_EQ(registers.lines, 30u);
    EXPECT_EQ(registers.gain, 5);
    EXPECT_FALSE(adjustExposure(lineModel(), control, lines(), 1, registers)) << "at the end of the range";
}

TEST(AutoExposure, EachActuatorAlone) {
    AutoExposure control = both();
    control.gain = false;
    ExposureRegisters registers = at(100, 33);
    EXPECT_FALSE(adjustExposure(lineModel(), control, lines(), 0.2, registers));
    EXPECT_EQ(registers.gain, 33);
    control.gain = true;
    control.shutter = false;
    EXPECT_TRUE(adjustExposure(lineModel(), control, lines(), 64 * kLevel, registers));
    EXPECT_EQ(registers.lines, 100u);
    EXPECT_EQ(registers.gain, 93) << "6.02 dB";
}

TEST(AutoExposure, NoLinesIsTheLongestOfAFrame) {
    ExposureRegisters registers = at(0, 0);
    AutoExposure control = both();
    control.gain = false;
    EXPECT_TRUE(adjustExposure(lineModel(), control, lines(), 1, registers));
    EXPECT_EQ(registers.lines, 50u) << "100 * 128 / 255";
}

TEST(AutoExposure, CamerasWithAClockPartAreMovedByClocks) {
    Model model = lineModel();
    model.identity.enableShutterSpeed = 1;
    ExposureRegisters registers = at(1, 0);
    registers.clocks = 500;
    EXPECT_TRUE(adjustExposure(model, both(), lines(), 192 * kLevel, registers));
    EXPECT_EQ(registers.lines, 1u) << "1500 * 128 / 192";
    EXPECT_EQ(registers.clocks, 0u);
    EXPECT_TRUE(adjustExposure(model, both(), lines(), 160 * kLevel, registers));
    EXPECT_EQ(registers.lines, 0u);
    EXPECT_EQ(registers.clocks, 800u);
}

// From any light to any target, on a sensor that is linear until it saturates.
TEST(AutoExposure, TheLoopSettles) {
    const Model model = lineModel();
    for (const double light : {0.02, 0.1, 0.5, 1.0, 3.0, 20.0}) {
        for (const int target : {40, 128, 200}) {
            AutoExposure control = both();
            control.target = static_cast<std::uint8_t>(target);
            control.longestLines = 3000;
            ExposureRegisters registers = at(0, 0);
            double mean = 0;
            int frames = 0;
            for (; frames < 30; ++frames) {
                const double exposure = (registers.lines > 0 ? registers.lines : 100) / 110.0;
                mean = std::min(light * exposure * 0.4, 1.0) * std::pow(10.0, registers.gain / 200.0);
                mean = std::min(mean, 1.0) * 255;
                if (!adjustExposure(model, control, lines(), mean * kLevel, registers)) break;
            }
            EXPECT_LT(frames, 30);
            // A whole line is the smallest step of the shutter, and there is no gain below the default.
            const double halfLine = registers.lines > 0 ? target / (2.0 * registers.lines) : 0;
            EXPECT_NEAR(mean, target, 3 + halfLine) << light;
        }
    }
}

const std::string kSmall =
    ":pace=off:geometry.sensor_width=64:geometry.sensor_height=48:identity.maximum_width=64:"
    "identity.maximum_height=48";

double settledMean(const Camera& camera) {
    double mean = 0;
    for (int frame = 0; frame < 20; ++frame) mean = meanOf(rawOf(readTransfer(camera)));
    return mean;
}

TEST(AutoExposureInTheCamera, SettlesOnItsTargetAndTellsWhereItIs) {
    for (const char* const light : {"dim", "0.4", "1", "2"}) {
        useCameras("alc:light=" + std::string(light) + kSmall);
        Camera camera;
        ASSERT_TRUE(camera.setStatus(0x8049, 3));
        ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
        EXPECT_NEAR(settledMean(camera), 128, 4) << light;
        const auto block = camera.get(33, 0, 0, 64);
        EXPECT_TRUE(loadLe16(&block[2]) > 0 || loadLe16(&block[6]) > 0) << light;
        ASSERT_TRUE(camera.setStatus(0x804A, 60));
        EXPECT_NEAR(settledMean(camera), 60, 4) << light;
        UsbEndRead(camera.handle());
    }
}

TEST(AutoExposureInTheCamera, MovesOnlyWhatItIsAskedTo) {
    useCameras("alc:light=0.5" + kSmall);
    Camera camera;
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    std::vector<std::uint8_t> asked(64);
    storeLe16(&asked[2], 20);
    storeLe16(&asked[6], 30);
    ASSERT_TRUE(camera.set(33, 0, 0, asked));
    settledMean(camera);
    EXPECT_EQ(loadLe16(&camera.get(33, 0, 0, 64)[2]), 20) << "off";
    ASSERT_TRUE(camera.setStatus(0x8049, 2));
    settledMean(camera);
    auto block = camera.get(33, 0, 0, 64);
    EXPECT_EQ(loadLe16(&block[2]), 20);
    EXPECT_GT(loadLe16(&block[6]), 30);
    const std::uint16_t gain = loadLe16(&block[6]);
    ASSERT_TRUE(camera.setStatus(0x804A, 30));
    ASSERT_TRUE(camera.setStatus(0x8049, 1));
    settledMean(camera);
    block = camera.get(33, 0, 0, 64);
    EXPECT_EQ(loadLe16(&block[6]), gain);
    EXPECT_LT(loadLe16(&block[2]), 20);
    UsbEndRead(camera.handle());
}

TEST(AutoExposureInTheCamera, NeedsTheCapability) {
    useCameras("mono:light=0.3" + kSmall);
    Camera camera;
    ASSERT_TRUE(camera.setStatus(0x8049, 3));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    settledMean(camera);
    EXPECT_EQ(loadLe16(&camera.get(33, 0, 0, 64)[2]), 0);
    EXPECT_EQ(loadLe16(&camera.get(33, 0, 0, 64)[6]), 0);
    UsbEndRead(camera.handle());
}

// A frame of one second, so that each is a step of the script.
const std::string kSeconds = ":timing.clocks_per_line=1000:timing.blank_lines=2:identity.clock_value=50000";

TEST(WhiteBalanceInTheCamera, FollowsTheLightInTheContinuousMode) {
    useCameras("wb:light=script:noise=off:sensor.response=[0.5,1,0.5]" + kSmall + kSeconds);
    Camera camera;
    ASSERT_TRUE(camera.setStatus(0x8044, 2));
    EXPECT_EQ(camera.status(64), 256);
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (int frame = 0; frame < 12; ++frame) ASSERT_FALSE(readTransfer(camera).empty());
    // From here on the light has 3000 K for twelve frames, less red gain by the light's red.
    const double wanted = 256 / lightColor(3000)[0];
    double last = 256;
    for (int frame = 0; frame < 11; ++frame) {
        ASSERT_FALSE(readTransfer(camera).empty());
        const double now = camera.status(64);
        EXPECT_LE(now, last) << frame;
        last = now;
    }
    EXPECT_NEAR(last, wanted, 8);
    EXPECT_GT(camera.status(67), 400) << "and more blue";
    EXPECT_LE(camera.status(67), 1023) << "as much as the camera has";
    UsbEndRead(camera.handle());
}

TEST(WhiteBalanceInTheCamera, ManualGainsAreLeftAlone) {
    useCameras("wb:light=script" + kSmall + kSeconds);
    Camera camera;
    ASSERT_TRUE(camera.setStatus(0x8044, 1));
    ASSERT_TRUE(camera.set(128, 0x8040, 0, {200, 0, 128, 0, 128, 0, 100, 0}));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    for (int frame = 0; frame < 20; ++frame) ASSERT_FALSE(readTransfer(camera).empty());
    EXPECT_EQ(camera.get(128, 64, 0, 8), (std::vector<std::uint8_t>{200, 0, 128, 0, 128, 0, 100, 0}));
    UsbEndRead(camera.handle());
}

TEST(WhiteBalanceInTheCamera, GainsReachTheSites) {
    useCameras("wb:light=0.3:noise=off:hotpixels=0" + kSmall);
    Camera camera;
    const auto sites = [&] {
        const auto frame = readTransfer(camera);
        std::array<double, 4> sums{};
        for (std::size_t y = 0; y < 48; ++y) {
            for (std::size_t x = 0; x < 64; ++x) sums[y % 2 * 2 + x % 2] += frame[64 + y * 64 + x];
        }
        return sums;
    };
    const std::vector<std::uint8_t> unity{128, 0, 128, 0, 128, 0, 128, 0};
    ASSERT_TRUE(camera.set(128, 0x8040, 0, unity));
    ASSERT_EQ(UsbBeginRead(camera.handle()), 1);
    const auto before = sites();
    ASSERT_TRUE(camera.set(128, 0x8040, 0, {0, 1, 192, 0, 64, 0, 0, 1}));  // 2, 1.5, 0.5 and 2
    const auto after = sites();
    const double factors[] = {2, 1.5, 0.5, 2};
    for (std::size_t i = 0; i < 4; ++i) {
        // The eight bits of a sample are cut off, half a level in the mean.
        const double pixels = 32 * 24;
        EXPECT_NEAR(after[i] / pixels + 0.5, factors[i] * (before[i] / pixels + 0.5), 0.2) << i;
    }
    ASSERT_TRUE(camera.setStatus(0x8044, 0));
    EXPECT_EQ(sites(), before) << "off";
    UsbEndRead(camera.handle());
}

}  // namespace
}  // namespace tavra::usbd
