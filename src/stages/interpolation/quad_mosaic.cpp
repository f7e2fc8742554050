// Quad mosaics reduced to ordinary ones of the same size.
#include <algorithm>
#include <cstring>

#include "stages/interpolation/kernels.h"

namespace tavra::interpolation {
namespace {

// The truncated mean of the 2 x 2 block at (x, y). Of a block at the edge of an odd size, the samples that
// exist.
template <class Sample>
Sample blockMean(const Frame<Sample>& frame, std::size_t x, std::size_t y) {
    const Sample* const top = frame.row(y) + x;
    const Sample* const bottom = y + 1 < frame.height ? frame.row(y + 1) + x : top;
    const std::size_t right = x + 1 < frame.width ? 1 : 0;
    // A side that does not exist is counted twice, which leaves the mean as it is, also truncated.
    return static_cast<Sample>((std::uint32_t{top[0]} + top[right] + bottom[0] + bottom[right]) >> 2);
}

// One row of the reduced mosaic from the source rows y and y + 1: of each four columns A, B, A, B.
template <class Sample>
void reduceRow(const Frame<Sample>& frame, std::size_t y, Sample* __restrict out) {
    const std::size_t whole = y + 1 < frame.height ? frame.width & ~std::size_t{3} : 0;
    const Sample* const top = frame.row(y);
    const Sample* const bottom = whole != 0 ? frame.row(y + 1) : top;
    for (std::size_t x = 0; x < whole; x += 4) {
        const std::uint32_t a = std::uint32_t{top[x]} + top[x + 1] + bottom[x] + bottom[x + 1];
        const std::uint32_t b = std::uint32_t{top[x + 2]} + top[x + 3] + bottom[x + 2] + bottom[x + 3];
        out[x] = out[x + 2] = static_cast<Sample>(a >> 2);
        out[x + 1] = out[x + 3] = static_cast<Sample>(b >> 2);
    }
    for (std::size_t x = whole; x < frame.width; ++x) {
        const std::size_t block = (x & ~std::size_t{3}) + 2 * (x & 1);
        // A group cut off before its second block takes that colour from the group before.
        const bool exists = block < frame.width;
        out[x] = exists ? blockMean(frame, block, y) : x >= 4 ? out[x - 2] : out[0];
    }
}

}  // namespace

template <class Sample>
void reduceQuad(const Frame<Sample>& frame, Sample* mosaic) {
    const std::size_t width = frame.width;
    for (std::size_t y = 0; y < frame.height; ++y) {
        Sample* const out = mosaic + y * width;
        if ((y & 2) != 0) {
            std::memcpy(out, out - 2 * width, width * sizeof(Sample));
            continue;
        }
        // The group's first output row comes from its source rows 0 and 1, the second from 2 and 3. A group
        // cut off before these takes the row from the group before.
        const std::size_t source = (y & 1) == 0 ? y : y + 1;
        if (source < frame.height) {
            reduceRow(frame, source, out);
        } else {
            std::memcpy(out, y >= 4 ? out - 2 * width : mosaic, width * sizeof(Sample));
        }
    }
}

template void reduceQuad(const Frame<std::uint8_t>&, std::uint8_t*);
template void reduceQuad(const Frame<std::uint16_t>&, std::uint16_t*);

}  // namespace tavra::interpolation
