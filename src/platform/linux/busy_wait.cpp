#include "platform/linux/busy_wait.h"

#include <algorithm>
#include <thread>

namespace tavra::platform {
namespace {

constexpr std::chrono::milliseconds kLongestPause{50};

std::chrono::milliseconds systemNow() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now().time_since_epoch());
}

void systemSleep(std::chrono::milliseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace

const WaitClock kSystemClock{systemNow, systemSleep};
WaitClock waitClock{systemNow, systemSleep};

bool BusyWait::again() {
    const std::chrono::milliseconds left = end_ - waitClock.now();
    if (left.count() <= 0) return false;
    waitClock.sleep(std::min(pause_, left));
    pause_ = std::min(2 * pause_, kLongestPause);
    return true;
}

}  // namespace tavra::platform
