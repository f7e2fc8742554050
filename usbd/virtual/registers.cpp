#include "registers.h"

#include <algorithm>

#include "base/little_endian.h"

namespace tavra::usbd {
namespace {

constexpr std::uint32_t kDescriptorTable = 4;
constexpr std::uint32_t kPageStride = 0x1000;
constexpr std::uint32_t kDescriptorTag = 0x01000000;  // the high byte is no part of the address
constexpr std::uint16_t kFreeDefect = 0xFFFF;
constexpr std::size_t kDefaultDefects = 64;

std::size_t defectCount(const Model& model) {
    return model.capability[5] != 0 ? model.capability[5] : kDefaultDefects;
}

}  // namespace

StatusWords::StatusWords(const Model& model) : defects_(2 * defectCount(model), kFreeDefect) {
    for (const auto& [address, value] : model.status) words_[address] = value;
    std::copy(model.capability.begin(), model.capability.end(), words_.begin() + status::kCapability);
}

std::span<const std::uint16_t> StatusWords::space(std::uint16_t index) const {
    if (index == 0) return words_;
    if (index == status::kDefectIndex) return defects_;
    return {};
}

bool StatusWords::read(std::uint16_t index, std::uint16_t address, std::span<std::uint8_t> bytes) const {
    const std::span<const std::uint16_t> words = space(index);
    if (bytes.size() % 2 != 0 || address + bytes.size() / 2 > words.size()) return false;
    for (std::size_t i = 0; i < bytes.size() / 2; ++i) storeLe16(&bytes[2 * i], words[address + i]);
    return true;
}

bool StatusWords::write(std::uint16_t index, std::uint16_t address, std::span<const std::uint8_t> bytes) {
    const std::size_t first = address & static_cast<std::uint16_t>(~status::kEffectBit);
    const std::span<const std::uint16_t> words = space(index);
    if (bytes.size() % 2 != 0 || first + bytes.size() / 2 > words.size()) return false;
    for (std::size_t i = 0; i < bytes.size() / 2; ++i) {
        (index == 0 ? words_[first + i] : defects_[first + i]) = loadLe16(&bytes[2 * i]);
    }
    return true;
}

void StatusWords::setPair(std::uint16_t address, std::uint32_t value) {
    words_[address] = static_cast<std::uint16_t>(value);
    words_[address + 1u] = static_cast<std::uint16_t>(value >> 16);
}

RegisterPages::RegisterPages(const Model& model) : bytes_((kPageCount + 1) * kPageStride) {
    for (std::uint32_t i = 0; i < kPageCount; ++i) {
        const std::uint32_t base = kPageStride * (i + 1);
        storeLe32(&bytes_[kDescriptorTable + 4 * i], base | kDescriptorTag);
        storeLe32(&bytes_[base], model.pages.sizes[i]);
    }
    const std::uint32_t defectBytes = static_cast<std::uint32_t>(4 * defectCount(model));
    for (std::uint32_t at = page::kFirstDefect;
         at < page::kFirstDefect + defectBytes && at + 4 <= kPageStride; at += 4) {
        set(page::kDefects, at, 0xFFFFFFFF);
    }
    for (const auto& [place, value] : model.pages.values) set(place.first, place.second, value);
}

bool RegisterPages::inside(std::uint32_t address, std::size_t size) const {
    return size % 4 == 0 && address <= bytes_.size() && size <= bytes_.size() - address;
}

bool RegisterPages::read(std::uint32_t address, std::span<std::uint8_t> bytes) const {
    if (!inside(address, bytes.size())) return false;
    std::copy_n(bytes_.begin() + address, bytes.size(), bytes.begin());
    return true;
}

bool RegisterPages::write(std::uint32_t address, std::span<const std::uint8_t> bytes) {
    std::uint32_t page = 0, offset = 0;
    // Descriptors and sizes are the camera's own.
    if (!inside(address, bytes.size()) || !locate(address, page, offset) || offset == 0) return false;
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + address);
    return true;
}

std::uint32_t RegisterPages::value(std::uint32_t page, std::uint32_t offset) const {
    return loadLe32(&bytes_[kPageStride * (page + 1) + offset]);
}

void RegisterPages::set(std::uint32_t page, std::uint32_t offset, std::uint32_t value) {
    storeLe32(&bytes_[kPageStride * (page + 1) + offset], value);
}

bool RegisterPages::locate(std::uint32_t address, std::uint32_t& page, std::uint32_t& offset) {
    if (address < kPageStride) return false;
    page = address / kPageStride - 1;
    offset = address % kPageStride;
    return page < kPageCount;
}

}  // namespace tavra::usbd
