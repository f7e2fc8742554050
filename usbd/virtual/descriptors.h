// The USB configuration descriptor of a virtual camera. Pure function.
#pragma once

#include <cstdint>
#include <vector>

#include "model.h"

namespace tavra::usbd {

// One interface of the vendor's class with the bulk endpoint of the stream.
std::vector<std::uint8_t> configurationDescriptor(const Model& model);

}  // namespace tavra::usbd
