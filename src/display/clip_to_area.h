// Cutting what is drawn where its place ends.
#pragma once

#include <cstdint>

#include "platform/rectangle.h"

namespace tavra {

// Cuts a destination to an area that begins at 0, and its source, of positive size, in the same proportion.
// Nothing is to be drawn of what comes out with an end before its beginning.
void clipToArea(platform::Rectangle& source, platform::Rectangle& destination, std::int32_t width,
                std::int32_t height);

}  // namespace tavra
