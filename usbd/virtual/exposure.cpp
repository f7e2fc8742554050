#include "exposure.h"

#include <algorithm>
#include <cmath>

namespace tavra::usbd {
namespace {

constexpr std::uint16_t kLongExposureModes[] = {4, 32};
constexpr std::uint32_t kLongExposureLines = 4090;
constexpr double kHeadroom = 1.1;  // of the default full scale over the default exposure

bool isLongMode(std::uint16_t scanMode) {
    return std::find(std::begin(kLongExposureModes), std::end(kLongExposureModes), scanMode) !=
           std::end(kLongExposureModes);
}

std::uint16_t word(std::uint32_t value) {
    return static_cast<std::uint16_t>(std::min(value, 0xFFFFu));
}

double decibels(double db) {
    return std::pow(10.0, db / 20);
}

}  // namespace

ExposureTiming::ExposureTiming(const Model& model, const ExposureRegisters& registers,
                               std::uint32_t imageHeight, std::uint16_t scanMode)
    : clockHz_(std::max(registers.clockHz, 1u)) {
    scan_.clocksPerLine = word(model.timing.clocksPerLine);
    scan_.linesPerFrame = word(imageHeight + model.timing.blankLines + registers.verticalBlank);
    findLimits(model, scanMode);

    const double lineClocks = scan_.lastExposureClock + 1.0;
    const double asked = lineClocks * registers.lines + registers.clocks;
    const double shortest = lineClocks * scan_.shortLines + scan_.shortClock;
    const double longest = lineClocks * scan_.longLines + scan_.longClock;
    exposureSeconds_ = (asked > 0 ? std::min(asked, longest) : shortest) * unitSeconds_;
    if (registers.triggerSeconds > 0) exposureSeconds_ = registers.triggerSeconds;
}

// How an exposure is counted, and the pairs of the longest exposure that fits a frame and of the longest of
// all.
void ExposureTiming::findLimits(const Model& model, std::uint16_t scanMode) {
    const double lineSeconds = scan_.clocksPerLine / clockHz_;
    const std::uint32_t frameLines = scan_.linesPerFrame;
    const bool tellsFields = model.has(3, 0);
    if (!tellsFields || model.timing.exposureUnit == ExposureUnit::Clock) {
        unitSeconds_ = 1 / clockHz_;
        scan_.lastExposureClock = scan_.clocksPerLine - 1u;
        scan_.shortLines = frameLines;
        scan_.longLines = frameLines;
        if (!tellsFields && isLongMode(scanMode)) scan_.longLines = kLongExposureLines;
        if (tellsFields) {
            const double lines = model.timing.longestExposureSeconds / lineSeconds;
            scan_.longLines = std::max(frameLines, static_cast<std::uint32_t>(lines));
        }
        return;
    }
    switch (model.timing.exposureUnit) {
        case ExposureUnit::Microsecond: unitSeconds_ = 1e-6; break;
        case ExposureUnit::BaseClock: unitSeconds_ = 1e-6 / model.timing.baseClockMHz; break;
        default: unitSeconds_ = lineSeconds; break;
    }
    // One clock to the exposure line: the line count is the exposure.
    scan_.lastExposureClock = 0;
    scan_.shortLines =
        static_cast<std::uint32_t>(std::max(frameLines * lineSeconds / unitSeconds_ + 0.5, 1.0));
    const double longest = std::min(model.timing.longestExposureSeconds / unitSeconds_, 4e9);
    scan_.longLines = std::max(scan_.shortLines, static_cast<std::uint32_t>(longest));
}

double ExposureTiming::frameSeconds() const {
    const double readout = static_cast<double>(scan_.linesPerFrame) * scan_.clocksPerLine / clockHz_;
    return std::max(readout, exposureSeconds_);
}

std::uint32_t ExposureTiming::clocksPerFrame() const {
    return static_cast<std::uint32_t>(std::min(frameSeconds() * clockHz_ + 0.5, 4294967295.0));
}

double gainFactor(const Model& model, std::uint16_t gain) {
    return decibels(model.sensor.gainStepDb * (int{gain} - int{model.geometry.defaultGain}));
}

double digitalGainFactor(const Model& model, std::uint16_t digitalGain) {
    constexpr std::size_t kHdrWord = 18;
    constexpr int kNoDigitalGain = 8;
    if (model.has(kHdrWord, kNoDigitalGain)) return 1;
    switch (model.sensor.digitalGain) {
        case DigitalGainScale::Plus64: return digitalGain / 64.0 + 1;
        case DigitalGainScale::Decibel: return std::pow(10.0, digitalGain / 200.0);
        default: return digitalGain / 64.0;
    }
}

double fullScaleSeconds(const Model& model) {
    if (model.sensor.fullScaleMs > 0) return model.sensor.fullScaleMs / 1000;
    const Geometry geometry(model.geometry);
    const ExposureRegisters registers{.clockHz = model.identity.clockValue};
    const ExposureTiming timing(model, registers, geometry.imageHeight(), geometry.scanMode());
    return timing.exposureSeconds() * kHeadroom;
}

}  // namespace tavra::usbd
