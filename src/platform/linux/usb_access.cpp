#include "platform/usb_access_library.h"

#include <dlfcn.h>

#include <cstdlib>

namespace tavra::platform {
namespace {

constexpr const char* kLibraryName = "libtavrausbd.so.1";
constexpr const char* kPathVariable = "TAVRA_USBD";

template <typename Function>
bool look(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

}  // namespace

void* openUsbLibrary() {
    const char* path = secure_getenv(kPathVariable);
    const bool absolute = path != nullptr && path[0] == '/';
    return dlopen(absolute ? path : kLibraryName, RTLD_NOW | RTLD_LOCAL);
}

void closeUsbLibrary(void* library) {
    dlclose(library);
}

bool lookUpUsbOperations(void* library, UsbAccess& a) {
    look(library, "UsbReadControllerMemory", a.readControllerMemory);
    look(library, "UsbWriteControllerMemory", a.writeControllerMemory);
    look(library, "UsbParseSecondImage", a.parseSecondImage);
    look(library, "UsbAllocReadMemory", a.allocReadMemory);
    look(library, "UsbFreeReadMemory", a.freeReadMemory);
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

}  // namespace tavra::platform
