// Virtual cameras as devices: those that TAVRA_VIRTUAL_CAMERAS names, looked up at every enumeration.
#pragma once

#include <memory>

#include "device.h"

namespace tavra::usbd {

// An item that cannot be understood is left out and told on the standard error stream, once for each text of
// the variable.
std::unique_ptr<DeviceSource> makeVirtualSource();

}  // namespace tavra::usbd
