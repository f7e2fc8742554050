// High dynamic range parameters of a camera: 32-bit words in a register page. Application threads.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// 0: the camera has none.
std::uint32_t hdrType(const TAVRA_COMMON_PARAM& camera);

// Reads parameters into an array of `size` bytes, cut to what there is; with a null array only tells the
// size.
Status getHdrParameters(TAVRA_COMMON_PARAM& camera, std::uint32_t* parameters, std::uint32_t& size);
// Writes them one by one; the first failure ends it.
Status setHdrParameters(TAVRA_COMMON_PARAM& camera, const std::uint32_t* parameters, std::uint32_t size);

}  // namespace tavra
