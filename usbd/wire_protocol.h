// The vendor requests of this project: what travels over control endpoint 0 for the operations that are not
// plain control transfers of the application (memories, I2C, firmware download). docs/wire-protocol.md tells
// the same in prose. Both sides speak it: operations.h asks, the virtual cameras answer.
//
// All requests are vendor requests to the device (request type 0xC0 to the host, 0x40 to the device); numbers
// are little endian; at most kMaxChunk bytes travel in one transfer, longer operations are cut.
#pragma once

#include <cstdint>

namespace tavra::usbd::wire {

inline constexpr std::uint8_t kToHost = 0xC0;
inline constexpr std::uint8_t kToDevice = 0x40;

// Most bytes of data in one control transfer (one page: what usbfs takes).
inline constexpr std::uint32_t kMaxChunk = 4096;

// Memory: value is the address's bits 0 to 15, index its bits 16 to 27 with the space in bits 12 to 15.
inline constexpr std::uint8_t kMemory = 0xE0;
enum class MemorySpace : std::uint16_t {
    NonVolatile = 0,  // serial record 0 to 255, user record 256 to 511, user memory 512 to 1535
    Setup = 1,
    Controller = 2,
};
constexpr std::uint16_t memoryValue(std::uint32_t address) {
    return static_cast<std::uint16_t>(address);
}
constexpr std::uint16_t memoryIndex(MemorySpace space, std::uint32_t address) {
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(space) << 12 | (address >> 16 & 0x0FFF));
}

// I2C: value is the register, index the bus in the high byte and the 7-bit device address in the low byte.
// The data are the bytes of the bus transfer; a device that does not answer stalls the request.
inline constexpr std::uint8_t kI2c16BitRegister = 0xE1;
inline constexpr std::uint8_t kI2c8BitRegister = 0xE2;
constexpr std::uint16_t i2cIndex(std::uint8_t bus, std::uint8_t device) {
    return static_cast<std::uint16_t>(bus << 8 | device);
}

// Firmware: kFirmwareControl with value 1 holds the processor, with 0 lets it run (the device then leaves the
// bus and comes back); between the two kFirmwareData writes runs of image bytes, value and index as the
// 32-bit address's low and high half; kFirmwareResult (to the host, 4 bytes) tells the count of bytes taken
// since the hold.
inline constexpr std::uint8_t kFirmwareControl = 0xE3;
inline constexpr std::uint8_t kFirmwareData = 0xE4;
inline constexpr std::uint8_t kFirmwareResult = 0xE5;

}  // namespace tavra::usbd::wire
