#include "platform/usb_access.h"

#include <dlfcn.h>

#include <cstdlib>
#include <mutex>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr const char* kLibraryName = "libtavrausbd.so.1";
constexpr const char* kPathVariable = "TAVRA_USBD";

void* openLibrary() {
    const char* path = secure_getenv(kPathVariable);
    const bool absolute = path != nullptr && path[0] == '/';
    return dlopen(absolute ? path : kLibraryName, RTLD_NOW | RTLD_LOCAL);
}

template <typename Function>
bool look(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

// False when an operation that must exist is missing.
bool lookUpAll(void* library, UsbAccess& a) {
    look(library, "UsbReadControllerMemory", a.readControllerMemory);
    look(library, "UsbWriteControllerMemory", a.writeControllerMemory);
    look(library, "UsbParseSecondImage", a.parseSecondImage);
    const bool alloc = look(library, "UsbAllocReadMemory", a.allocReadMemory);
    const bool free = look(library, "UsbFreeReadMemory", a.freeReadMemory);
    if (!alloc || !free) {  // optional as a pair
        a.allocReadMemory = nullptr;
        a.freeReadMemory = nullptr;
    }
    return look(library, "UsbGetLastError", a.getLastError) &&
           look(library, "UsbOpenByIndex", a.openByIndex) && look(library, "UsbClose", a.close) &&
           look(library, "UsbGetDriverVersion", a.getDriverVersion) &&
           look(library, "UsbGetLibraryVersion", a.getLibraryVersion) &&
           look(library, "UsbGetConfigDescriptor", a.getConfigDescriptor) &&
           look(library, "UsbGetFunctionAddress", a.getFunctionAddress) &&
           look(library, "UsbGetOpenCount", a.getOpenCount) &&
           look(library, "UsbControlTransfer", a.controlTransfer) &&
           look(library, "UsbReadI2CWord", a.readI2CWord) &&
           look(library, "UsbWriteI2CWord", a.writeI2CWord) &&
           look(library, "UsbReadI2CByte", a.readI2CByte) &&
           look(library, "UsbWriteI2CByte", a.writeI2CByte) &&
           look(library, "UsbDownloadFirmware", a.downloadFirmware) &&
           look(library, "UsbParseHexImage", a.parseHexImage) && look(library, "UsbEndRead", a.endRead) &&
           look(library, "UsbBeginRead", a.beginRead) && look(library, "UsbCanResumeRead", a.canResumeRead) &&
           look(library, "UsbCheckConfiguration", a.checkConfiguration) &&
           look(library, "UsbReadMemory", a.readMemory) && look(library, "UsbWriteMemory", a.writeMemory) &&
           look(library, "UsbReadSetupMemory", a.readSetupMemory) &&
           look(library, "UsbWriteSetupMemory", a.writeSetupMemory) &&
           look(library, "UsbOpenByPathW", a.openByPathW) && look(library, "UsbOpenByPathA", a.openByPathA) &&
           look(library, "UsbOpenByIndexPath", a.openByIndexPath) &&
           look(library, "UsbStartRead", a.startRead) && look(library, "UsbGetReadResult", a.getReadResult) &&
           look(library, "UsbDeviceControl", a.deviceControl);
}

}  // namespace

Status loadUsbAccess(const UsbAccess*& access) {
    static std::mutex mutex;
    static UsbAccess operations;
    static bool loaded = false;
    const std::lock_guard lock(mutex);
    if (!loaded) {
        void* const library = openLibrary();
        if (library == nullptr) return failWith(error::kModuleNotFound);
        UsbAccess found{};
        if (!lookUpAll(library, found)) {
            dlclose(library);
            return failWith(error::kOperationNotFound);
        }
        operations = found;
        loaded = true;
    }
    access = &operations;
    return Status();
}

}  // namespace tavra::platform
