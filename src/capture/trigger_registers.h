// Where triggers live on the camera: bits of the trigger word, registers of the acquisition page, commands.
#pragma once

#include <array>
#include <cstdint>

namespace tavra::trigger {

// Status addresses; bit 15 marks a write that takes effect.
inline constexpr std::uint16_t kWord = 48;
inline constexpr std::uint16_t kFirstTiming = 50;  // also the delay
inline constexpr std::uint16_t kTimings = 6;
inline constexpr std::uint16_t kWrite = 0x8000;

// Values of the command word.
inline constexpr std::uint16_t kCommandResetCounter = 2;
inline constexpr std::uint16_t kCommandReadOut = 4;
inline constexpr std::uint16_t kCommandSoftSubTrigger = 16384;

// Fields of the trigger word.
inline constexpr std::uint32_t kOnMask = 0x3;  // 0 off, 1 first mode, 2 second mode
inline constexpr std::uint32_t kFirstMode = 1;
inline constexpr std::uint32_t kSecondMode = 2;
inline constexpr std::uint32_t kSelector4Source = 1u << 6;  // clear: source 1; set: source 2
inline constexpr unsigned kSourceShift = 10;
inline constexpr std::uint32_t kSourceMask = 0x3u << kSourceShift;
inline constexpr unsigned kExposureShift = 12;
inline constexpr std::uint32_t kExposureMask = 0x3u << kExposureShift;  // 0 free, 1 exposure mode 2, 2 mode 3
inline constexpr unsigned kShutterShift = 16;
inline constexpr std::uint32_t kShutterMask = 0x3u << kShutterShift;

constexpr std::uint32_t field(std::uint32_t word, std::uint32_t mask, unsigned shift) {
    return (word & mask) >> shift;
}
constexpr std::uint32_t withField(std::uint32_t word, std::uint32_t mask, unsigned shift,
                                  std::uint32_t value) {
    return (word & ~mask) | (value << shift & mask);
}

// Offsets in the acquisition page.
inline constexpr std::uint32_t kExposureModeOffset = 24;
inline constexpr std::uint32_t kSoftwareOffset = 40;
inline constexpr std::uint32_t kDelayOffset = 52;

// Mode and source registers of selectors 0 to 3, on a camera whose selectors have sets of their own.
struct SelectorRegisters {
    std::uint32_t mode, source;
};
inline constexpr std::array<SelectorRegisters, 4> kSelectors{{{44, 48}, {64, 68}, {88, 92}, {108, 112}}};

// Offset of the sensor page: twice the sensor shutter mode.
inline constexpr std::uint32_t kSensorShutterOffset = 4;

}  // namespace tavra::trigger
