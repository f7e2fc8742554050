#include "camera/white_balance_modes.h"

#include "camera/common_param.h"
#include "camera/function_table.h"

namespace tavra {
namespace {

constexpr std::uint32_t kAllModes = 15;

}  // namespace

std::uint32_t enabledWhiteBalanceModes(const TAVRA_COMMON_PARAM& camera) {
    // By design: patterns 12 to 15, which have no white balance either, answer like a colour camera.
    if (camera.colorArray == TAVRA_COLOR_ARRAY_MONO) return 0;
    const bool told =
        camera.hasHardwareWhiteBalance() && camera.hasFunction(function::kWhiteBalanceModesTold);
    if (!told) return kAllModes;
    std::uint32_t mask = 0;
    for (std::size_t mode = 0; mode < function::kWhiteBalanceModes.size(); ++mode) {
        if (camera.hasFunction(function::kWhiteBalanceModes[mode])) mask |= 1u << mode;
    }
    return mask;
}

}  // namespace tavra
