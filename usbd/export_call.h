// What every exported operation does around its one line of work: finds the device, keeps exceptions inside,
// turns the error number into the result and the thread's last error.
#pragma once

#include <cstdint>
#include <memory>
#include <new>

#include "error_numbers.h"
#include "last_error.h"
#include "registry.h"

namespace tavra::usbd {

// Runs `work`, which gives an error number. Nothing that is thrown passes.
template <typename Work>
ErrorCode guarded(Work work) noexcept {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    } catch (...) {
        return error::kDeviceNotFunctioning;
    }
}

// The exported form of a result: 1, or 0 with the last error set.
inline std::int32_t report(ErrorCode result) noexcept {
    if (result == error::kNone) return 1;
    setLastError(result);
    return 0;
}

// Runs `work` on the device behind a handle.
template <typename Work>
ErrorCode onDevice(TavraUsbDevice handle, Work work) noexcept {
    return guarded([&]() -> ErrorCode {
        const std::shared_ptr<Device> device = registry().find(handle);
        return device ? work(*device) : error::kBadHandle;
    });
}

// Stores through a pointer that the caller may have left out.
template <typename Value>
void store(Value* target, Value value) {
    if (target != nullptr) *target = value;
}

}  // namespace tavra::usbd
