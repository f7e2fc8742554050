// What an application sets of the exposure control, in groups.
#pragma once

#include <cstdint>

namespace tavra {

// What the host controls: the low nibble of the public mode. The once modes go back to kOff.
namespace alc_mode {
inline constexpr std::uint8_t kOff = 0;
inline constexpr std::uint8_t kBoth = 1;
inline constexpr std::uint8_t kShutter = 2;
inline constexpr std::uint8_t kGain = 3;
inline constexpr std::uint8_t kBothOnce = 4;
inline constexpr std::uint8_t kShutterOnce = 5;
inline constexpr std::uint8_t kGainOnce = 6;
// What the camera controls by itself: the high nibble.
inline constexpr std::uint8_t kCameraShutter = 0x10;
inline constexpr std::uint8_t kCameraGain = 0x20;
}  // namespace alc_mode

struct ControlSpeed {
    std::uint8_t shutter = 0;  // divisors of a step less one
    std::uint8_t gain = 0;
    std::uint8_t skipFrames = 3;     // left out after a decision
    std::uint8_t averageFrames = 4;  // taken for one; 0 acts as 1
};

struct BrightnessTarget {
    std::uint8_t target = 128;
    std::uint8_t tolerance = 5;  // a loop that moves goes on down to here
    std::uint8_t threshold = 5;  // added to it for a loop at rest to start
};

struct GainRange {
    std::uint16_t min = 0;
    std::uint16_t max = 0;
};

}  // namespace tavra
