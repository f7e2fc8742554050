#include "stages/channel_swap.h"

#include <cstddef>
#include <utility>

namespace tavra {

void swapRedBlue24(std::uint32_t width, std::uint32_t height, std::uint8_t* image) {
    const std::size_t pixels = std::size_t{width} * height;
    for (std::size_t i = 0; i < pixels; ++i) std::swap(image[3 * i], image[3 * i + 2]);
}

}  // namespace tavra
