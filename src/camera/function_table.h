// Which functions a camera has, by the numbers of Tavra_HasFunction. Pure; any thread.
#pragma once

#include <array>
#include <cstdint>

#include "camera/camera_info.h"
#include "camera/capability_words.h"

namespace tavra {

// Numbers that the library asks for itself.
namespace function {
inline constexpr std::uint32_t kTriggerSelectors2And3 = 1;
inline constexpr std::uint32_t kRegisters = 64;
inline constexpr std::uint32_t kMirrorKeepsColorArray = 71;
inline constexpr std::uint32_t kBinningSum = 131;
inline constexpr std::uint32_t kTriggerSelector0 = 256;
inline constexpr std::uint32_t kDigitalGain = 257;
inline constexpr std::uint32_t kDigitalGainFromOne = 0x90007;
inline constexpr std::uint32_t kTriggerSelector1 = 0x9000E;
// Modes of white balance in the camera, by mode code; they count if the camera tells them at all.
inline constexpr std::array<std::uint32_t, 4> kWhiteBalanceModes{0xA0012, 0xA0015, 0xA0013, 0xA0014};
inline constexpr std::uint32_t kWhiteBalanceModesTold = 0xA0016;
inline constexpr std::uint32_t kPriorityMode = 0xA001B;
}  // namespace function

// Types whose first boards (hardware revision 15) have functions that their words do not tell.
bool isFirstBoardOfEarlyType(const CameraInfo& info);

// `colorArray` is the stored one, which the application may have changed.
bool hasFunction(const CameraInfo& info, const CapabilityWords& capabilities, std::uint16_t colorArray,
                 std::uint32_t number);

}  // namespace tavra
