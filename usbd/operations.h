// Operations that are made of vendor requests: memories, I2C and firmware download, in terms of one device's
// control transfers and the requests of wire_protocol.h. Stateless; any thread.
//
// Each tells in `transferred` how many bytes went over, after a failure too, and stops at the first transfer
// that fails or comes short (error 1117).
#pragma once

#include <cstdint>
#include <span>

#include "device.h"
#include "wire_protocol.h"

namespace tavra::usbd {

// Both addresses are inclusive. 87: they are the wrong way round, or above 28 bits.
ErrorCode readMemory(Device& device, wire::MemorySpace space, std::uint32_t first, std::uint32_t last,
                     void* buffer, std::uint32_t& transferred);
ErrorCode writeMemory(Device& device, wire::MemorySpace space, std::uint32_t first, std::uint32_t last,
                      const void* buffer, std::uint32_t& transferred);

// Where and how on an I2C bus: `request` is one of the two I2C requests, by the width of the register
// address.
struct I2cTarget {
    std::uint8_t request;
    std::uint8_t bus;
    std::uint8_t address;
    std::uint16_t reg;
};

// A count of 0 succeeds without a transfer.
ErrorCode readI2c(Device& device, const I2cTarget& target, std::uint16_t count, void* buffer,
                  std::uint32_t& transferred);
ErrorCode writeI2c(Device& device, const I2cTarget& target, std::uint16_t count, const void* buffer,
                   std::uint32_t& transferred);

// Holds the device's processor, writes the bytes whose mask is not 0 (all of them without a mask), and lets
// the processor run again when the device confirms that it took them all. `taken`: the device's own count.
ErrorCode downloadFirmware(Device& device, std::span<const std::uint8_t> image, const std::uint8_t* mask,
                           std::uint32_t& taken);

}  // namespace tavra::usbd
