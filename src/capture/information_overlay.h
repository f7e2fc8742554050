// The information overlay of one camera's preview images.
#pragma once

#include <cstdint>

#include "camera/common_param.h"
#include "platform/paint.h"

namespace tavra {

// Draws what the mode's bits ask for, the statistics ahead of the grid. A failure costs the drawing, and
// stands as display error. On the capture thread.
void drawInformation(TAVRA_COMMON_PARAM& camera, platform::IPaint& paint, std::uint32_t mode);

}  // namespace tavra
