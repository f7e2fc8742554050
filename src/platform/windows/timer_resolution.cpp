#include "platform/timer_resolution.h"

#include <windows.h>

#include <mmsystem.h>

namespace tavra::platform {
namespace {

constexpr UINT kResolutionMs = 1;

}  // namespace

void raiseTimerResolution() {
    timeBeginPeriod(kResolutionMs);
}
void restoreTimerResolution() {
    timeEndPeriod(kResolutionMs);
}

}  // namespace tavra::platform
