// Digital gain: the number that is set and the factor that it means. The scale depends on the camera; the two
// directions are not inverses of each other on every one. Any thread.
#pragma once

#include <cstdint>

namespace tavra {

class TAVRA_COMMON_PARAM;

// Factor of a setting value; 1 on cameras without digital gain.
float digitalGainTimes(const TAVRA_COMMON_PARAM& camera, std::uint16_t value);
// Setting value of a factor, up to the camera's maximum; 0 on cameras without digital gain.
std::uint16_t digitalGainValue(const TAVRA_COMMON_PARAM& camera, float times);

}  // namespace tavra
