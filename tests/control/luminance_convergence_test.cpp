// The loop against a simulated sensor: it arrives as soon as its step bound allows, and stays.
#include <algorithm>
#include <cmath>

#include "control/control_double.h"

namespace tavra::test {
namespace {

constexpr double kTarget = 128;
constexpr double kNarrowBand = 5;
constexpr double kWideBand = 10;

// Linear up to saturation: exposure and gain that give the target are known.
class SimulatedSensor {
  public:
    SimulatedSensor(ControlDouble& control, double exposureForTarget)
        : control_(control), exposureForTarget_(exposureForTarget) {}

    std::uint8_t luminance() {
        const double decibels = control_.gainDecibels(control_.gainInMemory());
        const double gain = std::pow(10.0, (decibels - control_.gainDecibels(20)) / 20);
        const double level = kTarget * control_.total() / exposureForTarget_ * gain;
        return static_cast<std::uint8_t>(std::min(level, 255.0));
    }

  private:
    ControlDouble& control_;
    double exposureForTarget_;
};

double distance(std::uint8_t luminance) {
    return std::abs(luminance - kTarget);
}

// Decisions until the band is reached; it then stays for as many again and more.
unsigned decisionsToBand(ControlDouble& control, SimulatedSensor& sensor) {
    unsigned decisions = 0;
    while (distance(sensor.luminance()) > kNarrowBand && decisions < 10000) {
        EXPECT_EQ(control.decide(sensor.luminance()), 0u);
        ++decisions;
    }
    const std::size_t writes = control.written.size();
    for (unsigned i = 0; i < decisions + 20; ++i) {
        control.decide(sensor.luminance());
        EXPECT_LE(distance(sensor.luminance()), kWideBand);
    }
    EXPECT_EQ(control.written.size(), writes) << "it rests";
    return decisions;
}

// The most decisions to come from 1/ratio of the right exposure: each brightens by 1 + 1/d.
unsigned upwardBound(double ratio, unsigned divisor) {
    return static_cast<unsigned>(std::ceil(std::log(ratio) / std::log(1 + 1.0 / divisor)));
}
// And down from ratio: by 1 - 1/d, or what a saturated frame makes of the ideal if that is nearer; one more
// from the edge of saturation.
unsigned downwardBound(double ratio, unsigned divisor) {
    const double factor = std::max(1 - 1.0 / divisor, kTarget / 255);
    return static_cast<unsigned>(std::ceil(std::log(ratio) / -std::log(factor))) + 1;
}
// The same for the gain, whose steps end at the setting value below: each loses one of 0.132 dB at most.
unsigned gainUpwardBound(double ratio, unsigned divisor) {
    const double step = 20 * std::log10(1 + 1.0 / divisor) - 0.132;
    return static_cast<unsigned>(std::ceil(20 * std::log10(ratio) / step));
}

class LuminanceConvergence : public testing::TestWithParam<int> {
  protected:
    unsigned divisor() const { return static_cast<unsigned>(GetParam()) + 1; }
    void start(ControlDouble& control, const Shutter& shutter, std::uint8_t mode) const {
        control.maxShort = {2000, 0};
        control.maxLong = {2000, 0};
        const auto speed = static_cast<std::uint8_t>(GetParam());
        control.setControlSpeed({speed, speed, 3, 4});
        control.shutterInMemory() = shutter;
        EXPECT_TRUE(control.setMode(mode).ok());
    }
};
INSTANTIATE_TEST_SUITE_P(Speeds, LuminanceConvergence, testing::Values(0, 1, 3, 7, 15));

TEST_P(LuminanceConvergence, FromASixteenthOfTheRightLight) {
    for (const std::uint8_t mode : {alc_mode::kShutter, alc_mode::kBoth}) {
        ControlDouble control;
        start(control, {50, 0}, mode);
        SimulatedSensor sensor(control, 16 * 5000.0);
        EXPECT_LE(decisionsToBand(control, sensor), upwardBound(16, divisor()));
    }
}

TEST_P(LuminanceConvergence, FromSixteenTimesTheRightLight) {
    for (const std::uint8_t mode : {alc_mode::kShutter, alc_mode::kBoth}) {
        ControlDouble control;
        start(control, {1600, 0}, mode);
        SimulatedSensor sensor(control, 160000 / 16.0);
        EXPECT_LE(decisionsToBand(control, sensor), downwardBound(16, divisor()));
    }
}

TEST_P(LuminanceConvergence, CamerasOfWholeLinesArriveToo) {
    ControlDouble control(false);
    control.maxClock = 0;  // lines of one clock
    start(control, {50, 0}, alc_mode::kShutter);
    SimulatedSensor sensor(control, 16 * 50.0);
    EXPECT_LE(decisionsToBand(control, sensor), upwardBound(16, divisor()) + 1) << "steps of whole lines";
}

TEST_P(LuminanceConvergence, TheGainTakesOverAtTheTopOfTheShutter) {
    ControlDouble control(true, 0);
    start(control, {1000, 0}, alc_mode::kBoth);
    SimulatedSensor sensor(control, 300000.0);  // the top is 200000: half as much again by gain
    EXPECT_LE(decisionsToBand(control, sensor),
              upwardBound(2, divisor()) + gainUpwardBound(1.5, divisor()) + 1);
    EXPECT_EQ(control.total(), 200000u);
    EXPECT_GT(control.gainInMemory(), 20);
}

TEST_P(LuminanceConvergence, AOnceModeArrivesAndEnds) {
    ControlDouble control;
    start(control, {50, 0}, alc_mode::kBothOnce);
    SimulatedSensor sensor(control, 16 * 5000.0);
    for (unsigned i = 0; control.presentMode() != 0 && i <= upwardBound(16, divisor()); ++i) {
        control.decide(sensor.luminance());
    }
    EXPECT_EQ(control.presentMode(), 0);
    EXPECT_LE(distance(sensor.luminance()), kNarrowBand);
}

}  // namespace
}  // namespace tavra::test
