#include "camera/digital_gain.h"

#include <algorithm>
#include <cmath>

#include "camera/common_param.h"
#include "camera/function_table.h"

namespace tavra {
namespace {

constexpr double kStep = 0.015625;        // 1/64
constexpr double kStepsADecade = 200;     // value per factor of ten where the scale is logarithmic
constexpr unsigned kLogarithmicPid = 28;  // high byte of the same-PID word
constexpr double kUnity = 64;

bool hasLogarithmicPid(const TAVRA_COMMON_PARAM& camera) {
    return camera.capabilities.samePid() >> 8 == kLogarithmicPid;
}

bool countsFromOne(const TAVRA_COMMON_PARAM& camera) {
    return camera.hasFunction(function::kDigitalGainFromOne);
}

}  // namespace

float digitalGainTimes(const TAVRA_COMMON_PARAM& camera, std::uint16_t value) {
    if (!camera.hasFunction(function::kDigitalGain)) return 1.0F;
    const double v = std::min(value, camera.maximumDigitalGain);
    const bool fromOne = countsFromOne(camera);
    if (isWideGainFamily(camera.info.productType) || (fromOne && hasLogarithmicPid(camera))) {
        return static_cast<float>(std::pow(10.0, v / kStepsADecade));
    }
    return static_cast<float>(fromOne ? v * kStep + 1 : v * kStep);
}

std::uint16_t digitalGainValue(const TAVRA_COMMON_PARAM& camera, float times) {
    if (!camera.hasFunction(function::kDigitalGain)) return 0;
    double value = 0;
    if (isWideGainFamily(camera.info.productType) || hasLogarithmicPid(camera)) {
        // By design: 20 over 10, not the inverse of the other direction.
        value = std::trunc(std::log10(double{times}) * 20 / 10 + 0.5);
    } else {
        value = std::trunc(double{times} * kUnity + 0.5);
        if (countsFromOne(camera)) value -= kUnity;
    }
    if (!(value > 0)) return 0;  // also what is no number at all
    return static_cast<std::uint16_t>(std::min<double>(value, camera.maximumDigitalGain));
}

}  // namespace tavra
