// What an application sets of the exposure control, in groups.
#pragma once

#include <cstdint>

#include "tavra/tavra_types.h"

namespace tavra {

// What the host controls: the low nibble of the public mode. The once modes go back to kOff.
namespace alc_mode {
inline constexpr std::uint8_t kOff = TAVRA_ALC_OFF;
inline constexpr std::uint8_t kBoth = TAVRA_ALC_SHUTTER_AND_GAIN;
inline constexpr std::uint8_t kShutter = TAVRA_ALC_SHUTTER;
inline constexpr std::uint8_t kGain = TAVRA_ALC_GAIN;
inline constexpr std::uint8_t kBothOnce = TAVRA_ALC_SHUTTER_AND_GAIN_ONCE;
inline constexpr std::uint8_t kShutterOnce = TAVRA_ALC_SHUTTER_ONCE;
inline constexpr std::uint8_t kGainOnce = TAVRA_ALC_GAIN_ONCE;
// What the camera controls by itself: the high nibble.
inline constexpr std::uint8_t kCameraShutter = TAVRA_ALC_CAMERA_SHUTTER;
inline constexpr std::uint8_t kCameraGain = TAVRA_ALC_CAMERA_GAIN;
inline constexpr std::uint8_t kCameraBoth = TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN;
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
