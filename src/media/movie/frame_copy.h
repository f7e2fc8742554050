// From an image as the capture thread has it to the image in a frame buffer: the one copy of a recording.
// Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::movie {

struct FrameCopy {
    std::uint32_t sourceHeight = 0;
    std::size_t sourceStride = 0;   // bytes
    std::uint32_t sourcePixel = 1;  // bytes: 1, 3 or 4
    std::uint32_t shift = 0;        // every 2^shift-th row and pixel is taken
    bool bottomUp = false;          // the source's last row becomes the first
    std::uint32_t width = 0;        // of the copy
    std::uint32_t height = 0;
    std::size_t stride = 0;

    // Of a pixel in the copy: the fourth byte is left out.
    std::uint32_t pixel() const { return sourcePixel == 1 ? 1 : 3; }
};

// Rows that are copied whole take their padding along, as far as the source has it; other padding is left
// alone.
void copyFrame(const FrameCopy& copy, const std::uint8_t* source, std::uint8_t* destination);

}  // namespace tavra::movie
