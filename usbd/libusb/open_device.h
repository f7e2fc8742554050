// A device that this process has open: one handle of libusb, shared by all openings in the process, with what
// its descriptors say about the stream, and the claim of the interface, which keeps other processes out.
//
// Owned by the context, which makes it with the first opening and destroys it after the last. Any thread.
#pragma once

#include <libusb.h>

#include <atomic>
#include <cstdint>
#include <mutex>

#include "device.h"
#include "libusb/event_thread.h"

namespace tavra::usbd {

// Where a camera's frames come out.
struct StreamEndpoint {
    std::uint8_t interface = 0;
    std::uint8_t alternate = 0;
    std::uint8_t address = 0;  // 0: the device has no bulk endpoint to the host
    std::uint16_t maxPacket = 0;
};

// The first bulk endpoint to the host of the configuration that the device is in. Fails with 31 if the device
// is in no configuration or has sent a descriptor that cannot be read.
ErrorCode findStreamEndpoint(libusb_device* device, StreamEndpoint& found);

class OpenDevice {
  public:
    OpenDevice(libusb_device_handle* handle, EventThread& events);
    ~OpenDevice();
    OpenDevice(const OpenDevice&) = delete;
    OpenDevice& operator=(const OpenDevice&) = delete;

    libusb_device_handle* handle() const { return handle_; }
    libusb_device* device() const { return libusb_get_device(handle_); }
    EventThread& events() const { return events_; }
    const StreamEndpoint& stream() const { return stream_; }

    // 0: the interface belongs to this process; 170: to another one. Tries again when it did not before: the
    // other one may have gone.
    ErrorCode claim();
    // To be called when the claim may have been lost.
    void forgetClaim() { claimed_ = false; }
    bool claimed() const { return claimed_; }

    unsigned openings() const { return openings_; }
    void addOpening() { ++openings_; }
    bool removeOpening() { return --openings_ == 0; }  // true: this was the last

  private:
    libusb_device_handle* const handle_;
    EventThread& events_;
    StreamEndpoint stream_;
    std::mutex claimMutex_;
    std::atomic<bool> claimed_{false};
    std::atomic<unsigned> openings_{1};
};

}  // namespace tavra::usbd
