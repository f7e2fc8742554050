#include "capture/io_pins.h"

namespace tavra {
namespace {

constexpr std::uint16_t kFirstPinMode = 4;
constexpr std::uint16_t kSwitches = 102;
constexpr std::uint16_t kWrite = 0x8000;

// The value is cleared first, so that a failure leaves 0.
Status readWord(TAVRA_COMMON_PARAM& camera, std::uint16_t address, std::uint32_t& value) {
    value = 0;
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(address, word));
    value = word;
    return Status();
}

}  // namespace

std::uint32_t ioExistence(const TAVRA_COMMON_PARAM& camera) {
    if (camera.can(4, 2)) return camera.capabilities.word(6);
    return camera.legacy() ? 0 : 15;
}

std::uint32_t ledExistence(const TAVRA_COMMON_PARAM& camera) {
    if (camera.legacy()) return 0;
    const std::uint32_t mask = (camera.can(0, 5) ? 1u : 0u) | (camera.capabilities.word(4) >> 12 & 0xFu) << 1;
    switch (mask) {
        case 1: return 3;
        case 2: return 1;
        default: return 0;
    }
}

Status readIoWord(TAVRA_COMMON_PARAM& camera, IoWord which, std::uint32_t& value) {
    return readWord(camera, static_cast<std::uint16_t>(which), value);
}

Status writeIoWord(TAVRA_COMMON_PARAM& camera, IoWord which, std::uint16_t value) {
    return camera.control.writeStatusWord(static_cast<std::uint16_t>(which) | kWrite, value);
}

Status readPinMode(TAVRA_COMMON_PARAM& camera, std::uint32_t pin, std::uint32_t& mode) {
    mode = 0;
    if (pin >= kIoPins) return Status(error::kInvalidArgument);
    return readWord(camera, static_cast<std::uint16_t>(kFirstPinMode + pin), mode);
}

Status writePinMode(TAVRA_COMMON_PARAM& camera, std::uint32_t pin, std::uint16_t mode) {
    if (pin >= kIoPins) return Status(error::kInvalidArgument);
    return camera.control.writeStatusWord(static_cast<std::uint16_t>(kFirstPinMode + pin) | kWrite, mode);
}

Status readSwitches(TAVRA_COMMON_PARAM& camera, std::uint32_t& status) {
    return readWord(camera, kSwitches, status);
}

}  // namespace tavra
