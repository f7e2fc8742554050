#include "platform/timer_resolution.h"

namespace tavra::platform {

void raiseTimerResolution() {}
void restoreTimerResolution() {}

}  // namespace tavra::platform
