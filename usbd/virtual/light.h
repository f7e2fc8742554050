// The colour of light. Pure function.
#pragma once

#include <array>

namespace tavra::usbd {

// Red, green and blue in light of a temperature in kelvin (1700 to 25000), against light of 5500 K, green
// being 1.
std::array<double, 3> lightColor(double kelvin);

}  // namespace tavra::usbd
