// The process's use of libusb: its context, the event thread, and the devices that are open in this process.
//
// Made with the first look at the devices and shared by the source and every open device, so that it goes
// when nobody uses it any more. Any thread.
#pragma once

#include <libusb.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

#include "libusb/event_thread.h"

namespace tavra::usbd {

// Owns one reference to a device of libusb.
struct UnrefDevice {
    void operator()(libusb_device* device) const { libusb_unref_device(device); }
};
using DeviceRef = std::unique_ptr<libusb_device, UnrefDevice>;

// Where a device is plugged: the bus and the ports from the root hub on.
struct PortPath {
    std::uint8_t bus = 0;
    std::vector<std::uint8_t> ports;

    static PortPath of(libusb_device* device);
    // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison with 0 for a pointer.
    friend auto operator<=>(const PortPath&, const PortPath&) = default;
};

class LibusbContext;
class OpenDevice;

// Owns one opening of a device, and keeps the context alive.
struct CloseDevice {
    std::shared_ptr<LibusbContext> context;
    void operator()(OpenDevice* device) const;
};
using Opening = std::unique_ptr<OpenDevice, CloseDevice>;

class LibusbContext : public std::enable_shared_from_this<LibusbContext> {
  public:
    // Null with the error number when libusb cannot be started.
    static std::shared_ptr<LibusbContext> create(ErrorCode& error);
    ~LibusbContext();
    LibusbContext(const LibusbContext&) = delete;
    LibusbContext& operator=(const LibusbContext&) = delete;

    libusb_context* get() const { return context_; }
    EventThread& events() { return events_; }

    // The cameras that are plugged now, by bus and ports.
    std::vector<DeviceRef> cameras() const;

    // The camera at `where` that is not `old`, waited for until `deadline`; null if none has come. The event
    // thread must run.
    DeviceRef waitForCamera(const PortPath& where, const libusb_device* old,
                            std::chrono::steady_clock::time_point deadline);

    // One opening more of the device; all openings in this process share one handle of libusb. Null with the
    // error.
    Opening open(libusb_device* device, ErrorCode& error);

  private:
    friend struct CloseDevice;

    explicit LibusbContext(libusb_context* context);
    void close(OpenDevice* device);
    static int LIBUSB_CALL arrived(libusb_context*, libusb_device*, libusb_hotplug_event, void* self);

    libusb_context* const context_;
    EventThread events_;

    std::mutex arrivalMutex_;
    std::condition_variable arrival_;
    std::uint64_t arrivals_ = 0;

    std::mutex openMutex_;  // open_, and opening and closing of handles
    std::list<OpenDevice> open_;
};

}  // namespace tavra::usbd
