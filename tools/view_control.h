// The automatic controls, as the keys of `tavra view` switch them.
#pragma once

#include "camera.h"

namespace tavra::tool {

// False also of a camera that does not answer.
bool exposureIsAutomatic(const Camera& camera);
bool whiteBalanceIsAutomatic(const Camera& camera);

// What they have found stays in force when they are switched off. Throw Failure where the camera or its
// transfer format does not take them.
void toggleAutoExposure(const Camera& camera);
void toggleAutoWhiteBalance(const Camera& camera);

}  // namespace tavra::tool
