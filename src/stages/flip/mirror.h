// Mirroring: pixels of a row in reverse, rows in reverse, both. Rows are dense. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::flip {

// Pixels of 1, 2, 3, 4, 6 or 8 bytes, which move whole. `source` may be `destination`; otherwise the two do
// not overlap.
void mirrorImage(std::size_t pixelBytes, std::size_t width, std::size_t height, const std::uint8_t* source,
                 std::uint8_t* destination, bool mirrorX, bool mirrorY);

}  // namespace tavra::flip
