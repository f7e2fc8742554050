// Commands that change how the camera itself is set up. Application threads.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Sends a command of the camera. Bits 12 and 15 stand for a command that changes geometry or formats: they
// are read again after it, and it is refused while a stream runs (0xE0000004).
Status sendCameraSetting(TAVRA_COMMON_PARAM& camera, std::uint16_t command);

}  // namespace tavra
