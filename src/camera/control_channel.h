// Control requests to one open camera: the only way in which the library asks a camera for anything but
// frames.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

#include "base/status.h"
#include "platform/usb_access.h"

namespace tavra {

// Status words: small settings of the camera by address. Implemented by ControlChannel; controllers take
// this.
class IStatusWords {
  public:
    // Reads or writes `words.size()` 16-bit words, little endian on the wire. 0xE0000021 on the oldest types,
    // 0xE0000005 when the transfer failed.
    virtual Status readStatus(std::uint16_t index, std::uint16_t address, std::span<std::uint16_t> words) = 0;
    virtual Status writeStatus(std::uint16_t index, std::uint16_t address,
                               std::span<const std::uint16_t> words) = 0;

  protected:
    ~IStatusWords() = default;
};

// Owned by the handle record. Requests are not serialised and never retried. Any thread.
class ControlChannel final : public IStatusWords {
  public:
    // No device: every request fails with 0xE0000005.
    void attach(const platform::UsbAccess& access, TavraUsbDevice device);
    void detach();

    const platform::UsbAccess* access() const { return access_; }
    TavraUsbDevice device() const { return device_; }

    // What the requests need to know of the camera, set once it is identified.
    void setLegacy(bool legacy) { legacy_ = legacy; }
    void setHasRegisters(bool hasRegisters) { hasRegisters_ = hasRegisters; }

    // One vendor transfer to the host; `received` tells how much came. 0xE0000005 when it failed.
    Status in(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::span<std::uint8_t> data,
              std::uint32_t& received);
    // The same, and anything but the whole of `data` is a failure.
    Status inExactly(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                     std::span<std::uint8_t> data);
    // One vendor transfer to the device; anything but the whole of `data` sent is a failure.
    Status out(std::uint8_t request, std::uint16_t value, std::uint16_t index,
               std::span<const std::uint8_t> data);

    Status readStatus(std::uint16_t index, std::uint16_t address, std::span<std::uint16_t> words) override;
    Status writeStatus(std::uint16_t index, std::uint16_t address,
                       std::span<const std::uint16_t> words) override;

    // The same on the bytes of the wire, for buffers of the application. 87: more than a transfer can hold.
    Status readStatusBytes(std::uint16_t index, std::uint16_t address, std::span<std::uint8_t> bytes);
    Status writeStatusBytes(std::uint16_t index, std::uint16_t address, std::span<const std::uint8_t> bytes);

    // Single words and 32-bit values at index 0.
    Status readStatusWord(std::uint16_t address, std::uint16_t& value);
    Status writeStatusWord(std::uint16_t address, std::uint16_t value);
    Status readStatusLong(std::uint16_t address, std::uint32_t& value);
    Status writeStatusLong(std::uint16_t address, std::uint32_t value);

    // Registers, cut in pieces of at most 64 bytes. 0xE0000021 when the camera has none, 87 for a size that
    // is not a multiple of 4.
    Status readRegisters(std::uint8_t selector, std::uint32_t address, std::span<std::uint8_t> data);
    Status writeRegisters(std::uint8_t selector, std::uint32_t address, std::span<const std::uint8_t> data);

    // Makes a geometry or timing value that was written take effect (status 80, value 1).
    Status applyChange() { return writeStatusWord(kCommandWord, 1); }
    // The camera drops its buffered data (request 32). 0xE0000021 on the oldest types.
    Status clearBuffer();

    static constexpr std::uint16_t kCommandWord = 80;

  private:
    Status transfer(std::uint8_t requestType, std::uint8_t request, std::uint16_t value, std::uint16_t index,
                    void* data, std::size_t size, std::uint32_t& transferred);
    Status checkRegisterAccess(std::size_t size) const;

    const platform::UsbAccess* access_ = nullptr;
    TavraUsbDevice device_ = 0;
    bool legacy_ = false;
    bool hasRegisters_ = false;
};

}  // namespace tavra
