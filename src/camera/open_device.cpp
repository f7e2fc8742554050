#include "camera/open_camera.h"

namespace tavra {
namespace {

// First driver that brings a camera back after a failed configuration check.
constexpr std::uint32_t kDriverMajorMinor = 0x30000;
constexpr std::uint32_t kDriverBuild = 5;

constexpr std::uint32_t kFirstRecovery = 0x222140;
constexpr std::uint32_t kFurtherRecovery = 0x222180;

bool driverCanRecover(const platform::UsbAccess& usb, TavraUsbDevice device) {
    std::uint32_t majorMinor = 0;
    std::uint32_t build = 0;
    std::uint32_t ignored[2] = {};
    if (usb.getDriverVersion(device, &majorMinor, &build, &ignored[0], &ignored[1]) == 0) return false;
    return majorMinor > kDriverMajorMinor || (majorMinor == kDriverMajorMinor && build >= kDriverBuild);
}

bool isConfigured(const platform::UsbAccess& usb, TavraUsbDevice device) {
    std::uint32_t ignored[2] = {};
    return usb.checkConfiguration(device, &ignored[0], &ignored[1]) != 0;
}

bool isInUse(const platform::UsbAccess& usb, TavraUsbDevice device) {
    std::uint32_t count = 0;
    return usb.getOpenCount(device, &count) != 0 && count > 1;
}

}  // namespace

DeviceOpening openDevice(const platform::UsbAccess& usb, const std::function<TavraUsbDevice()>& open) {
    // By design: no limit on attempts. The control succeeds only when the driver has brought the camera back.
    for (bool first = true;; first = false) {
        const TavraUsbDevice device = open();
        if (device == 0) return {0, false, usb.getLastError()};
        if (isInUse(usb, device)) {
            usb.close(device);
            return {0, true, 0};
        }
        if (isConfigured(usb, device)) return {device, true, 0};
        const bool recovered = (!first || driverCanRecover(usb, device)) &&
                               usb.deviceControl(device, first ? kFirstRecovery : kFurtherRecovery) != 0;
        usb.close(device);
        if (!recovered) return {};
    }
}

}  // namespace tavra
