// Mean levels of a raw frame, as the controls of exposure and white balance see it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavra::tool {

// Levels from 0 to 255. On a mono frame only y is set.
struct FrameMeans {
    double r = 0, gr = 0, gb = 0, b = 0;
    double y = 0;  // 0.299 R + 0.587 G + 0.114 B
    bool color = false;
};

// A raw frame in somebody's memory.
struct RawView {
    const std::uint8_t* data;
    std::size_t size;
    std::uint32_t width, height;
    std::uint32_t transferBits;
};

// The upper eight bits of every sample, dense. Empty if the format holds no mosaic, or the frame is too
// short.
std::vector<std::uint8_t> reducedTo8Bits(const RawView& frame);

// Of width x height samples of 8 bits.
FrameMeans meansOf(const std::vector<std::uint8_t>& samples, std::uint32_t width, std::uint32_t height,
                   std::uint16_t colorArray);

}  // namespace tavra::tool
