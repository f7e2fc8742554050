#include "camera/device_memory.h"

#include <algorithm>

namespace tavra {
namespace {

constexpr std::uint32_t kUserMemory = 512;
constexpr std::uint32_t kUserMemorySize = 1024;
constexpr std::uint8_t kReservedDevice = 0x51;

Status expect(std::int32_t done, std::uint32_t transferred, std::size_t size) {
    return done != 0 && transferred == size ? Status() : Status(error::kControlTransfer);
}

std::uint32_t lastAddress(std::uint32_t first, std::size_t size) {
    return first + static_cast<std::uint32_t>(size) - 1;
}

Status checkUserRange(std::uint16_t offset, std::size_t size) {
    return offset < kUserMemorySize && size > 0 ? Status() : Status(error::kInvalidArgument);
}

std::size_t cutToUserMemory(std::uint16_t offset, std::size_t size) {
    return std::min<std::size_t>(size, kUserMemorySize - offset);
}

// Runs an I2C operation of the USB access library on the place.
template <typename Operation, typename Register, typename Data>
Status accessI2c(const ControlChannel& control, Operation operation, const I2cPlace& place, Register reg,
                 Data data) {
    if (place.device == kReservedDevice) return Status(error::kReservedI2c);
    std::uint32_t transferred = 0;
    const auto count = static_cast<Register>(data.size());
    const std::int32_t done =
        operation(control.device(), place.bus, place.device, reg, count, data.data(), &transferred);
    return expect(done, transferred, data.size());
}

}  // namespace

Status readMemory(const ControlChannel& control, std::uint32_t address, std::span<std::uint8_t> data) {
    std::uint32_t transferred = 0;
    const std::int32_t done = control.access()->readMemory(
        control.device(), address, lastAddress(address, data.size()), data.data(), &transferred);
    return expect(done, transferred, data.size());
}

Status writeMemory(const ControlChannel& control, std::uint32_t address, std::span<const std::uint8_t> data) {
    std::uint32_t transferred = 0;
    const std::int32_t done = control.access()->writeMemory(
        control.device(), address, lastAddress(address, data.size()), data.data(), &transferred);
    return expect(done, transferred, data.size());
}

Status readUserMemory(const ControlChannel& control, std::uint16_t offset, std::span<std::uint8_t> data) {
    TAVRA_RETURN_IF_ERROR(checkUserRange(offset, data.size()));
    return readMemory(control, kUserMemory + offset, data.first(cutToUserMemory(offset, data.size())));
}

Status writeUserMemory(const ControlChannel& control, std::uint16_t offset,
                       std::span<const std::uint8_t> data) {
    TAVRA_RETURN_IF_ERROR(checkUserRange(offset, data.size()));
    return writeMemory(control, kUserMemory + offset, data.first(cutToUserMemory(offset, data.size())));
}

Status readI2cByte(const ControlChannel& control, const I2cPlace& place, std::span<std::uint8_t> data) {
    return accessI2c(control, control.access()->readI2CByte, place, static_cast<std::uint8_t>(place.reg),
                     data);
}

Status writeI2cByte(const ControlChannel& control, const I2cPlace& place,
                    std::span<const std::uint8_t> data) {
    return accessI2c(control, control.access()->writeI2CByte, place, static_cast<std::uint8_t>(place.reg),
                     data);
}

Status readI2cWord(const ControlChannel& control, const I2cPlace& place, std::span<std::uint8_t> data) {
    return accessI2c(control, control.access()->readI2CWord, place, place.reg, data);
}

Status writeI2cWord(const ControlChannel& control, const I2cPlace& place,
                    std::span<const std::uint8_t> data) {
    return accessI2c(control, control.access()->writeI2CWord, place, place.reg, data);
}

}  // namespace tavra
