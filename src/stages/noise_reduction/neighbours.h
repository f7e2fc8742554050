// The neighbours of a sample that noise reduction compares it with, and their ranks. Pure; any thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace tavra::noise {

// A dense frame of bytes.
struct Frame {
    const std::uint8_t* samples;
    std::size_t width, height;

    const std::uint8_t* row(std::size_t y) const { return samples + y * width; }
};

// The second of four values in descending order, without a branch: loops over it vectorise.
constexpr std::uint8_t secondOf(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    const std::uint8_t lower = std::max(std::min(a, b), std::min(c, d));
    const std::uint8_t upper = std::min(std::max(a, b), std::max(c, d));
    return std::max(lower, upper);
}

// The third of four values in descending order.
constexpr std::uint8_t thirdOf(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    const std::uint8_t lower = std::max(std::min(a, b), std::min(c, d));
    const std::uint8_t upper = std::min(std::max(a, b), std::max(c, d));
    return std::min(lower, upper);
}

// In mosaics 2 and 5 green stands where the sum of row and column is odd.
constexpr bool isGreenSite(std::size_t x, std::size_t y) {
    return ((x + y) & 1) != 0;
}

}  // namespace tavra::noise
