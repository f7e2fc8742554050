#include "control_state.h"

#include <cstdio>

#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

constexpr double kUnity = 128;
constexpr std::uint32_t kMosaicFormats =
    TAVRA_TRANSFER_MOSAIC_8 | TAVRA_TRANSFER_MOSAIC_10 | TAVRA_TRANSFER_MOSAIC_12 | TAVRA_TRANSFER_MOSAIC_14 |
    TAVRA_TRANSFER_MOSAIC_16 | TAVRA_TRANSFER_MOSAIC_10_PACKED | TAVRA_TRANSFER_MOSAIC_12_PACKED;

}  // namespace

std::string ControlState::text(bool color) const {
    char text[96];
    std::snprintf(text, sizeof text, "exposure %9s  gain %4.1fdB", timeText(exposureSeconds).c_str(),
                  decibels);
    std::string line = text;
    if (color) {
        std::snprintf(text, sizeof text, "  wb R %.2f B %.2f", whiteBalance[0] / kUnity,
                      whiteBalance[3] / kUnity);
        line += text;
    }
    return line;
}

bool readControlNumbers(const Camera& camera, bool color, ControlState& state) {
    auto& gains = state.whiteBalance;
    return Tavra_GetExposureClock(camera.handle(), &state.exposureClock) != 0 &&
           Tavra_GetGain(camera.handle(), &state.gain) != 0 &&
           (!color ||
            Tavra_GetWhiteBalanceGain(camera.handle(), &gains[0], &gains[1], &gains[2], &gains[3]) != 0);
}

void addUnits(const Camera& camera, ControlState& state) {
    float seconds = 0, decibels = 0;
    camera.check(Tavra_GetExposureTimeFromClock(camera.handle(), state.exposureClock, &seconds),
                 "cannot read the exposure time");
    camera.check(Tavra_GetGainDBFromSettingValue(camera.handle(), state.gain, &decibels),
                 "cannot convert the gain");
    state.exposureSeconds = static_cast<double>(seconds);
    state.decibels = static_cast<double>(decibels);
}

ControlState readControlState(const Camera& camera, bool color) {
    ControlState state;
    camera.check(readControlNumbers(camera, color, state) ? 1 : 0,
                 "cannot read exposure, gain and white balance");
    addUnits(camera, state);
    return state;
}

bool whiteBalanceActs(const Camera& camera) {
    std::uint16_t array = 0;
    camera.check(Tavra_GetColorArray(camera.handle(), &array), "cannot read the colour array");
    if (isMonoLike(camera)) return false;
    return array <= TAVRA_COLOR_ARRAY_BGGR || hasFunction(camera, kFunctionCameraWhiteBalance);
}

void requireMosaicFormat(const Camera& camera, const std::string& what) {
    std::uint32_t format = 0, possible = 0;
    camera.check(Tavra_GetTransferBitsPerPixel(camera.handle(), &format), "cannot read the transfer bits");
    if ((format & kMosaicFormats) != 0) return;
    camera.check(Tavra_GetEnableTransferBitsPerPixel(camera.handle(), &possible),
                 "cannot read the transfer bits");
    throw Failure(what + " needs frames as the sensor makes them, and " + camera.name() + " sends " +
                  nameOf(kTransferBits, format) + "; of such it has: " +
                  namesIn(kTransferBits, possible & kMosaicFormats) + " (--set transfer-bits=...)");
}

}  // namespace tavra::tool
