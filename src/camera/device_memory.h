// Memories behind a camera: its non-volatile memory and what hangs on its I2C buses. Any thread; 0xE0000005
// when an access failed or was short.
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"
#include "camera/control_channel.h"

namespace tavra {

// Non-volatile memory, from an address on.
Status readMemory(const ControlChannel& control, std::uint32_t address, std::span<std::uint8_t> data);
Status writeMemory(const ControlChannel& control, std::uint32_t address, std::span<const std::uint8_t> data);

// The 1024 bytes that belong to the user. 87: an offset past them, or nothing to do. What runs past them is
// cut.
Status readUserMemory(const ControlChannel& control, std::uint16_t offset, std::span<std::uint8_t> data);
Status writeUserMemory(const ControlChannel& control, std::uint16_t offset,
                       std::span<const std::uint8_t> data);

// Registers on an I2C bus. 0xE0000020: device address 0x51 is reserved.
struct I2cPlace {
    std::uint8_t bus;
    std::uint8_t device;
    std::uint16_t reg;
};
Status readI2cByte(const ControlChannel& control, const I2cPlace& place, std::span<std::uint8_t> data);
Status writeI2cByte(const ControlChannel& control, const I2cPlace& place, std::span<const std::uint8_t> data);
Status readI2cWord(const ControlChannel& control, const I2cPlace& place, std::span<std::uint8_t> data);
Status writeI2cWord(const ControlChannel& control, const I2cPlace& place, std::span<const std::uint8_t> data);

}  // namespace tavra
