// Colour pictures in memory, and what it takes to lay them side by side. Plain values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tavra::pictures {

using Color = std::array<std::uint8_t, 3>;  // B, G, R

struct Box {
    std::uint32_t x, y, width, height;
};

struct Picture {
    std::uint32_t width = 0, height = 0;
    std::vector<Color> pixels;  // row by row, without padding

    Picture() = default;
    Picture(std::uint32_t columns, std::uint32_t rows, Color color)
        : width(columns), height(rows), pixels(std::size_t{columns} * rows, color) {}

    Color& at(std::uint32_t x, std::uint32_t y) { return pixels[std::size_t{y} * width + x]; }
    const Color& at(std::uint32_t x, std::uint32_t y) const { return pixels[std::size_t{y} * width + x]; }
};

// A picture of rows of 1, 3 or 4 bytes a pixel (grey; B, G, R; B, G, R and one more), padded to four bytes.
Picture pictureOf(const std::vector<std::uint8_t>& rows, std::uint32_t width, std::uint32_t height,
                  std::uint32_t pixelBytes);

Picture cropped(const Picture& picture, const Box& box);

// Every pixel becomes a square of so many pixels a side.
Picture magnified(const Picture& picture, std::uint32_t factor);

// A frame of one pixel just inside the box.
void drawFrame(Picture& picture, const Box& box, Color color);

// Pictures in rows of so many, with white between them.
Picture sheet(const std::vector<Picture>& pictures, std::size_t columns);

}  // namespace tavra::pictures
