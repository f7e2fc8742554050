#include "auto_exposure.h"

#include <algorithm>
#include <cmath>

namespace tavra::usbd {
namespace {

constexpr double kTolerance = 3;  // of 255
constexpr double kLargestStep = 2;
constexpr std::uint16_t kHasClockPart = 1;  // of the word of shutter speeds

// Moves the exposure towards `factor` times what it is: what is left of the factor.
double moveShutter(const Model& model, const AutoExposure& control, const ScanTiming& scan, double factor,
                   ExposureRegisters& registers) {
    if (!control.shutter) return factor;
    const double lineClocks = scan.lastExposureClock + 1.0;
    const bool inClocks = (model.identity.enableShutterSpeed & kHasClockPart) != 0;
    const double step = inClocks ? 1 : lineClocks;
    const double ofAFrame = lineClocks * scan.shortLines + scan.shortClock;
    const double longest = lineClocks * scan.longLines + scan.longClock;
    const double top =
        std::min(control.longestLines > 0 ? lineClocks * control.longestLines : ofAFrame, longest);
    const double bottom = std::min(std::max(lineClocks * control.shortestLines, step), top);

    const double asked = lineClocks * registers.lines + registers.clocks;
    const double now = std::min(asked > 0 ? asked : ofAFrame, longest);
    const double wanted = std::clamp(std::round(now * factor / step) * step, bottom, top);
    if (wanted == now) return factor;
    registers.lines = static_cast<std::uint32_t>(wanted / lineClocks);
    registers.clocks = static_cast<std::uint32_t>(wanted - lineClocks * registers.lines);
    return factor * now / wanted;
}

// The same with gain.
double moveGain(const Model& model, const AutoExposure& control, double factor,
                ExposureRegisters& registers) {
    const double stepDb = model.sensor.gainStepDb;
    if (!control.gain || stepDb <= 0) return factor;
    const int most = std::min(control.highestGain, model.geometry.maximumGain);
    const int least = std::min(int{control.lowestGain}, most);
    const auto steps = static_cast<int>(std::lround(20 * std::log10(factor) / stepDb));
    const int before = registers.gain;
    registers.gain = static_cast<std::uint16_t>(std::clamp(before + steps, least, most));
    return factor / std::pow(10.0, stepDb * (registers.gain - before) / 20);
}

}  // namespace

bool adjustExposure(const Model& model, const AutoExposure& control, const ScanTiming& scan,
                    double brightness, ExposureRegisters& registers) {
    const double mean = brightness * 255;
    if (!control.isOn() || std::abs(control.target - mean) <= kTolerance) return false;
    const ExposureRegisters before = registers;
    double factor = std::clamp(control.target / std::max(mean, 1.0), 1 / kLargestStep, kLargestStep);
    if (factor > 1) {
        factor = moveShutter(model, control, scan, factor, registers);
        moveGain(model, control, std::max(factor, 1.0), registers);
    } else {
        factor = moveGain(model, control, factor, registers);
        moveShutter(model, control, scan, std::min(factor, 1.0), registers);
    }
    return registers.lines != before.lines || registers.clocks != before.clocks ||
           registers.gain != before.gain;
}

}  // namespace tavra::usbd
