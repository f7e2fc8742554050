// Drawing on the device context that a callback is given, as an application does: with GDI on Windows, with
// the cairo that the library has loaded elsewhere. A program that uses this links tavra_drawing.
#pragma once

#include <cstdint>

#include "tavra/tavra_types.h"

namespace tavra::test {

struct Color {
    std::uint8_t red, green, blue;
};

struct Rectangle {
    int x, y, width, height;
};

// Fills the pixels of the rectangle and no other. False: it could not be drawn.
bool fillRectangle(TavraDC dc, const Rectangle& rectangle, const Color& color);

}  // namespace tavra::test
