// What is painted with: the few operations that the preview window and the information overlay draw with.
//
// Windows: GDI on a device context. Linux: pixels in memory, which a window shows afterwards. A paint belongs
// to whoever made it, for one painting, on one thread. Nothing is drawn outside of what is painted on. What
// cannot be drawn fails with the system's error, and the paint is as good as before; pixels in memory never
// do.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/status.h"
#include "platform/bitmap.h"
#include "platform/rectangle.h"

namespace tavra::platform {

enum class StretchQuality {
    Nearest,  // whole pixels are left out or doubled
    Smooth,   // neighbours are mixed
};

class IPaint {
  public:
    virtual ~IPaint() = default;

    // Copies pixels of the bitmap, from (sourceX, sourceY) on, onto the destination. What lies outside the
    // bitmap is not drawn.
    virtual Status copy(const Rectangle& destination, const Bitmap& bitmap, std::int32_t sourceX,
                        std::int32_t sourceY) = 0;
    // Draws a part of the bitmap as large as the destination; both have a positive size. What lies outside
    // the bitmap is not drawn.
    virtual Status stretch(const Rectangle& destination, const Bitmap& bitmap, const Rectangle& source,
                           StretchQuality quality) = 0;
    virtual Status fillBlack(const Rectangle& rectangle) = 0;

    // One line of text with its left upper corner at (x, y), in the paint's font and colours: black on a
    // white box, unless an application that drew before has chosen others. Characters in the system code
    // page.
    virtual Status text(std::int32_t x, std::int32_t y, std::string_view line) = 0;
    virtual std::int32_t textHeight() = 0;
    // One pixel wide, along one axis, with both ends.
    virtual Status line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) = 0;
};

// Fills an area of a device context with a solid colour, 0x00BBGGRR. A failure is the system's, 8 without
// memory; on Linux 31 whatever else cairo complains of.
Status fillSolid(TavraDC dc, const Rectangle& rectangle, std::uint32_t color);

}  // namespace tavra::platform
