#include "stages/flip/orientation.h"

#include "base/color_array.h"

namespace tavra {

std::uint16_t turnedColorArray(std::uint16_t colorArray, Orientation orientation) {
    if (orientation.transpose) {
        if (colorArray < 2 || colorArray > 5) return colorArray;
        // R of the cell stands in the second column (3) or in the second row (4): these change places.
        if (colorArray == 3 || colorArray == 4) colorArray ^= 3 ^ 4;
    }
    return mirroredColorArray(colorArray, orientation.mirrorX, orientation.mirrorY);
}

}  // namespace tavra
