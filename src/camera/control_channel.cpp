#include "camera/control_channel.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr std::uint8_t kToHost = 0xC0;
constexpr std::uint8_t kToDevice = 0x40;

constexpr std::uint8_t kClearBufferRequest = 32;
constexpr std::uint8_t kStatusRequest = 128;
constexpr std::uint8_t kRegisterRequest = 130;

constexpr std::size_t kLongestTransfer = 0xFFFF;
constexpr std::size_t kRegisterPiece = 64;

// Value and index of a register request: the selector in the low byte, 24 bits of address above it.
struct RegisterPlace {
    RegisterPlace(std::uint8_t selector, std::uint32_t address)
        : value(static_cast<std::uint16_t>(address << 8 | selector)),
          index(static_cast<std::uint16_t>(address >> 8)) {}

    std::uint16_t value;
    std::uint16_t index;
};

}  // namespace

void ControlChannel::attach(const platform::UsbAccess& access, TavraUsbDevice device) {
    access_ = &access;
    device_ = device;
}

void ControlChannel::detach() {
    device_ = 0;
}

Status ControlChannel::transfer(std::uint8_t requestType, std::uint8_t request, std::uint16_t value,
                                std::uint16_t index, void* data, std::size_t size,
                                std::uint32_t& transferred) {
    transferred = 0;
    if (size > kLongestTransfer) return Status(error::kInvalidArgument);
    if (device_ == 0) return Status(error::kControlTransfer);
    const int32_t done = access_->controlTransfer(device_, requestType, request, value, index,
                                                  static_cast<std::uint16_t>(size), data, &transferred);
    if (done == 0 || transferred > size) return Status(error::kControlTransfer);
    return Status();
}

Status ControlChannel::in(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                          std::span<std::uint8_t> data, std::uint32_t& received) {
    return transfer(kToHost, request, value, index, data.data(), data.size(), received);
}

Status ControlChannel::inExactly(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                                 std::span<std::uint8_t> data) {
    std::uint32_t received = 0;
    TAVRA_RETURN_IF_ERROR(in(request, value, index, data, received));
    return received == data.size() ? Status() : Status(error::kControlTransfer);
}

Status ControlChannel::out(std::uint8_t request, std::uint16_t value, std::uint16_t index,
                           std::span<const std::uint8_t> data) {
    std::uint32_t sent = 0;
    // The operation serves both directions with one pointer; it only reads what is sent.
    void* const bytes = const_cast<std::uint8_t*>(data.data());
    TAVRA_RETURN_IF_ERROR(transfer(kToDevice, request, value, index, bytes, data.size(), sent));
    return sent == data.size() ? Status() : Status(error::kControlTransfer);
}

Status ControlChannel::readStatusBytes(std::uint16_t index, std::uint16_t address,
                                       std::span<std::uint8_t> bytes) {
    if (legacy_) return Status(error::kLegacyCamera);
    return inExactly(kStatusRequest, address, index, bytes);
}

Status ControlChannel::writeStatusBytes(std::uint16_t index, std::uint16_t address,
                                        std::span<const std::uint8_t> bytes) {
    if (legacy_) return Status(error::kLegacyCamera);
    return out(kStatusRequest, address, index, bytes);
}

Status ControlChannel::readStatus(std::uint16_t index, std::uint16_t address,
                                  std::span<std::uint16_t> words) {
    auto* const bytes = reinterpret_cast<std::uint8_t*>(words.data());
    TAVRA_RETURN_IF_ERROR(readStatusBytes(index, address, {bytes, words.size_bytes()}));
    for (std::size_t i = 0; i < words.size(); ++i) words[i] = loadLe16(bytes + 2 * i);
    return Status();
}

Status ControlChannel::writeStatus(std::uint16_t index, std::uint16_t address,
                                   std::span<const std::uint16_t> words) {
    constexpr std::size_t kMostWords = 64;  // no status value of any camera is longer
    std::array<std::uint8_t, 2 * kMostWords> bytes{};
    if (words.size() > kMostWords) return Status(error::kInvalidArgument);
    for (std::size_t i = 0; i < words.size(); ++i) storeLe16(&bytes[2 * i], words[i]);
    return writeStatusBytes(index, address, std::span(bytes).first(words.size_bytes()));
}

Status ControlChannel::readStatusWord(std::uint16_t address, std::uint16_t& value) {
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(readStatus(0, address, {&word, 1}));
    value = word;
    return Status();
}

Status ControlChannel::writeStatusWord(std::uint16_t address, std::uint16_t value) {
    return writeStatus(0, address, {&value, 1});
}

Status ControlChannel::readStatusLong(std::uint16_t address, std::uint32_t& value) {
    std::array<std::uint16_t, 2> words{};
    TAVRA_RETURN_IF_ERROR(readStatus(0, address, words));
    value = words[0] | std::uint32_t{words[1]} << 16;
    return Status();
}

Status ControlChannel::writeStatusLong(std::uint16_t address, std::uint32_t value) {
    const std::array words{static_cast<std::uint16_t>(value), static_cast<std::uint16_t>(value >> 16)};
    return writeStatus(0, address, words);
}

Status ControlChannel::checkRegisterAccess(std::size_t size) const {
    if (!hasRegisters_) return Status(error::kLegacyCamera);
    return size % 4 == 0 ? Status() : Status(error::kInvalidArgument);
}

Status ControlChannel::readRegisters(std::uint8_t selector, std::uint32_t address,
                                     std::span<std::uint8_t> data) {
    TAVRA_RETURN_IF_ERROR(checkRegisterAccess(data.size()));
    while (!data.empty()) {
        const auto piece = data.first(std::min(data.size(), kRegisterPiece));
        const RegisterPlace place(selector, address);
        TAVRA_RETURN_IF_ERROR(inExactly(kRegisterRequest, place.value, place.index, piece));
        address += static_cast<std::uint32_t>(piece.size());
        data = data.subspan(piece.size());
    }
    return Status();
}

Status ControlChannel::writeRegisters(std::uint8_t selector, std::uint32_t address,
                                      std::span<const std::uint8_t> data) {
    TAVRA_RETURN_IF_ERROR(checkRegisterAccess(data.size()));
    while (!data.empty()) {
        const auto piece = data.first(std::min(data.size(), kRegisterPiece));
        const RegisterPlace place(selector, address);
        TAVRA_RETURN_IF_ERROR(out(kRegisterRequest, place.value, place.index, piece));
        address += static_cast<std::uint32_t>(piece.size());
        data = data.subspan(piece.size());
    }
    return Status();
}

Status ControlChannel::clearBuffer() {
    if (legacy_) return Status(error::kLegacyCamera);
    return out(kClearBufferRequest, 0, 0, {});
}

}  // namespace tavra
