// One opening of a real camera: the seam of device.h over libusb.
//
// Errors are those of error_map.h. Made by the source, owned by the table of handles; any thread, but the
// close comes when no other call is under way.
#pragma once

#include <memory>

#include "device.h"
#include "libusb/libusb_context.h"
#include "libusb/open_device.h"
#include "libusb/read_queue.h"

namespace tavra::usbd {

class LibusbDevice final : public Device {
  public:
    explicit LibusbDevice(Opening opening);

    ErrorCode configDescriptor(std::span<std::uint8_t> buffer, std::uint32_t& length) override;
    std::uint32_t functionAddress() const override;
    // Openings in this process, and one more if another process has the interface.
    std::uint32_t openCount() const override;
    // word0: the configuration's number. word1: the stream endpoint's address in the low byte (0: none) and
    // its packet size in the high half. 31: in no configuration, or its descriptor cannot be read.
    ErrorCode checkConfiguration(std::uint32_t& word0, std::uint32_t& word1) override;
    // The driver is the kernel's: its release as major and minor, then the third number; then libusb's
    // release.
    void driverVersion(std::span<std::uint32_t, 4> words) const override;

    ErrorCode controlTransfer(const ControlSetup& setup, std::span<std::uint8_t> data,
                              std::uint32_t& transferred) override;

    // Clears a halt of the endpoint if there is one. 170: another process has the interface. 31: the device
    // does not answer yet; 2: it has no stream.
    ErrorCode beginRead() override;
    ErrorCode endRead() override;
    // True: after an error 31 the reads of before are ended, beginRead clears the halt, and the stream goes
    // on.
    bool canResumeRead() const override { return true; }
    ErrorCode startRead(void* buffer, std::uint32_t size, TavraUsbRead& read) override;
    ErrorCode readResult(TavraUsbRead& read, std::uint32_t& transferred, bool wait) override;

    void* allocReadMemory(std::size_t size) override;
    void freeReadMemory(void* memory, std::size_t size) override;

    // 0x222140 resets the port, which puts the device back into its configuration; a device that comes back
    // as a new one is waited for. 0x222180 first selects the device's first configuration, and fails with 31
    // if the device is not in one afterwards, so that nobody repeats it for ever. 50: any other code.
    ErrorCode deviceControl(std::uint32_t code) override;

  private:
    ErrorCode endpointHalted(bool& halted);
    ErrorCode resetAndFindAgain(DeviceRef& device);

    const Opening opening_;
    LibusbContext& context_;
    OpenDevice& device_;
    LibusbReadQueue reads_;  // the last: its reads end before the device is closed
};

}  // namespace tavra::usbd
