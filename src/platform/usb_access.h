// The USB access library, loaded at run time: the only way to a camera.
//
// Linux: libtavrausbd.so.1 found by the loader, or the absolute path in TAVRA_USBD (ignored in set-id
// programs), symbols by name. Windows: TavraUSBD.dll, by ordinal; the operations without an ordinal by name,
// or made of ReadFile, GetOverlappedResult and DeviceIoControl when the library exports none.
#pragma once

#include "base/status.h"
#include "tavra/tavra_usbd.h"

namespace tavra::platform {

// One pointer for each operation, named as in tavra_usbd.h without the prefix. The optional ones may be null:
// readControllerMemory, writeControllerMemory, parseSecondImage, allocReadMemory, freeReadMemory.
struct UsbAccess {
    decltype(&UsbGetLastError) getLastError;
    decltype(&UsbOpenByIndex) openByIndex;
    decltype(&UsbClose) close;
    decltype(&UsbGetDriverVersion) getDriverVersion;
    decltype(&UsbGetLibraryVersion) getLibraryVersion;
    decltype(&UsbGetConfigDescriptor) getConfigDescriptor;
    decltype(&UsbGetFunctionAddress) getFunctionAddress;
    decltype(&UsbGetOpenCount) getOpenCount;
    decltype(&UsbControlTransfer) controlTransfer;
    decltype(&UsbReadI2CWord) readI2CWord;
    decltype(&UsbWriteI2CWord) writeI2CWord;
    decltype(&UsbReadI2CByte) readI2CByte;
    decltype(&UsbWriteI2CByte) writeI2CByte;
    decltype(&UsbReadControllerMemory) readControllerMemory;
    decltype(&UsbWriteControllerMemory) writeControllerMemory;
    decltype(&UsbDownloadFirmware) downloadFirmware;
    decltype(&UsbParseHexImage) parseHexImage;
    decltype(&UsbParseSecondImage) parseSecondImage;
    decltype(&UsbEndRead) endRead;
    decltype(&UsbBeginRead) beginRead;
    decltype(&UsbCanResumeRead) canResumeRead;
    decltype(&UsbCheckConfiguration) checkConfiguration;
    decltype(&UsbReadMemory) readMemory;
    decltype(&UsbWriteMemory) writeMemory;
    decltype(&UsbReadSetupMemory) readSetupMemory;
    decltype(&UsbWriteSetupMemory) writeSetupMemory;
    decltype(&UsbOpenByPathW) openByPathW;
    decltype(&UsbOpenByPathA) openByPathA;
    decltype(&UsbOpenByIndexPath) openByIndexPath;
    decltype(&UsbStartRead) startRead;
    decltype(&UsbGetReadResult) getReadResult;
    decltype(&UsbDeviceControl) deviceControl;
    decltype(&UsbAllocReadMemory) allocReadMemory;
    decltype(&UsbFreeReadMemory) freeReadMemory;
};

// The process's USB access library, loaded by the first call that succeeds and kept until the process ends.
// Fails with 126 (not found) or 127 (an operation is missing) and leaves `access` alone. Any thread.
Status loadUsbAccess(const UsbAccess*& access);

}  // namespace tavra::platform
