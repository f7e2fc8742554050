// How an image is turned: an exchange of rows and columns, then a mirror in either direction. Every mirror
// and every quarter turn, and any of them one after the other, is one of these eight. Pure functions; any
// thread.
#pragma once

#include <cstdint>

namespace tavra {

struct Orientation {
    bool transpose = false;  // first: columns become rows
    bool mirrorX = false;    // then: left and right are exchanged
    bool mirrorY = false;    // and: top and bottom are

    constexpr bool asSent() const { return !transpose && !mirrorX && !mirrorY; }
};

// Of the mirror mode (bit 0 horizontal, bit 1 vertical, the others belong to the camera) followed by the
// rotation mode: 1 a quarter turn clockwise, 2 anticlockwise, any other none.
constexpr Orientation orientationOf(std::uint8_t mirror, std::uint8_t rotation) {
    const bool horizontal = (mirror & 1) != 0;
    const bool vertical = (mirror & 2) != 0;
    // A mirror ahead of the exchange is one in the other direction behind it.
    switch (rotation) {
        case 1: return {true, !vertical, horizontal};
        case 2: return {true, vertical, !horizontal};
        default: return {false, horizontal, vertical};
    }
}

// The colour array of a mosaic that was turned. Mirrors know all mosaics, patterns and quads; the exchange of
// rows and columns, with or without mirrors, those of 2 to 5 only, and leaves every other code.
// By design: the phase of a mosaic of even size, whatever the size is.
std::uint16_t turnedColorArray(std::uint16_t colorArray, Orientation orientation);

}  // namespace tavra
