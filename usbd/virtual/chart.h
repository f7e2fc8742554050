// The test chart that virtual cameras look at unless told otherwise.
#pragma once

#include <cstdint>
#include <memory>

#include "scene.h"

namespace tavra::usbd {

// Colour patches, a grey staircase and a grey ramp, a star and line groups for resolution, discs that mix
// colours, on a gradient; in the proportions of the sensor. Pure function.
std::shared_ptr<const Scene> drawChart(std::uint32_t width, std::uint32_t height);

}  // namespace tavra::usbd
