// B, G, R to R, G, B and back. Pure; any thread.
#pragma once

#include <cstdint>

namespace tavra {

// Exchanges bytes 0 and 2 of width x height dense three-byte pixels.
void swapRedBlue24(std::uint32_t width, std::uint32_t height, std::uint8_t* image);

}  // namespace tavra
