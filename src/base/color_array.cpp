#include "base/color_array.h"

namespace tavra {

std::uint16_t mirroredColorArray(std::uint16_t colorArray, bool horizontal, bool vertical) {
    std::uint16_t first = 0;
    if (colorArray >= 2 && colorArray <= 5) {
        first = 2;
    } else if (colorArray >= 12 && colorArray <= 15) {
        first = 12;
    } else if (isQuad(colorArray)) {
        first = 16;
    } else {
        return colorArray;
    }
    // Within a group the codes count the position of R in the cell: bit 0 its column, bit 1 its row.
    unsigned position = colorArray - first;
    if (horizontal) position ^= 1u;
    if (vertical) position ^= 2u;
    return static_cast<std::uint16_t>(first + position);
}

}  // namespace tavra
