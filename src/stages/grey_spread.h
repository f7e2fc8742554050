// The grey image of a mono camera spread to the preview's colour format. Pure; any thread.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

// An image of format 1 spread in place to format 4 or 8, each value into B, G and R; rows are padded to a
// multiple of four bytes in both. Format 1 is left as it is; 87, and nothing written, for another. The
// buffer has room for the larger image. A fourth byte keeps what the buffer held.
Status spreadGreyInPlace(std::uint32_t width, std::uint32_t height, std::uint32_t previewFormat,
                         std::uint8_t* image);

}  // namespace tavra
