// Colour-array codes: how the samples of a raw frame are laid out, and what mirroring does to them.
// Pure functions; any thread.
#pragma once

#include <cstdint>

namespace tavra {

// Code 1 and the sample patterns 12 to 15: one plane, never interpolated.
constexpr bool isMonoLike(std::uint16_t colorArray) {
    return colorArray == 1 || (colorArray >= 12 && colorArray <= 15);
}

// Packed YCbCr codes, used between the capture thread and colour interpolation.
constexpr bool isYcbcr(std::uint16_t colorArray) {
    return colorArray >= 6 && colorArray <= 11;
}

// Quad mosaics: each colour site is a block of 2 x 2 like samples.
constexpr bool isQuad(std::uint16_t colorArray) {
    return colorArray >= 16 && colorArray <= 19;
}

// The code after a mirror in x, in y, or in both. Mosaics 2 to 5, patterns 12 to 15 and quads 16 to 19 change
// within their group of four; every other code stays.
std::uint16_t mirroredColorArray(std::uint16_t colorArray, bool horizontal, bool vertical);

}  // namespace tavra
