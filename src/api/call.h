// What every exported function that takes a camera handle does around its one operation.
#pragma once

#include <new>

#include "camera/common_param.h"
#include "camera/global_last_error.h"

namespace tavra::api {

// The record behind a handle, or null: a null handle leaves 0xE0000003 in the global last error, a closed
// record has it in its own. A pointer that is neither is the caller's fault.
inline TAVRA_COMMON_PARAM* validated(TavraHandle handle) {
    auto* const camera = static_cast<TAVRA_COMMON_PARAM*>(handle);
    if (camera == nullptr) {
        globalLastError = error::kInvalidHandle;
        return nullptr;
    }
    if (!camera->deviceOpen()) {
        camera->lastError = error::kInvalidHandle;
        return nullptr;
    }
    return camera;
}

// Runs `operation(record)`, which gives a Status: 1, or 0 with the failure kept as the handle's last error.
// Success never clears it. No exception passes.
template <typename Operation>
TavraBool call(TavraHandle handle, Operation operation) {
    TAVRA_COMMON_PARAM* const camera = validated(handle);
    if (camera == nullptr) return 0;
    Status status;
    try {
        status = operation(*camera);
    } catch (const std::bad_alloc&) {
        status = Status(error::kOutOfMemory);
    }
    camera->noteFailure(status);
    return status.ok() ? 1 : 0;
}

}  // namespace tavra::api
