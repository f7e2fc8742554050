// The registers of a virtual camera: status words and register pages, as storage. What a write brings about
// is told in camera_state.h. Belongs to one camera, which locks around it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "model.h"

namespace tavra::usbd {

// Addresses of status words.
namespace status {
inline constexpr std::uint16_t kEffectBit = 0x8000;  // in the address of a write; either form is taken
inline constexpr std::uint16_t kBlackLevel = 19;
inline constexpr std::uint16_t kDigitalGain = 20;
inline constexpr std::uint16_t kDigitalClamp = 21;
inline constexpr std::uint16_t kVerticalBlank = 23;
inline constexpr std::uint16_t kReadoutFactors = 33;
inline constexpr std::uint16_t kBinningSum = 46;
inline constexpr std::uint16_t kTrigger = 48;
inline constexpr std::uint16_t kMirror = 63;
inline constexpr std::uint16_t kWhiteBalanceGains = 64;
inline constexpr std::uint16_t kWhiteBalanceMode = 68;
inline constexpr std::uint16_t kLongestLines = 69;  // a pair, as the next
inline constexpr std::uint16_t kShortestLines = 71;
inline constexpr std::uint16_t kAutoExposure = 73;  // bit 0 shutter, bit 1 gain
inline constexpr std::uint16_t kTargetBrightness = 74;
inline constexpr std::uint16_t kHighestGain = 75;
inline constexpr std::uint16_t kLowestGain = 76;
inline constexpr std::uint16_t kDefectCorrection = 78;
inline constexpr std::uint16_t kCommand = 80;
inline constexpr std::uint16_t kReadClock = 86;
inline constexpr std::uint16_t kExposureLimits = 88;
inline constexpr std::uint16_t kCapability = 104;
inline constexpr std::uint16_t kDefectIndex = 129;  // the index word of defect pixel positions
}  // namespace status

// Register pages and offsets.
namespace page {
inline constexpr std::uint32_t kTrigger = 2;
inline constexpr std::uint32_t kVerticalBlank = 16;
inline constexpr std::uint32_t kExposureMode = 24;
inline constexpr std::uint32_t kSoftwareTrigger = 40;
inline constexpr std::uint32_t kTriggerModes[] = {44, 64, 88, 108};
inline constexpr std::uint32_t kAnalog = 3;
inline constexpr std::uint32_t kBlackLevel = 8;
inline constexpr std::uint32_t kDefects = 18;
inline constexpr std::uint32_t kFirstDefect = 4;
inline constexpr std::uint32_t kSensor = 21;
inline constexpr std::uint32_t kReadClock = 20;
inline constexpr std::uint32_t kClocksPerFrame = 84;
inline constexpr std::uint32_t kBaseClock = 96;
inline constexpr std::uint32_t kMaximumColorGains[] = {144, 148, 148, 152};  // R, Gr, Gb, B
inline constexpr std::uint32_t kMinimumExposure = 172;
inline constexpr std::uint32_t kRegions = 25;
inline constexpr std::uint32_t kRegionMode = 4;
}  // namespace page

class StatusWords {
  public:
    explicit StatusWords(const Model& model);

    // Whole words, from an address on; false when they run out of the space of the index.
    bool read(std::uint16_t index, std::uint16_t address, std::span<std::uint8_t> bytes) const;
    bool write(std::uint16_t index, std::uint16_t address, std::span<const std::uint8_t> bytes);

    std::uint16_t word(std::uint16_t address) const { return words_[address]; }
    std::uint32_t pair(std::uint16_t address) const {
        return words_[address] | std::uint32_t{words_[address + 1u]} << 16;
    }
    void setWord(std::uint16_t address, std::uint16_t value) { words_[address] = value; }
    void setPair(std::uint16_t address, std::uint32_t value);

    // Position n: x, y; both 65535 in a free place.
    std::uint16_t defect(std::size_t word) const { return defects_[word]; }
    std::size_t defectWords() const { return defects_.size(); }

  private:
    std::span<const std::uint16_t> space(std::uint16_t index) const;

    std::array<std::uint16_t, 256> words_{};
    std::vector<std::uint16_t> defects_;
};

// The 24-bit address space of the pages: 28 descriptors from address 4 on, then a block for each page that
// begins with the page's size.
class RegisterPages {
  public:
    explicit RegisterPages(const Model& model);

    bool read(std::uint32_t address, std::span<std::uint8_t> bytes) const;
    bool write(std::uint32_t address, std::span<const std::uint8_t> bytes);

    std::uint32_t value(std::uint32_t page, std::uint32_t offset) const;
    void set(std::uint32_t page, std::uint32_t offset, std::uint32_t value);

    // Page and offset of an address; false outside the pages.
    static bool locate(std::uint32_t address, std::uint32_t& page, std::uint32_t& offset);

  private:
    bool inside(std::uint32_t address, std::size_t size) const;

    std::vector<std::uint8_t> bytes_;
};

}  // namespace tavra::usbd
