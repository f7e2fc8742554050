// Clock, frame rate and vertical blanking of a camera. Any thread.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Reads the camera's clock and clock mode into the geometry.
Status readClock(TAVRA_COMMON_PARAM& camera);
// Mode 0 is the default; 0x80000000 takes any clock, in Hz, within the identity block's limits. 87: not
// offered.
Status setClock(TAVRA_COMMON_PARAM& camera, std::uint32_t mode, std::uint32_t clock);

// Frames a second that the camera sends: 0 when its clock or its frame is 0.
Status getOutputFps(TAVRA_COMMON_PARAM& camera, float& fps);
// The clock at which frames are read out, in Hz, and the clocks that a frame takes.
Status getReadClock(TAVRA_COMMON_PARAM& camera, std::uint32_t& clock);
Status getClocksPerFrame(TAVRA_COMMON_PARAM& camera, std::uint32_t& clocks);

// Lines of blanking that slow the camera down. A camera without them has 0, and takes 0.
Status getVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t& lines);
Status setVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t lines);
Status getMaximumVBlank(TAVRA_COMMON_PARAM& camera, std::uint32_t& lines);

}  // namespace tavra
