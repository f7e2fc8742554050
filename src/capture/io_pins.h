// I/O pins, switches and LEDs of a camera. Operations of the handle record; any thread.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/common_param.h"

namespace tavra {

inline constexpr std::uint32_t kIoPins = 4;

// Mask of the pins that exist; without a word of the camera's own 15, and 0 on the oldest types.
std::uint32_t ioExistence(const TAVRA_COMMON_PARAM& camera);
// Mask of the LEDs that the application can see: 0, 1 or 3.
std::uint32_t ledExistence(const TAVRA_COMMON_PARAM& camera);

// One word each, a bit a pin.
enum class IoWord : std::uint16_t { Direction = 0, Polarity = 1, Status = 2 };
Status readIoWord(TAVRA_COMMON_PARAM& camera, IoWord which, std::uint32_t& value);
Status writeIoWord(TAVRA_COMMON_PARAM& camera, IoWord which, std::uint16_t value);

// Mode of pin 0 to 3; 87 for another pin.
Status readPinMode(TAVRA_COMMON_PARAM& camera, std::uint32_t pin, std::uint32_t& mode);
Status writePinMode(TAVRA_COMMON_PARAM& camera, std::uint32_t pin, std::uint16_t mode);

Status readSwitches(TAVRA_COMMON_PARAM& camera, std::uint32_t& status);

}  // namespace tavra
