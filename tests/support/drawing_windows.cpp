#include <windows.h>

#include "support/drawing.h"

namespace tavra::test {

bool fillRectangle(TavraDC dc, const Rectangle& rectangle, const Color& color) {
    const RECT area{rectangle.x, rectangle.y, rectangle.x + rectangle.width, rectangle.y + rectangle.height};
    const HBRUSH brush = CreateSolidBrush(RGB(color.red, color.green, color.blue));
    const bool good = brush != nullptr && FillRect(static_cast<HDC>(dc), &area, brush) != 0;
    DeleteObject(brush);
    return good;
}

}  // namespace tavra::test
