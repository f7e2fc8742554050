// Exchange of rows and columns of an image. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::flip {

// What is read and what is written: pixel (x, y) of the source becomes pixel (y, x) of the destination. The
// strides are bytes from row to row and may be negative, which mirrors along with the exchange; row 0 is
// where the pointer points. The two images do not overlap.
struct Transposition {
    const std::uint8_t* source;
    std::ptrdiff_t sourceStride;
    std::size_t width, height;  // of the source
    std::uint8_t* destination;
    std::ptrdiff_t destinationStride;
};

// Pixels of 1, 2, 3 or 6 bytes, which move whole, and of 4 or 8 bytes, of which the last quarter stays as it
// is in the destination (but is rewritten with the value it had).
void transpose(std::size_t pixelBytes, const Transposition& image);

}  // namespace tavra::flip
