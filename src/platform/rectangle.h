// Sizes and rectangles of windows and of what is drawn in them, in pixels.
#pragma once

#include <cstdint>

namespace tavra::platform {

struct Size {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    // Of a place counted from the upper left corner.
    bool contains(std::int32_t x, std::int32_t y) const {
        return x >= 0 && y >= 0 && static_cast<std::uint32_t>(x) < width &&
               static_cast<std::uint32_t>(y) < height;
    }

    friend bool operator==(const Size&, const Size&) = default;
};

// Right and bottom are the first pixels behind it. An edge may lie before the one that it should follow: the
// rectangle is then empty.
struct Rectangle {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    std::int64_t width() const { return std::int64_t{right} - left; }
    std::int64_t height() const { return std::int64_t{bottom} - top; }
    bool empty() const { return width() <= 0 || height() <= 0; }

    friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

}  // namespace tavra::platform
