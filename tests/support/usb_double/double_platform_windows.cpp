#include <windows.h>

#include "support/usb_double/double_platform.h"
#include "support/usb_double/usb_double.h"

namespace tavra::test {

void setDoubleError(std::uint32_t code) {
    SetLastError(code);
}

void signalEvent(std::int64_t event) {
    if (event != 0) SetEvent(reinterpret_cast<HANDLE>(event));
}

void clearEvent(std::int64_t event) {
    if (event != 0) ResetEvent(reinterpret_cast<HANDLE>(event));
}

// The program has this library loaded under the name by which libtavra asks for it.
void makeDoubleTheUsbAccessLibrary() {}

}  // namespace tavra::test

extern "C" USB_DOUBLE_API uint32_t UsbGetLastError(void) {
    return GetLastError();
}
