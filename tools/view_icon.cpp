#include "view_icon.h"

#include <algorithm>
#include <cmath>

namespace tavra::tool {
namespace {

constexpr std::uint32_t kNothing = 0x00000000, kPlate = 0xFF2B3440, kRim = 0xFFE8EDF2, kGlass = 0xFF1F7A8C,
                        kDepth = 0xFF12303A, kGlint = 0xFFFFFFFF;

// Inside a square with rounded corners, in units of its half side.
bool onPlate(double x, double y) {
    constexpr double kCorner = 0.35;
    const double beyondX = std::max(std::abs(x) - (1 - kCorner), 0.0);
    const double beyondY = std::max(std::abs(y) - (1 - kCorner), 0.0);
    return beyondX * beyondX + beyondY * beyondY <= kCorner * kCorner;
}

std::uint32_t colorAt(double x, double y) {
    if (!onPlate(x, y)) return kNothing;
    if (std::hypot(x + 0.2, y + 0.22) < 0.11) return kGlint;
    const double fromMiddle = std::hypot(x, y);
    if (fromMiddle < 0.24) return kDepth;
    if (fromMiddle < 0.55) return kGlass;
    return fromMiddle < 0.7 ? kRim : kPlate;
}

std::uint32_t channel(std::uint32_t color, int shift) {
    return color >> shift & 0xFF;
}

// The mean of points within the pixel; colours count as much as they cover.
std::uint32_t pixelAt(std::uint32_t column, std::uint32_t row, std::uint32_t size) {
    constexpr std::uint32_t kPoints = 4;
    std::uint32_t alpha = 0, red = 0, green = 0, blue = 0;
    for (std::uint32_t i = 0; i < kPoints * kPoints; ++i) {
        const auto place = [size](std::uint32_t pixel, std::uint32_t point) {
            return 2 * (pixel + (point + 0.5) / kPoints) / size - 1;
        };
        const std::uint32_t color = colorAt(place(column, i % kPoints), place(row, i / kPoints));
        const std::uint32_t cover = channel(color, 24) / 255;
        alpha += cover;
        red += cover * channel(color, 16);
        green += cover * channel(color, 8);
        blue += cover * channel(color, 0);
    }
    if (alpha == 0) return 0;
    return alpha * 255 / (kPoints * kPoints) << 24 | red / alpha << 16 | green / alpha << 8 | blue / alpha;
}

}  // namespace

std::vector<std::uint32_t> viewIcon(std::uint32_t size) {
    std::vector<std::uint32_t> pixels;
    pixels.reserve(std::size_t{size} * size);
    for (std::uint32_t row = 0; row < size; ++row) {
        for (std::uint32_t column = 0; column < size; ++column) pixels.push_back(pixelAt(column, row, size));
    }
    return pixels;
}

}  // namespace tavra::tool
