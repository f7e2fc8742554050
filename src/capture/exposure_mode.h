// How an exposure is timed and how the sensor's shutter runs. Operations of the handle record; any thread.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/common_param.h"

namespace tavra {

// Modes 0 and 1: free, timed; 2: trigger width; 3: a further mode that few cameras have. 87 for any other,
// and for 3 on a camera without it.
Status setExposureMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode);
Status exposureMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode);

// Modes 0, 1 and 2, as far as the camera has them; 2 is what a camera without a choice does. 87 for any
// other.
Status setSensorShutterMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode);
Status sensorShutterMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode);

}  // namespace tavra
