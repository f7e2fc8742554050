#include "platform/usb_access.h"

#include <mutex>

#include "platform/last_error.h"
#include "platform/usb_access_library.h"

namespace tavra::platform {
namespace {

// Whoever gives memory takes it back: half of the pair is none.
void dropHalfOfMemory(UsbAccess& operations) {
    if (operations.allocReadMemory != nullptr && operations.freeReadMemory != nullptr) return;
    operations.allocReadMemory = nullptr;
    operations.freeReadMemory = nullptr;
}

}  // namespace

Status loadUsbAccess(const UsbAccess*& access) {
    static std::mutex mutex;
    static UsbAccess operations;
    static bool loaded = false;
    const std::lock_guard lock(mutex);
    if (!loaded) {
        void* const library = openUsbLibrary();
        if (library == nullptr) return failWith(error::kModuleNotFound);
        UsbAccess found{};
        if (!lookUpUsbOperations(library, found)) {
            closeUsbLibrary(library);
            return failWith(error::kOperationNotFound);
        }
        dropHalfOfMemory(found);
        operations = found;
        loaded = true;
    }
    access = &operations;
    return Status();
}

}  // namespace tavra::platform
