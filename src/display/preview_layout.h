// Where the image lies in the preview window, as plain arithmetic: the destination that an aspect mode gives,
// the scroll bars, and what a click of the magnifying mouse shows. Positions and sizes are words of 32 bits
// that an application may set to anything; none of it may do harm.
#pragma once

#include <cstdint>

#include "platform/rectangle.h"
#include "platform/window.h"

namespace tavra {

using platform::Rectangle;
using platform::Size;

// A position and a size as the interface has them. A position may carry a signed value.
struct PreviewPlace {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    friend bool operator==(const PreviewPlace&, const PreviewPlace&) = default;
};

// The rectangle of a place, moved back by a scroll position.
Rectangle rectangleOf(const PreviewPlace& place, std::uint32_t scrollX = 0, std::uint32_t scrollY = 0);

// The destination in a client area, by TAVRA_ASPECT_ code. `image` has its sides as they are shown.
PreviewPlace destinationFor(std::uint8_t aspectMode, const PreviewPlace& present, const PreviewPlace& mask,
                            Size image, Size client);

struct ScrollBars {
    platform::ScrollBar horizontal;
    platform::ScrollBar vertical;
};

// What decides about the bars.
struct ScrollInput {
    PreviewPlace destination;
    Size content;  // window size that would show all of the destination
    Size window;   // that it has
    Size client;
    std::uint32_t horizontalThickness = 0;
    std::uint32_t verticalThickness = 0;
    bool horizontalAllowed = false;  // by the style
    bool verticalAllowed = false;
    std::uint32_t scrollX = 0;
    std::uint32_t scrollY = 0;
};
ScrollBars scrollBarsFor(const ScrollInput& input);

// The position that a bar goes to.
std::int32_t scrolledPosition(const platform::ScrollBar& bar, platform::ScrollCode code, std::int32_t thumb);

// The mask after a click at (x, y) of the client area. `image` has its sides as they are shown.
PreviewPlace magnified(const PreviewPlace& mask, const PreviewPlace& destination, Size image, std::uint32_t x,
                       std::uint32_t y, bool smaller);

}  // namespace tavra
