// The draw object that a display mode names.
#pragma once

#include <cstdint>
#include <memory>

#include "display/draw_image.h"

namespace tavra {

// Modes that draw plainly have no surface that an application could draw on.
constexpr bool isPlainDisplayMode(std::uint8_t mode) {
    return mode == 0 || mode == 8;
}

// By design: a mode that is not listed draws as mode 0. Throws std::bad_alloc.
std::shared_ptr<CDrawImage> makeDrawImage(std::uint8_t displayMode, platform::IWindowSystem& system);
// It, or what a test puts in its place.
using DrawImageMaker = std::shared_ptr<CDrawImage> (*)(std::uint8_t displayMode,
                                                       platform::IWindowSystem& system);

}  // namespace tavra
