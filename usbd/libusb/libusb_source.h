// Real cameras: every device of the cameras' vendor on the USB buses of this computer.
//
// Order: by bus and port, so that it stays while nothing is plugged. Paths read "usb:1-2.3/2e6b:0211": bus 1,
// port 2 of its root hub, port 3 of the hub there, then vendor and product. The place survives replugging and
// restarts of the camera, unlike the device number; the product keeps a path from opening another model that
// was plugged into the same port since. Leaving it out ("usb:1-2.3") opens whatever camera is there.
#pragma once

#include <memory>

#include "device.h"

namespace tavra::usbd {

// One of them in a process; null in a build without libusb. Nothing of libusb is started before the first
// enumeration.
std::unique_ptr<DeviceSource> makeLibusbSource();

}  // namespace tavra::usbd
