// The bitmap header of a movie's frames, as it stands in the files: 40 bytes, and a palette for gray images.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra::movie {

struct ImageDescription {
    std::uint32_t headerSize = 40;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t planes = 1;
    std::uint16_t bitCount = 0;  // 8 or 24
    std::uint32_t compression = 0;
    std::uint32_t imageSize = 0;  // stride x height
    std::int32_t xPixelsPerMeter = 0;
    std::int32_t yPixelsPerMeter = 0;
    std::uint32_t colorsUsed = 0;
    std::uint32_t colorsImportant = 0;
    std::array<std::uint32_t, 256> palette{};  // blue in the low byte

    // A gray palette comes with 8 bits.
    static ImageDescription of(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                               std::uint16_t bitCount);

    // Bytes of it that a file holds.
    std::uint32_t usedBytes() const { return headerSize + 4 * colorsUsed; }
    bool isGray() const { return bitCount <= 8; }
};
static_assert(sizeof(ImageDescription) == 1064 && offsetof(ImageDescription, palette) == 40);

}  // namespace tavra::movie
