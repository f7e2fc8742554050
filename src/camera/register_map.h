// Registers of a camera by address, and the table of register pages built on them.
#pragma once

#include <array>
#include <cstdint>

#include "base/status.h"

namespace tavra {

// Reads and writes of registers. Implemented by the handle record; the slot order is part of the contract.
// Both give 0 or an error code. Any thread.
class IHalvernRegMap {
  public:
    virtual std::uint32_t Read(std::uint32_t address, void* buffer, std::uint16_t size) = 0;
    virtual std::uint32_t Write(std::uint32_t address, const void* buffer, std::uint16_t size) = 0;

  protected:
    ~IHalvernRegMap() = default;
};

// Numbers of the register pages in use.
namespace page {
inline constexpr std::uint32_t kPriority = 1;
inline constexpr std::uint32_t kAcquisition = 2;  // V-blank, exposure mode, triggers
inline constexpr std::uint32_t kAnalog = 3;
inline constexpr std::uint32_t kSensor = 17;
inline constexpr std::uint32_t kDefectPixels = 18;
inline constexpr std::uint32_t kDevice = 19;
inline constexpr std::uint32_t kLimits = 21;
inline constexpr std::uint32_t kRegions = 25;
inline constexpr std::uint32_t kHdr = 27;
}  // namespace page

// The 28 register pages of a camera. Owned by the handle record, null there on cameras that have none.
// Read-only after load; any thread.
class CRegisterPageMap {
  public:
    explicit CRegisterPageMap(IHalvernRegMap& registers) : registers_(registers) {}

    // Reads the descriptors and the size of each page. Fails when the camera has no register pages.
    Status load();

    // One register, at a byte offset in its page. 87: no such page, or an offset that is not 0 and not below
    // the page's size.
    Status read(std::uint32_t page, std::uint32_t offset, std::uint32_t& value) const;
    Status write(std::uint32_t page, std::uint32_t offset, std::uint32_t value) const;

    // Register address of the page's start; 87: no such page.
    Status pageBase(std::uint32_t page, std::uint32_t& base) const;

  private:
    static constexpr std::uint32_t kPages = 28;

    Status locate(std::uint32_t page, std::uint32_t offset, std::uint32_t& address) const;

    IHalvernRegMap& registers_;
    std::array<std::uint32_t, kPages> descriptors_{};
    std::array<std::uint32_t, kPages> sizes_{};
};

}  // namespace tavra
