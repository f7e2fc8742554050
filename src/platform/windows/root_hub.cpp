#include "platform/root_hub.h"

#include "platform/device_setup.h"
#include "platform/enum_interface.h"

namespace tavra::platform {

Status resetHighSpeedRootHubs() {
    return CEnumInterfaceResetHighSpeedHC(systemDeviceSetup()).run();
}

}  // namespace tavra::platform
