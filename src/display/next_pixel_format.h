// The pixel formats that are tried for a surface, one after the other.
#pragma once

#include <cstdint>

#include "platform/surface_device.h"

namespace tavra {

// The format of an attempt (0, 1, ...). False: there are no more. Order 0 begins with formats of 16 bits,
// UYVY first for an overlay, and goes on with those of 24 and 32; order 1 takes the same list from the top.
bool NextPixelFormat(std::uint32_t order, bool overlay, std::uint32_t attempt,
                     platform::SurfaceFormat& format);

}  // namespace tavra
