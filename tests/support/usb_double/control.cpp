// Control transfers of the double: faults first, then the camera's answer.
#include <algorithm>
#include <cstring>
#include <iomanip>
#include <ostream>

#include "support/usb_double/usb_double.h"

namespace tavra::test {
namespace {

constexpr std::uint8_t kToHost = 0xC0;
constexpr std::uint8_t kToDevice = 0x40;
constexpr std::uint32_t kNotFunctioning = 31;
constexpr std::uint32_t kNotConnected = 1167;

Bytes littleEndian(std::initializer_list<std::uint8_t> head, std::initializer_list<std::uint32_t> longs) {
    Bytes bytes(head);
    for (const std::uint32_t value : longs) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return bytes;
}

std::uint32_t load32(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4 && offset + i < bytes.size(); ++i) {
        value |= std::uint32_t{bytes[offset + i]} << (8 * i);
    }
    return value;
}

Bytes readStatus(DoubleCamera& camera, const ControlTransfer& t) {
    Bytes answer;
    for (unsigned i = 0; i < t.length / 2u; ++i) {
        const std::uint16_t word = camera.statusWords[{t.index, static_cast<std::uint16_t>(t.value + i)}];
        answer.push_back(static_cast<std::uint8_t>(word));
        answer.push_back(static_cast<std::uint8_t>(word >> 8));
    }
    return answer;
}

// Bit 15 of the address marks a write and is no part of the place.
void writeStatus(DoubleCamera& camera, const ControlTransfer& t) {
    for (unsigned i = 0; i + 1 < t.data.size(); i += 2) {
        const auto address = static_cast<std::uint16_t>((t.value & 0x7FFF) + i / 2);
        camera.statusWords[{t.index, address}] = static_cast<std::uint16_t>(t.data[i] | t.data[i + 1] << 8);
    }
}

std::pair<std::uint8_t, std::uint32_t> registerKey(const ControlTransfer& t, std::uint32_t offset) {
    const std::uint32_t word = t.value | std::uint32_t{t.index} << 16;
    return {static_cast<std::uint8_t>(word), (word >> 8) + offset};
}

Bytes readRegisters(DoubleCamera& camera, const ControlTransfer& t) {
    Bytes answer;
    for (std::uint32_t offset = 0; offset < t.length; offset += 4) {
        const Bytes four = littleEndian({}, {camera.registers[registerKey(t, offset)]});
        answer.insert(answer.end(), four.begin(), four.end());
    }
    return answer;
}

void writeRegisters(DoubleCamera& camera, const ControlTransfer& t) {
    for (std::uint32_t offset = 0; offset < t.data.size(); offset += 4) {
        camera.registers[registerKey(t, offset)] = load32(t.data, offset);
    }
}

// False: the camera stalls a request that it does not know.
bool answerIn(DoubleCamera& camera, const ControlTransfer& t, Bytes& answer) {
    switch (t.request) {
        case 17: answer = camera.identity; return true;
        case 18: answer = camera.scanRecord; return true;
        case 19: answer = littleEndian({6, 0x13}, {camera.transferBits}); return true;
        case 33: answer = camera.exposureBlock; return true;
        case 34:
            answer = camera.longClockReply ? littleEndian({10, 0x22}, {camera.clockMode, camera.clock})
                                           : littleEndian({6, 0x22}, {camera.clock});
            return true;
        case 35: answer = camera.words35; return true;
        case 128: answer = readStatus(camera, t); return true;
        case 129: answer = camera.settingReply; return true;
        case 130: answer = readRegisters(camera, t); return true;
        default: return false;
    }
}

void takeClock(DoubleCamera& camera, const Bytes& data) {
    if (data.size() == 10) {
        camera.clockMode = load32(data, 2);
        camera.clock = load32(data, 6);
    } else {
        camera.clockMode = 0;
        camera.clock = load32(data, 2);
    }
}

bool acceptOut(DoubleCamera& camera, const ControlTransfer& t) {
    switch (t.request) {
        case 18:
            std::copy_n(t.data.begin(), std::min(t.data.size(), camera.scanRecord.size()),
                        camera.scanRecord.begin());
            return true;
        case 19: camera.transferBits = load32(t.data, 2); return true;
        case 33: camera.exposureBlock = t.data; return true;
        case 34: takeClock(camera, t.data); return true;
        case 128: writeStatus(camera, t); return true;
        case 130: writeRegisters(camera, t); return true;
        case 32:
        case 48:
        case 129: return true;
        default: return false;
    }
}

}  // namespace

ControlTransfer toDevice(std::uint8_t request, std::uint16_t value, std::uint16_t index, Bytes data) {
    const auto length = static_cast<std::uint16_t>(data.size());
    return {kToDevice, request, value, index, length, std::move(data)};
}

ControlTransfer toHost(std::uint8_t request, std::uint16_t value, std::uint16_t index, std::uint16_t length) {
    return {kToHost, request, value, index, length, {}};
}

void PrintTo(const ControlTransfer& t, std::ostream* out) {
    *out << (t.requestType == kToHost ? "in " : "out ") << int{t.request} << " value 0x" << std::hex
         << t.value << " index 0x" << t.index << std::dec << " length " << t.length;
    for (const std::uint8_t byte : t.data) {
        *out << ' ' << std::hex << std::setw(2) << std::setfill('0') << int{byte} << std::dec;
    }
}

const UsbDouble::Fault* UsbDouble::matchFault(const ControlTransfer& t) {
    for (Fault& fault : faults_) {
        if (fault.times == 0 || (fault.request && *fault.request != t.request) ||
            (fault.requestType && *fault.requestType != t.requestType) ||
            (fault.value && *fault.value != t.value)) {
            continue;
        }
        if (fault.skip > 0) {
            --fault.skip;
            continue;
        }
        if (fault.times != kForever) --fault.times;
        return &fault;
    }
    return nullptr;
}

std::uint32_t UsbDouble::control(DoubleCamera& camera, ControlTransfer& t, std::uint8_t* data,
                                 std::uint32_t& transferred) {
    transferred = 0;
    const bool toTheHost = (t.requestType & 0x80) != 0;
    if (!toTheHost && t.length > 0) t.data.assign(data, data + t.length);
    const Fault* const fault = matchFault(t);
    if (camera.gone || (fault != nullptr && !fault->transferred)) {
        transfers_.push_back(t);
        return camera.gone ? kNotConnected : fault->error;
    }
    Bytes answer;
    const bool known = toTheHost ? answerIn(camera, t, answer) : acceptOut(camera, t);
    std::size_t moved = toTheHost ? std::min<std::size_t>(answer.size(), t.length) : t.length;
    if (fault != nullptr) moved = std::min<std::size_t>(moved, *fault->transferred);
    if (toTheHost) {
        answer.resize(moved);
        if (moved > 0) std::memcpy(data, answer.data(), moved);
        t.data = answer;
    }
    transfers_.push_back(t);
    if (!known) return kNotFunctioning;
    transferred = static_cast<std::uint32_t>(moved);
    return 0;
}

}  // namespace tavra::test
