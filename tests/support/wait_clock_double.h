// A clock for what waits until another process lets go of something: waiting takes no time, and the time that
// was waited is told. Linux; one at a time, and one thread.
#pragma once

#include <functional>
#include <utility>

#include "platform/linux/busy_wait.h"

namespace tavra::test {

class WaitClockDouble {
  public:
    WaitClockDouble() {
        time_ = {};
        onSleep_ = nullptr;
        platform::waitClock = {[] { return time_; },
                               [](std::chrono::milliseconds time) {
                                   time_ += time;
                                   if (onSleep_) std::exchange(onSleep_, nullptr)();
                               }};
    }
    ~WaitClockDouble() {
        platform::waitClock = platform::kSystemClock;
        onSleep_ = nullptr;
    }
    WaitClockDouble(const WaitClockDouble&) = delete;
    WaitClockDouble& operator=(const WaitClockDouble&) = delete;

    // Happens during the next waiting, once.
    void onNextSleep(std::function<void()> action) { onSleep_ = std::move(action); }
    // Milliseconds waited since the last look.
    long long waited() { return std::exchange(time_, {}).count(); }

  private:
    inline static std::chrono::milliseconds time_{};
    inline static std::function<void()> onSleep_;
};

}  // namespace tavra::test
