#include "stages/grey_spread.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/pixel_format.h"
#include "stages/interpolation/bgr_writer.h"

namespace tavra {

Status spreadGreyInPlace(std::uint32_t width, std::uint32_t height, std::uint32_t previewFormat,
                         std::uint8_t* image) {
    if (!hasByteSamples(previewFormat)) return Status(error::kInvalidArgument);
    const std::size_t pitch = bytesPerPixel(previewFormat);
    if (pitch == 1 || width == 0) return {};
    const std::size_t greyStride = paddedStride(width, 1);
    const std::size_t stride = paddedStride(width, pitch);
    // From the last pixel back, as a pixel grows over grey values behind it. A block is read whole before it
    // is written.
    constexpr std::size_t kBlock = 256;
    std::uint8_t grey[kBlock];
    for (std::size_t y = height; y-- > 0;) {
        for (std::size_t end = width; end > 0;) {
            const std::size_t count = std::min(kBlock, end);
            end -= count;
            std::memcpy(grey, image + y * greyStride + end, count);
            interpolation::writeBgr(image + y * stride + end * pitch, pitch, grey, grey, grey, count);
        }
    }
    return {};
}

}  // namespace tavra
