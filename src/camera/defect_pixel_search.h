// Finds the defect pixels of a sensor in an image that was taken in the dark. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavra {

// 8 bits a pixel, rows dense.
struct DarkImage {
    std::uint32_t width = 0, height = 0;
    const std::uint8_t* pixels = nullptr;
};

struct BrightPixel {
    std::uint32_t x = 0, y = 0;
    std::uint16_t value = 0;
};

// Fills the list with the brightest pixels at or above the threshold, and gives how many places are taken.
//
// Pixels come in the order of rows. To a full list a brighter one than its dimmest is appended, and the first
// of the dimmest goes; so of equal ones the earlier stay. The list is never sorted.
std::size_t findBrightPixels(const DarkImage& image, std::uint16_t threshold, std::span<BrightPixel> list);

}  // namespace tavra
