// The frame and the image as the interpolation kernels see them, and how the mosaic's colours lie in a row.
// Values that are passed about; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::interpolation {

// A raw frame: rows of samples, `stride` bytes apart.
template <class Sample>
struct Frame {
    const void* bytes;
    std::size_t stride;
    std::size_t width, height;
    std::uint16_t colorArray;

    const Sample* row(std::size_t y) const {
        return static_cast<const Sample*>(
            static_cast<const void*>(static_cast<const std::uint8_t*>(bytes) + y * stride));
    }
};

// The image to fill: rows `stride` bytes apart, pixels `pitch` samples apart.
template <class Sample>
struct Image {
    void* bytes;
    std::size_t stride;
    std::size_t pitch;

    Sample* row(std::size_t y) const {
        return static_cast<Sample*>(static_cast<void*>(static_cast<std::uint8_t*>(bytes) + y * stride));
    }
};

// A row of a Bayer mosaic holds green and one other colour, its own; it lacks the third.
struct RowColors {
    bool greenFirst;  // green stands in the even columns
    bool ownIsRed;
};

// Arrays 2 to 5: R G / G B, G R / B G, G B / R G, B G / G R.
constexpr RowColors rowColors(std::uint16_t colorArray, std::size_t y) {
    const bool odd = (y & 1) != 0;
    const bool greenOrigin = colorArray == 3 || colorArray == 4;
    const bool redInRow0 = colorArray == 2 || colorArray == 3;
    return {greenOrigin != odd, redInRow0 != odd};
}

// The index of the nearest sample of the same colour inside, for one that may lie outside 0 to count - 1: -1
// gives 1, count gives count - 2, count + 1 gives count - 1. Where a frame is so small that it has no sample
// of that colour, the nearest sample of any colour stands in.
constexpr std::size_t insideIndex(std::ptrdiff_t index, std::size_t count) {
    const auto last = static_cast<std::ptrdiff_t>(count) - 1;
    if (index < 0) index += 2;
    while (index > last) index -= 2;
    return index < 0 ? 0 : static_cast<std::size_t>(index);
}

}  // namespace tavra::interpolation
