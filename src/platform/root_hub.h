// Restarting the machine's USB root hubs that run at high speed or faster, and no others.
//
// Windows: a property change of the device, by the device installer. Linux: the hub is deauthorised and
// authorised again in sysfs. One that is not authorised to begin with stays so, because the administrator
// wants that, unless it was a restart that left it off: one that failed, or was killed in between. So that
// this is known, a note of each hub lies in /run for as long as a restart has it off; /run does not outlive
// the machine's start, nor does a hub that is off. Blocks until the system has done it; what hangs on the
// hubs is lost meanwhile. Any thread, no lock.
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

// Where the hubs are, and where a note lies of each that is off for a restart.
struct RootHubFolders {
    std::string devices = "/sys/bus/usb/devices";
    std::string notes = "/run/tavra-root-hubs";  // made when it is needed
};

// The same on other folders. A hub that was switched off and does not come on again is told so some times
// more before it is given up.
Status resetHighSpeedRootHubs(const RootHubFolders& folders, const WriteAttribute& write = writeAttribute);
#endif

}  // namespace tavra::platform
