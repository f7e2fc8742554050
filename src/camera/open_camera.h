// Opening and closing a camera: from the devices of the USB access library to a handle record, and back.
//
// A failed open leaves nothing behind but the reason in the global last error. Application threads; the close
// must not run beside anything else on the handle.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/usb_access.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// What came of trying one device.
struct DeviceOpening {
    TavraUsbDevice device = 0;  // 0: not to be had
    bool answered = false;      // the device is there, though perhaps somebody else has it
    std::uint32_t code = 0;     // system error of an open that found nothing
};

// Opens a device with `open`, makes sure that nobody else has it, and brings it back where its configuration
// is bad.
DeviceOpening openDevice(const platform::UsbAccess& usb, const std::function<TavraUsbDevice()>& open);

// The camera with this user ID; else, when others were seen, the one at this index (not 0) of the
// enumeration; else the first that is free. Null: none.
TAVRA_COMMON_PARAM* openByUserId(std::uint32_t userId);

// The camera at a device path. `open` opens it; `path` is kept.
TAVRA_COMMON_PARAM* openByPath(const std::u16string& path,
                               const std::function<TavraUsbDevice(const platform::UsbAccess&)>& open);

// Gives device and record back. The stream has ended, nobody else holds the record.
void closeCamera(TAVRA_COMMON_PARAM* camera);

// Cameras that can be opened; 0 also when the USB access library is missing.
std::uint32_t countCameras();

}  // namespace tavra
