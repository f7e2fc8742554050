// Colour pixels of bytes made brighter or darker without a change of colour: the three channels of a pixel
// move by the same number of levels. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra {

// For `count` pixels B, G, R that lie `pitch` bytes apart, 3 or 4, in place: pixel i rises by rise[i], which
// ends at 255, or falls by fall[i], which ends at 0; one of the two is 0. A fourth byte keeps its value.
void shiftPixels(std::uint8_t* pixels, std::size_t pitch, const std::uint8_t* rise, const std::uint8_t* fall,
                 std::size_t count);

}  // namespace tavra
