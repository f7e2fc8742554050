// Which ranges the automatic control takes for the shutter. Pure; any thread.
#pragma once

#include "base/status.h"
#include "control/shutter.h"

namespace tavra {

// 87: an end beyond the longest exposure, a clock above its maximum, or the bottom above the top.
Status checkShutterRange(const ShutterRange& range, const ShutterScale& scale);

// The range with another top or bottom, in clocks; the other end gives way where it would lie on the wrong
// side. 0 is the free-running exposure. 87: beyond the longest exposure, and the range stays.
Status moveRangeTop(ShutterRange& range, std::uint32_t clocks, const ShutterScale& scale);
Status moveRangeBottom(ShutterRange& range, std::uint32_t clocks, const ShutterScale& scale);

}  // namespace tavra
