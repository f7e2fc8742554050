// One control transfer, waited for: sent by the calling thread, collected by the event thread.
//
// libusb's own blocking call would let the calling thread handle everybody's events meanwhile; this one
// leaves them to the event thread, which must run. Any thread; several at once are one after the other on the
// wire.
#pragma once

#include <libusb.h>

#include <cstdint>
#include <span>

#include "device.h"

namespace tavra::usbd {

// How long a device may take for an answer. Writes to non-volatile memory take their time.
inline constexpr unsigned kControlTimeoutMs = 5000;

// `data` is filled (up to `transferred`) for requests to the host and sent for the others. More than 4096
// bytes of data are refused with 87: the kernel takes one page.
ErrorCode transferControl(libusb_device_handle* handle, const ControlSetup& setup,
                          std::span<std::uint8_t> data, std::uint32_t& transferred,
                          unsigned timeoutMs = kControlTimeoutMs);

}  // namespace tavra::usbd
