#include "media/movie/image_description.h"

namespace tavra::movie {

ImageDescription ImageDescription::of(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                      std::uint16_t bitCount) {
    ImageDescription description;
    description.width = static_cast<std::int32_t>(width);
    description.height = static_cast<std::int32_t>(height);
    description.bitCount = bitCount;
    description.imageSize = stride * height;
    if (description.isGray()) {
        description.colorsUsed = description.colorsImportant = 256;
        for (std::uint32_t level = 0; level < 256; ++level) description.palette[level] = level * 0x010101;
    }
    return description;
}

}  // namespace tavra::movie
