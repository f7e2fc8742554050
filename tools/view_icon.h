// The icon of `tavra view`: a lens on a dark plate, drawn in any size.
#pragma once

#include <cstdint>
#include <vector>

namespace tavra::tool {

// size x size pixels, row by row, as 0xAARRGGBB.
std::vector<std::uint32_t> viewIcon(std::uint32_t size);

}  // namespace tavra::tool
