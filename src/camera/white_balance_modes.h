// Which modes of white balance a camera has. Any thread.
#pragma once

#include <cstdint>

namespace tavra {

class TAVRA_COMMON_PARAM;

// Bit n for mode n; 15 wherever the camera does not tell its own.
std::uint32_t enabledWhiteBalanceModes(const TAVRA_COMMON_PARAM& camera);

}  // namespace tavra
