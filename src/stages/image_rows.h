// The walk over the rows of an image that stages work on in place. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/pixel_format.h"

namespace tavra {

// Calls `change(row, y)` for each row of an image of `pitch` samples a pixel. stride: bytes from row to row;
// 0: the samples of a row, rounded up to a multiple of four bytes. An image without pixels has no rows.
template <class Sample, class Change>
void eachRow(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::size_t pitch,
             Sample* pixels, Change change) {
    if (width == 0) return;
    const std::size_t rowBytes = stride != 0 ? stride : paddedStride(width, pitch * sizeof(Sample));
    auto* const bytes = static_cast<std::uint8_t*>(static_cast<void*>(pixels));
    for (std::size_t y = 0; y < height; ++y)
        change(static_cast<Sample*>(static_cast<void*>(bytes + y * rowBytes)), y);
}

}  // namespace tavra
