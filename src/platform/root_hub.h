// Restarting the machine's USB root hubs that run at high speed or faster, and no others.
//
// Windows: a property change of the device, by the device installer. Linux: the hub is deauthorised and
// authorised again in sysfs; one that is not authorised to begin with stays so. Blocks until the system has
// done it; what hangs on the hubs is lost meanwhile. Any thread, no lock.
#pragma once

#include "base/status.h"

#if defined(__linux__)
#include <functional>
#include <string>
#endif

namespace tavra::platform {

// Success also when there is no such hub. One that fails does not spare those behind it. 5: no right to do
// this; Linux wants root.
Status resetHighSpeedRootHubs();

#if defined(__linux__)
// Writes one digit to an attribute's file.
using WriteAttribute = std::function<Status(const std::string& name, char digit)>;
Status writeAttribute(const std::string& name, char digit);

// The same on another folder than /sys/bus/usb/devices. A hub that was switched off and does not come on
// again is told so some times more before it is given up.
Status resetHighSpeedRootHubs(const std::string& devicesFolder, const WriteAttribute& write = writeAttribute);
#endif

}  // namespace tavra::platform
