// Restarting the machine's USB root hubs that run at high speed or faster, and no others.
//
// Windows: a property change of the device, by the device installer. Linux: the hub is deauthorised and
// authorised again in sysfs. Blocks until the system has done it; what hangs on the hubs is lost meanwhile.
// Any thread, no lock.
#pragma once

#include "base/status.h"

#if defined(__linux__)
#include <string>
#endif

namespace tavra::platform {

// Success also when there is no such hub. One that fails does not spare those behind it. 5: no right to do
// this; Linux wants root.
Status resetHighSpeedRootHubs();

#if defined(__linux__)
// The same on another folder than /sys/bus/usb/devices.
Status resetHighSpeedRootHubs(const std::string& devicesFolder);
#endif

}  // namespace tavra::platform
