// The image that a still file is made of: where its pixels lie and how. It owns nothing; the pixels are the
// caller's and stay unchanged during the call. Any thread.
#pragma once

#include <cstdint>
#include <limits>

#include "base/pixel_format.h"

namespace tavra::stills {

struct ImageView {
    std::uint32_t width;   // pixels
    std::uint32_t height;  // rows
    std::uint64_t stride;  // bytes from one row to the next
    std::uint32_t format;  // pixel format code
    const std::uint8_t* data;

    // Bytes of pixels in a row, without padding; below 2^35 for any width.
    std::uint64_t rowBytes() const { return std::uint64_t{width} * bytesPerPixel(format); }

    const std::uint8_t* row(std::uint32_t y) const { return data + y * stride; }
};

// a times b, or the largest number where that does not fit: whatever it is compared with, it is then
// too large.
constexpr std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    return b != 0 && a > kLargest / b ? kLargest : a * b;
}

// More bytes than this cannot lie in memory in one piece.
inline constexpr std::uint64_t kLargestObject = PTRDIFF_MAX;

// Whether each row has the room for its pixels, and all rows together can lie in memory.
inline bool rowsAreSound(const ImageView& image) {
    return image.stride >= image.rowBytes() &&
           saturatingProduct(image.stride, image.height) <= kLargestObject;
}

}  // namespace tavra::stills
