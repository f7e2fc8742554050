// The speed of the link to a camera, told from its configuration descriptor.
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

inline constexpr std::uint8_t kFullSpeed = 0;
inline constexpr std::uint8_t kHighSpeed = 1;
inline constexpr std::uint8_t kSuperSpeed = 2;

// From the packet size of the first bulk endpoint to the host. The descriptor may be cut anywhere and may lie
// about lengths; what cannot be walked ends the walk.
std::uint8_t speedFromDescriptor(std::span<const std::uint8_t> descriptor);

// Reads the descriptor. Fails with the system's error, and full speed in `speed`. Any thread.
Status getUsbSpeed(TAVRA_COMMON_PARAM& camera, std::uint8_t& speed);

// The fastest link that the camera can have.
std::uint8_t maximumUsbSpeed(std::uint16_t firmwareRevision);

}  // namespace tavra
