// A USB access library for the tests of its loading: every numbered operation gives its own number as its
// result, so that a wrong entry of the table shows. Linked with one of the .def files beside it.
#include <windows.h>

#include "tavra/tavra_usbd.h"

extern "C" {
TavraUsbDevice UsbOpenByIndex(uint32_t) {
    return 1;
}
int32_t UsbClose(TavraUsbDevice) {
    return 2;
}
int32_t UsbGetDriverVersion(TavraUsbDevice, uint32_t*, uint32_t*, uint32_t*, uint32_t*) {
    return 3;
}
int32_t UsbGetLibraryVersion(uint32_t*, uint32_t*, uint32_t*, uint32_t*) {
    return 4;
}
int32_t UsbGetConfigDescriptor(TavraUsbDevice, void*, uint32_t, uint32_t*) {
    return 9;
}
int32_t UsbGetFunctionAddress(TavraUsbDevice, uint32_t*) {
    return 10;
}
int32_t UsbGetOpenCount(TavraUsbDevice, uint32_t*) {
    return 11;
}
int32_t UsbControlTransfer(TavraUsbDevice, uint8_t, uint8_t, uint16_t, uint16_t, uint16_t, void*, uint32_t*) {
    return 13;
}
int32_t UsbReadI2CWord(TavraUsbDevice, uint8_t, uint8_t, uint16_t, uint16_t, void*, uint32_t*) {
    return 15;
}
int32_t UsbWriteI2CWord(TavraUsbDevice, uint8_t, uint8_t, uint16_t, uint16_t, const void*, uint32_t*) {
    return 16;
}
int32_t UsbReadI2CByte(TavraUsbDevice, uint8_t, uint8_t, uint8_t, uint8_t, void*, uint32_t*) {
    return 17;
}
int32_t UsbWriteI2CByte(TavraUsbDevice, uint8_t, uint8_t, uint8_t, uint8_t, const void*, uint32_t*) {
    return 18;
}
int32_t UsbReadControllerMemory(TavraUsbDevice, uint32_t, uint32_t, void*, uint32_t*) {
    return 19;
}
int32_t UsbWriteControllerMemory(TavraUsbDevice, uint32_t, uint32_t, const void*, uint32_t*) {
    return 20;
}
int32_t UsbDownloadFirmware(TavraUsbDevice, const uint8_t*, const uint8_t*, uint32_t, uint32_t*) {
    return 21;
}
int32_t UsbParseHexImage(const char*, uint32_t, uint8_t*, uint8_t*, uint32_t, uint32_t*) {
    return 26;
}
int32_t UsbParseSecondImage(const uint8_t*, const uint8_t*, uint32_t, uint8_t*, uint32_t, uint32_t*) {
    return 27;
}
int32_t UsbEndRead(TavraUsbDevice) {
    return 34;
}
int32_t UsbBeginRead(TavraUsbDevice) {
    return 35;
}
int32_t UsbCanResumeRead(TavraUsbDevice) {
    return 36;
}
int32_t UsbCheckConfiguration(TavraUsbDevice, uint32_t*, uint32_t*) {
    return 42;
}
int32_t UsbReadMemory(TavraUsbDevice, uint32_t, uint32_t, void*, uint32_t*) {
    return 43;
}
int32_t UsbWriteMemory(TavraUsbDevice, uint32_t, uint32_t, const void*, uint32_t*) {
    return 44;
}
int32_t UsbReadSetupMemory(TavraUsbDevice, uint32_t, uint32_t, void*, uint32_t*) {
    return 45;
}
int32_t UsbWriteSetupMemory(TavraUsbDevice, uint32_t, uint32_t, const void*, uint32_t*) {
    return 46;
}
TavraUsbDevice UsbOpenByPathW(const TavraWChar*) {
    return 47;
}
TavraUsbDevice UsbOpenByPathA(const char*) {
    return 48;
}
TavraUsbDevice UsbOpenByIndexPath(uint32_t, TavraWChar*, uint32_t*) {
    return 49;
}

// The operations without a number; exported by names.def alone.
uint32_t UsbGetLastError(void) {
    return 1001;
}
int32_t UsbStartRead(TavraUsbDevice, void*, uint32_t, TavraUsbRead*) {
    return 1002;
}
int32_t UsbGetReadResult(TavraUsbDevice, TavraUsbRead*, uint32_t*, int32_t) {
    return 1003;
}
int32_t UsbDeviceControl(TavraUsbDevice, uint32_t) {
    return 1004;
}
void* UsbAllocReadMemory(TavraUsbDevice, size_t) {
    return reinterpret_cast<void*>(uintptr_t{1005});
}
void UsbFreeReadMemory(TavraUsbDevice, void*, size_t) {}
}
