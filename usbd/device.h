// What the USB access library knows of a device, whatever it is made of: the seam between the exported
// operations and the two kinds of device, libusb/ (real ones) and virtual/ (cameras that exist only in
// memory).
//
// Results are Windows error numbers (0: success); the exported operation turns them into its result and the
// thread's last error. Any operation may be called from any thread; control transfers run beside reads in
// flight.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "tavra/tavra_usbd.h"

namespace tavra::usbd {

using ErrorCode = std::uint32_t;

// The eight bytes of a control request, without its data.
struct ControlSetup {
    std::uint8_t requestType;  // bit 7 set: device to host
    std::uint8_t request;
    std::uint16_t value;
    std::uint16_t index;

    bool toHost() const { return (requestType & 0x80) != 0; }
};

// One opening of a device. Owned by the table of handles; destroyed by UsbClose, which ends reads still in
// flight.
class Device {
  public:
    virtual ~Device() = default;

    // The whole configuration descriptor, as the device sent it.
    virtual ErrorCode configDescriptor(std::span<std::uint8_t> buffer, std::uint32_t& length) = 0;
    virtual std::uint32_t functionAddress() const = 0;
    // Openings of the device that are known of, this one included; more than 1 means that somebody else has
    // it.
    virtual std::uint32_t openCount() const = 0;
    // 0: configured and usable.
    virtual ErrorCode checkConfiguration(std::uint32_t& word0, std::uint32_t& word1) = 0;
    // Version words of the driver: major in the high half and minor in the low half of the first, then the
    // build.
    virtual void driverVersion(std::span<std::uint32_t, 4> words) const = 0;

    // One control transfer. `data` is filled for requests to the host and sent for the others.
    virtual ErrorCode controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                                      std::uint32_t& transferred) = 0;

    // The bulk stream. beginRead may give 31 while the device settles; endRead ends every read in flight
    // before it returns. startRead gives 997 for a read that is in flight and any other number for one that
    // is not. readResult gives 996 for a read that is not complete, when `wait` is false.
    virtual ErrorCode beginRead() = 0;
    virtual ErrorCode endRead() = 0;
    virtual bool canResumeRead() const = 0;
    virtual ErrorCode startRead(void* buffer, std::uint32_t size, TavraUsbRead& read) = 0;
    virtual ErrorCode readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) = 0;

    // Memory that the kernel fills without a copy; null where there is none.
    virtual void* allocReadMemory(std::size_t size) = 0;
    virtual void freeReadMemory(void* memory, std::size_t size) = 0;

    // Codes 0x222140 and 0x222180: bring a camera that failed its configuration check back.
    virtual ErrorCode deviceControl(std::uint32_t code) = 0;
};

// A kind of device that can be enumerated. One of each kind lives as long as the process.
class DeviceSource {
  public:
    virtual ~DeviceSource() = default;

    // Looks again at what is there: the number of devices, in an order that stays while nothing is plugged.
    virtual std::uint32_t enumerate() = 0;
    // Path of the device at an index of the last enumeration, in UTF-8, at most 1023 characters.
    virtual std::string path(std::uint32_t index) = 0;
    // Opens by index or by path; null with the error number when there is no such device or it cannot be
    // opened.
    virtual std::unique_ptr<Device> open(std::uint32_t index, ErrorCode& error) = 0;
    virtual std::unique_ptr<Device> open(const std::string& path, ErrorCode& error) = 0;
};

}  // namespace tavra::usbd
