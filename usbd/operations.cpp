#include "operations.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/little_endian.h"
#include "error_numbers.h"

namespace tavra::usbd {
namespace {

constexpr std::uint32_t kMaxAddress = 0x0FFFFFFF;

// One transfer that must go over whole.
ErrorCode transferAll(Device& device, const ControlSetup& setup, std::span<std::uint8_t> data,
                      std::uint32_t& transferred) {
    std::uint32_t count = 0;
    const ErrorCode result = device.controlTransfer(setup, data, count);
    transferred += std::min(count, static_cast<std::uint32_t>(data.size()));
    if (result != error::kNone) return result;
    return count == data.size() ? error::kNone : error::kShortTransfer;
}

// Cuts `total` bytes into transfers; `setupAt` gives the request for the bytes from an offset on.
template <typename SetupAt>
ErrorCode read(Device& device, std::uint32_t total, void* buffer, std::uint32_t& transferred,
               SetupAt setupAt) {
    transferred = 0;
    if (buffer == nullptr && total > 0) return error::kInvalidArgument;
    auto* const bytes = static_cast<std::uint8_t*>(buffer);
    for (std::uint32_t done = 0; done < total; done += wire::kMaxChunk) {
        const std::uint32_t size = std::min(total - done, wire::kMaxChunk);
        const ErrorCode result = transferAll(device, setupAt(done), {bytes + done, size}, transferred);
        if (result != error::kNone) return result;
    }
    return error::kNone;
}

// Likewise to the device. The seam takes one kind of span for both directions, and callers' memory may be
// read-only, so each piece goes through a copy of its own.
template <typename SetupAt>
ErrorCode write(Device& device, std::uint32_t total, const void* buffer, std::uint32_t& transferred,
                SetupAt setupAt) {
    transferred = 0;
    if (buffer == nullptr && total > 0) return error::kInvalidArgument;
    const auto* const bytes = static_cast<const std::uint8_t*>(buffer);
    std::array<std::uint8_t, wire::kMaxChunk> piece;
    for (std::uint32_t done = 0; done < total; done += wire::kMaxChunk) {
        const std::uint32_t size = std::min(total - done, wire::kMaxChunk);
        std::copy_n(bytes + done, size, piece.begin());
        const ErrorCode result = transferAll(device, setupAt(done), {piece.data(), size}, transferred);
        if (result != error::kNone) return result;
    }
    return error::kNone;
}

bool isRange(std::uint32_t first, std::uint32_t last) {
    return first <= last && last <= kMaxAddress;
}

auto memoryRequest(std::uint8_t direction, wire::MemorySpace space, std::uint32_t first) {
    return [=](std::uint32_t offset) {
        const std::uint32_t address = first + offset;
        return ControlSetup{direction, wire::kMemory, wire::memoryValue(address),
                            wire::memoryIndex(space, address)};
    };
}

auto i2cRequest(std::uint8_t direction, const I2cTarget& target) {
    return [=](std::uint32_t offset) {
        const auto reg = static_cast<std::uint16_t>(target.reg + offset);
        return ControlSetup{direction, target.request, reg, wire::i2cIndex(target.bus, target.address)};
    };
}

ErrorCode holdProcessor(Device& device, bool hold) {
    const ControlSetup setup{wire::kToDevice, wire::kFirmwareControl, static_cast<std::uint16_t>(hold), 0};
    std::uint32_t ignored = 0;
    return transferAll(device, setup, {}, ignored);
}

}  // namespace

ErrorCode readMemory(Device& device, wire::MemorySpace space, std::uint32_t first, std::uint32_t last,
                     void* buffer, std::uint32_t& transferred) {
    transferred = 0;
    if (!isRange(first, last)) return error::kInvalidArgument;
    return read(device, last - first + 1, buffer, transferred, memoryRequest(wire::kToHost, space, first));
}

ErrorCode writeMemory(Device& device, wire::MemorySpace space, std::uint32_t first, std::uint32_t last,
                      const void* buffer, std::uint32_t& transferred) {
    transferred = 0;
    if (!isRange(first, last)) return error::kInvalidArgument;
    return write(device, last - first + 1, buffer, transferred, memoryRequest(wire::kToDevice, space, first));
}

ErrorCode readI2c(Device& device, const I2cTarget& target, std::uint16_t count, void* buffer,
                  std::uint32_t& transferred) {
    return read(device, count, buffer, transferred, i2cRequest(wire::kToHost, target));
}

ErrorCode writeI2c(Device& device, const I2cTarget& target, std::uint16_t count, const void* buffer,
                   std::uint32_t& transferred) {
    return write(device, count, buffer, transferred, i2cRequest(wire::kToDevice, target));
}

ErrorCode downloadFirmware(Device& device, std::span<const std::uint8_t> image, const std::uint8_t* mask,
                           std::uint32_t& taken) {
    taken = 0;
    if (ErrorCode result = holdProcessor(device, true); result != error::kNone) return result;

    const auto used = [&](std::size_t at) { return mask == nullptr || mask[at] != 0; };
    std::uint32_t sent = 0;
    for (std::size_t at = 0; at < image.size();) {
        std::size_t end = at;
        while (end < image.size() && used(end)) ++end;
        std::uint32_t count = 0;
        const auto request = [at](std::uint32_t offset) {
            const std::uint32_t address = static_cast<std::uint32_t>(at) + offset;
            return ControlSetup{wire::kToDevice, wire::kFirmwareData, static_cast<std::uint16_t>(address),
                                static_cast<std::uint16_t>(address >> 16)};
        };
        const ErrorCode result =
            write(device, static_cast<std::uint32_t>(end - at), image.data() + at, count, request);
        if (result != error::kNone) return result;
        sent += count;
        at = end;
        while (at < image.size() && !used(at)) ++at;
    }

    std::array<std::uint8_t, 4> confirmed{};
    std::uint32_t count = 0;
    const ControlSetup ask{wire::kToHost, wire::kFirmwareResult, 0, 0};
    if (ErrorCode result = transferAll(device, ask, confirmed, count); result != error::kNone) return result;
    taken = loadLe32(confirmed.data());
    // A processor with half a program is better left held.
    if (taken != sent) return error::kShortTransfer;
    return holdProcessor(device, false);
}

}  // namespace tavra::usbd
