// Painting on pixels in memory: what a window shows next, or an image.
//
// The pixels are the caller's, and stay as long as the paint. One thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/paint.h"

namespace tavra::platform {

// Top row first. One byte (grey), three (B, G, R) or four (the last is 0) a pixel.
struct PixelArea {
    std::uint8_t* pixels = nullptr;
    std::size_t stride = 0;  // bytes
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pixelBytes = 4;
    std::int32_t left = 0;  // of the first pixel in what is painted: of a part only
    std::int32_t top = 0;
};

class PixelPaint final : public IPaint {
  public:
    explicit PixelPaint(const PixelArea& area) : area_(area) {}

    Status copy(const Rectangle& destination, const Bitmap& bitmap, std::int32_t sourceX,
                std::int32_t sourceY) override;
    // Nearest: the source pixel under the middle of each pixel. Smooth: the two by two pixels around it,
    // weighted by their distance, or the mean of all that it covers where it covers more.
    Status stretch(const Rectangle& destination, const Bitmap& bitmap, const Rectangle& source,
                   StretchQuality quality) override;
    Status fillBlack(const Rectangle& rectangle) override;
    // In the library's own font, a cell of 7 by 16 pixels for each character.
    Status text(std::int32_t x, std::int32_t y, std::string_view line) override;
    std::int32_t textHeight() override;
    Status line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) override;

    const PixelArea& area() const { return area_; }

    // 0x00RRGGBB; on grey pixels its blue.
    void fill(const Rectangle& rectangle, std::uint32_t color);

  private:
    Rectangle inside(const Rectangle& rectangle) const;
    std::uint8_t* pixel(std::int64_t x, std::int64_t y) const;

    PixelArea area_;
};

}  // namespace tavra::platform
