// The resolution of the system's timer: raised while something waits for intervals of some milliseconds.
//
// Windows: timeBeginPeriod and timeEndPeriod. Linux: timers are fine enough as they are, both do nothing.
// Calls nest; each raise is followed by a restore. Any thread.
#pragma once

namespace tavra::platform {

void raiseTimerResolution();  // to 1 ms
void restoreTimerResolution();

}  // namespace tavra::platform
