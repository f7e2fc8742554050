#include <dlfcn.h>
#include <sys/eventfd.h>

#include <climits>
#include <cstdlib>

#include "support/usb_double/double_platform.h"
#include "support/usb_double/usb_double.h"

namespace tavra::test {
namespace {

thread_local std::uint32_t threadError = 0;

}  // namespace

void setDoubleError(std::uint32_t code) {
    threadError = code;
}

void signalEvent(std::int64_t event) {
    [[maybe_unused]] const int result = eventfd_write(static_cast<int>(event), 1);
}

void clearEvent(std::int64_t event) {
    eventfd_t ignored = 0;
    [[maybe_unused]] const int result = eventfd_read(static_cast<int>(event), &ignored);
}

void makeDoubleTheUsbAccessLibrary() {
    Dl_info info{};
    char path[PATH_MAX];
    if (dladdr(reinterpret_cast<void*>(&usbDouble), &info) == 0 ||
        realpath(info.dli_fname, path) == nullptr) {
        abort();
    }
    setenv("TAVRA_USBD", path, 1);
}

}  // namespace tavra::test

extern "C" USB_DOUBLE_API uint32_t UsbGetLastError(void) {
    return tavra::test::threadError;
}
