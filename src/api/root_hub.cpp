// Restarting the USB root hubs: the one export about the machine and not about a camera.
#include "platform/root_hub.h"

#include <new>

#include "camera/global_last_error.h"
#include "tavra/tavra_api.h"

using namespace tavra;

std::uint32_t Tavra_ResetRootHub(void) {
    Status status;
    try {
        status = platform::resetHighSpeedRootHubs();
    } catch (const std::bad_alloc&) {
        status = Status(error::kOutOfMemory);
    }
    if (!status.ok()) globalLastError = status.code();
    return status.ok() ? 1 : 0;
}
