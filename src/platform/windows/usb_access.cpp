#include "platform/usb_access_library.h"

#include <windows.h>

#include <cstddef>

#include "platform/event.h"

namespace tavra::platform {
namespace {

constexpr const wchar_t* kLibraryName = L"TavraUSBD.dll";

// A closed library exports the numbered operations alone: its device handle is then a file handle, and the
// operations below stand in for those without a number.

HANDLE fileOf(TavraUsbDevice device) {
    return reinterpret_cast<HANDLE>(device);
}

static_assert(sizeof(TavraUsbRead) == sizeof(OVERLAPPED));
static_assert(offsetof(TavraUsbRead, event) == offsetof(OVERLAPPED, hEvent));

OVERLAPPED* overlapped(TavraUsbRead* read) {
    return reinterpret_cast<OVERLAPPED*>(read);
}

std::uint32_t systemGetLastError() {
    return GetLastError();
}

std::int32_t fileStartRead(TavraUsbDevice device, void* buffer, std::uint32_t size, TavraUsbRead* read) {
    // A read that completed at once is told like one in flight: its event is set already.
    if (ReadFile(fileOf(device), buffer, size, nullptr, overlapped(read))) SetLastError(ERROR_IO_PENDING);
    return 0;
}

std::int32_t fileGetReadResult(TavraUsbDevice device, TavraUsbRead* read, std::uint32_t* transferred,
                               std::int32_t wait) {
    DWORD bytes = 0;
    const BOOL done = GetOverlappedResult(fileOf(device), overlapped(read), &bytes, wait != 0);
    *transferred = bytes;
    return done;
}

std::int32_t fileDeviceControl(TavraUsbDevice device, std::uint32_t code) {
    const Event completed(Event::Reset::Manual);
    if (!completed.valid()) return 0;
    OVERLAPPED record{};
    record.hEvent = reinterpret_cast<HANDLE>(completed.native());
    DWORD bytes = 0;
    const BOOL started = DeviceIoControl(fileOf(device), code, nullptr, 0, nullptr, 0, nullptr, &record);
    if (!started && GetLastError() != ERROR_IO_PENDING) return 0;
    return GetOverlappedResult(fileOf(device), &record, &bytes, TRUE);
}

// `key` is a name, or an ordinal in the place of one.
template <typename Function>
bool look(HMODULE library, const char* key, Function& function) {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, key)));
    return function != nullptr;
}

template <typename Function>
bool look(HMODULE library, WORD ordinal, Function& function) {
    return look(library, reinterpret_cast<const char*>(static_cast<ULONG_PTR>(ordinal)), function);
}

void lookUpOptional(HMODULE library, UsbAccess& a) {
    look(library, 19, a.readControllerMemory);
    look(library, 20, a.writeControllerMemory);
    look(library, 27, a.parseSecondImage);
    look(library, "UsbAllocReadMemory", a.allocReadMemory);
    look(library, "UsbFreeReadMemory", a.freeReadMemory);
}

void lookUpUnnumbered(HMODULE library, UsbAccess& a) {
    if (!look(library, "UsbGetLastError", a.getLastError)) a.getLastError = &systemGetLastError;
    if (!look(library, "UsbDeviceControl", a.deviceControl)) a.deviceControl = &fileDeviceControl;
    const bool start = look(library, "UsbStartRead", a.startRead);
    const bool result = look(library, "UsbGetReadResult", a.getReadResult);
    if (!start || !result) {  // who starts a read owns its record, so only the same side can tell the result
        a.startRead = &fileStartRead;
        a.getReadResult = &fileGetReadResult;
    }
}

}  // namespace

void* openUsbLibrary() {
    return LoadLibraryW(kLibraryName);
}

void closeUsbLibrary(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

bool lookUpUsbOperations(void* opened, UsbAccess& a) {
    const auto library = static_cast<HMODULE>(opened);
    lookUpOptional(library, a);
    lookUpUnnumbered(library, a);
    return look(library, 1, a.openByIndex) && look(library, 2, a.close) &&
           look(library, 3, a.getDriverVersion) && look(library, 4, a.getLibraryVersion) &&
           look(library, 9, a.getConfigDescriptor) && look(library, 10, a.getFunctionAddress) &&
           look(library, 11, a.getOpenCount) && look(library, 13, a.controlTransfer) &&
           look(library, 15, a.readI2CWord) && look(library, 16, a.writeI2CWord) &&
           look(library, 17, a.readI2CByte) && look(library, 18, a.writeI2CByte) &&
           look(library, 21, a.downloadFirmware) && look(library, 26, a.parseHexImage) &&
           look(library, 34, a.endRead) && look(library, 35, a.beginRead) &&
           look(library, 36, a.canResumeRead) && look(library, 42, a.checkConfiguration) &&
           look(library, 43, a.readMemory) && look(library, 44, a.writeMemory) &&
           look(library, 45, a.readSetupMemory) && look(library, 46, a.writeSetupMemory) &&
           look(library, 47, a.openByPathW) && look(library, 48, a.openByPathA) &&
           look(library, 49, a.openByIndexPath);
}

}  // namespace tavra::platform
