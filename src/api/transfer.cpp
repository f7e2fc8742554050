// Exports that start and end the stream.
#include "capture/transfer.h"

#include "api/call.h"
#include "tavra/tavra_api.h"

using tavra::TAVRA_COMMON_PARAM;

TavraBool Tavra_StartTransfer(TavraHandle handle) {
    return tavra::api::call(handle,
                            [](TAVRA_COMMON_PARAM& camera) { return tavra::startTransfer(camera, true); });
}

TavraBool Tavra_StopTransfer(TavraHandle handle) {
    return tavra::api::call(handle, [](TAVRA_COMMON_PARAM& camera) { return tavra::stopTransfer(camera); });
}

TavraBool Tavra_ClearBuffer(TavraHandle handle) {
    return tavra::api::call(handle, [](TAVRA_COMMON_PARAM& camera) { return camera.control.clearBuffer(); });
}
