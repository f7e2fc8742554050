#include "memories.h"

#include <algorithm>
#include <string>

#include "base/little_endian.h"
#include "error_numbers.h"
#include "wire_protocol.h"

namespace tavra::usbd {
namespace {

constexpr ErrorCode kStall = error::kDeviceNotFunctioning;

constexpr std::size_t kNonVolatileBytes = 1536, kSetupBytes = 256, kControllerBytes = 65536;
constexpr std::size_t kSerialRecord = 0, kUserRecord = 256;
constexpr std::uint32_t kFirmwareSpace = 0x10000;

// An identity record with narrow text: ID, kind of text, length, text.
void putRecord(std::uint8_t* record, std::uint32_t id, const std::string& text) {
    storeLe32(record, id);
    record[4] = 0;
    record[5] = static_cast<std::uint8_t>(text.size());
    std::copy(text.begin(), text.end(), record + 6);
}

// Bytes between a host and a block of memory, in the request's direction.
ErrorCode move(const ControlSetup& setup, std::span<std::uint8_t> data, std::vector<std::uint8_t>& memory,
               std::size_t address) {
    if (address > memory.size() || data.size() > memory.size() - address) return kStall;
    const auto place = memory.begin() + static_cast<std::ptrdiff_t>(address);
    if (setup.toHost()) {
        std::copy_n(place, data.size(), data.begin());
    } else {
        std::copy(data.begin(), data.end(), place);
    }
    return error::kNone;
}

}  // namespace

Memories::Memories(const Model& model) : loadable_(model.isLegacy()) {
    spaces_[0].resize(kNonVolatileBytes);
    spaces_[1].resize(kSetupBytes);
    spaces_[2].resize(kControllerBytes);
    putRecord(&spaces_[0][kSerialRecord], model.memory.serialId, model.memory.serialText);
    putRecord(&spaces_[0][kUserRecord], model.memory.userId, model.memory.userText);
    for (const I2cModel& device : model.i2c) {
        Bus bus{device.registerBits, device.bytes};
        bus.bytes.resize(device.size);
        buses_[{device.bus, device.address}] = std::move(bus);
    }
}

bool Memories::request(const ControlSetup& setup, std::span<std::uint8_t> data, ErrorCode& result) {
    switch (setup.request) {
        case wire::kMemory: result = memory(setup, data); return true;
        case wire::kI2c16BitRegister: result = i2c(setup, data, 16); return true;
        case wire::kI2c8BitRegister: result = i2c(setup, data, 8); return true;
        case wire::kFirmwareControl: result = control(setup); return true;
        case wire::kFirmwareData: result = firmwareData(setup, data); return true;
        case wire::kFirmwareResult: result = firmwareResult(setup, data); return true;
        default: return false;
    }
}

bool Memories::takeRestart() {
    const bool restart = restart_;
    restart_ = false;
    return restart;
}

ErrorCode Memories::memory(const ControlSetup& setup, std::span<std::uint8_t> data) {
    const std::size_t space = setup.index >> 12;
    const std::size_t address = setup.value | std::size_t{setup.index & 0xFFFu} << 16;
    return space < std::size(spaces_) ? move(setup, data, spaces_[space], address) : kStall;
}

ErrorCode Memories::i2c(const ControlSetup& setup, std::span<std::uint8_t> data, std::uint32_t registerBits) {
    const auto bus = static_cast<std::uint8_t>(setup.index >> 8),
               address = static_cast<std::uint8_t>(setup.index);
    const auto found = buses_.find({bus, address});
    if (found == buses_.end() || found->second.registerBits != registerBits) return kStall;
    return move(setup, data, found->second.bytes, setup.value);
}

ErrorCode Memories::control(const ControlSetup& setup) {
    if (!loadable_ || setup.toHost() || setup.value > 1) return kStall;
    if (setup.value == 1) {
        held_ = true;
        taken_ = 0;
    } else if (held_) {
        held_ = false;
        restart_ = taken_ > 0;
    }
    return error::kNone;
}

ErrorCode Memories::firmwareData(const ControlSetup& setup, std::span<const std::uint8_t> data) {
    const std::size_t address = setup.value | std::size_t{setup.index} << 16;
    if (!held_ || setup.toHost() || address + data.size() > kFirmwareSpace) return kStall;
    taken_ += static_cast<std::uint32_t>(data.size());
    return error::kNone;
}

ErrorCode Memories::firmwareResult(const ControlSetup& setup, std::span<std::uint8_t> data) const {
    if (!loadable_ || !setup.toHost() || data.size() != 4) return kStall;
    storeLe32(data.data(), taken_);
    return error::kNone;
}

}  // namespace tavra::usbd
