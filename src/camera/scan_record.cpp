#include <algorithm>

#include "base/little_endian.h"
#include "camera/frame_feature.h"

namespace tavra {
namespace {

constexpr std::uint8_t kRequest = 18;
constexpr std::uint8_t kLengthIsAt24 = 255;
constexpr std::size_t kMainRegion = 6;
constexpr std::size_t kRegionBits = 60;
constexpr std::size_t kFurtherRegions = 64;
constexpr std::size_t kRegionSize = 16;

// The longest exposure of the two scan modes that expose over several frames, in lines.
constexpr std::uint32_t kLongExposureLines = 4090;

constexpr std::size_t regionOffset(std::uint32_t index) {
    return index == 0 ? kMainRegion : kFurtherRegions + kRegionSize * (index - 1);
}

}  // namespace

ScanRecord::ScanRecord() {
    bytes_[0] = kShortLength;
    bytes_[1] = kRequest;
}

std::uint16_t ScanRecord::get16(std::size_t offset) const {
    return loadLe16(&bytes_[offset]);
}
std::uint32_t ScanRecord::get32(std::size_t offset) const {
    return loadLe32(&bytes_[offset]);
}
void ScanRecord::put16(std::size_t offset, std::uint16_t value) {
    storeLe16(&bytes_[offset], value);
}
void ScanRecord::put32(std::size_t offset, std::uint32_t value) {
    storeLe32(&bytes_[offset], value);
}

std::uint32_t ScanRecord::declaredLength() const {
    const std::uint32_t length = bytes_[0] == kLengthIsAt24 ? get16(24) : bytes_[0];
    return std::min<std::uint32_t>(length, kCapacity);
}

bool ScanRecord::completeWith(std::uint32_t received) const {
    // The first 26 bytes hold the length itself where byte 0 does not.
    if (bytes_[0] == kLengthIsAt24 && received < 26) return false;
    return received > 0 && received >= declaredLength();
}

std::uint32_t ScanRecord::regionCount() const {
    return std::clamp<std::uint32_t>(get32(56), 1, kMaxRegions);
}

ScanRecord::Region ScanRecord::region(std::uint32_t index) const {
    if (index >= kMaxRegions) return {};
    const std::size_t offset = regionOffset(index);
    return {get32(offset), get32(offset + 4), get32(offset + 8), get32(offset + 12)};
}

void ScanRecord::setRegion(std::uint32_t index, const Region& region) {
    if (index >= kMaxRegions) return;
    const std::size_t offset = regionOffset(index);
    put32(offset, region.width);
    put32(offset + 4, region.height);
    put32(offset + 8, region.x);
    put32(offset + 12, region.y);
}

bool ScanRecord::regionEnabled(std::uint32_t index) const {
    return index < kMaxRegions && (get32(kRegionBits) >> index & 1u) != 0;
}

void ScanRecord::setRegionEnabled(std::uint32_t index, bool enabled) {
    if (index >= kMaxRegions) return;
    const std::uint32_t bit = 1u << index;
    put32(kRegionBits, enabled ? get32(kRegionBits) | bit : get32(kRegionBits) & ~bit);
}

void ScanRecord::deriveExposureLimits() {
    const std::uint32_t lines = linesPerFrame();
    put32(36, std::uint32_t{clocksPerLine()} - 1);
    put32(40, 0);
    put32(44, lines);
    put32(48, 0);
    put32(52, exposesOverFrames() ? kLongExposureLines : lines);
}

}  // namespace tavra
