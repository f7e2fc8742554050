#include "media/movie/frame_copy.h"

#include <algorithm>
#include <cstring>

namespace tavra::movie {
namespace {

// Every `step`-th pixel of `From` bytes, of which the first `To` are taken.
template <std::size_t From, std::size_t To>
void thinRow(const std::uint8_t* source, std::uint8_t* destination, std::size_t width, std::size_t step) {
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t byte = 0; byte < To; ++byte) {
            destination[x * To + byte] = source[x * step * From + byte];
        }
    }
}

void copyRow(const FrameCopy& copy, const std::uint8_t* source, std::uint8_t* destination) {
    const std::size_t step = std::size_t{1} << copy.shift;
    if (copy.sourcePixel == 4) {
        thinRow<4, 3>(source, destination, copy.width, step);
    } else if (copy.shift == 0) {
        std::memcpy(destination, source, std::min(copy.stride, copy.sourceStride));
    } else if (copy.sourcePixel == 3) {
        thinRow<3, 3>(source, destination, copy.width, step);
    } else {
        thinRow<1, 1>(source, destination, copy.width, step);
    }
}

bool isOneBlock(const FrameCopy& copy) {
    return copy.shift == 0 && copy.sourcePixel != 4 && !copy.bottomUp && copy.stride == copy.sourceStride;
}

}  // namespace

void copyFrame(const FrameCopy& copy, const std::uint8_t* source, std::uint8_t* destination) {
    if (isOneBlock(copy)) {
        std::memcpy(destination, source, copy.stride * copy.height);
        return;
    }
    for (std::size_t y = 0; y < copy.height; ++y) {
        const std::size_t thinned = y << copy.shift;
        const std::size_t row = copy.bottomUp ? copy.sourceHeight - 1 - thinned : thinned;
        copyRow(copy, source + row * copy.sourceStride, destination + y * copy.stride);
    }
}

}  // namespace tavra::movie
