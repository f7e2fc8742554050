// One row of pixels to one row of each plane. Pure functions; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra::jpeg {

// Where the colours stand in a pixel.
struct PixelLayout {
    std::size_t bytes;  // 3 or 4
    bool blueFirst;
};

using PlaneRows = std::array<std::uint8_t*, 3>;

// R, G and B as they are.
void splitRgb(const std::uint8_t* pixels, std::size_t width, PixelLayout layout, const PlaneRows& planes);

// The full-range equations of JFIF (ITU T.871 clause 7), rounded to nearest.
void convertToYCbCr(const std::uint8_t* pixels, std::size_t width, PixelLayout layout,
                    const PlaneRows& planes);

// Y alone.
void convertToGray(const std::uint8_t* pixels, std::size_t width, PixelLayout layout, std::uint8_t* plane);

// Pairs Y Cb Y Cr. `width` is that of the Y plane; an odd one leaves out the last Y.
void splitYCbCr422(const std::uint8_t* pairs, std::size_t width, const PlaneRows& planes);

}  // namespace tavra::jpeg
