// Waiting for what another process holds: a database, or the lock of a folder. Up to five seconds, then the
// operation that wanted it fails.
//
// A BusyWait belongs to the operation that waits. Any thread; the clock is set by tests, while nobody waits.
#pragma once

#include <chrono>

namespace tavra::platform {

struct WaitClock {
    std::chrono::milliseconds (*now)();
    void (*sleep)(std::chrono::milliseconds time);
};
extern const WaitClock kSystemClock;
extern WaitClock waitClock;  // the system's, unless a test has put its own here

class BusyWait {
  public:
    static constexpr std::chrono::milliseconds kLongest{5000};

    // The time begins.
    BusyWait() : end_(waitClock.now() + kLongest) {}

    // Waits a little. False, at once: the time is over.
    bool again();

  private:
    std::chrono::milliseconds end_;
    std::chrono::milliseconds pause_{1};
};

}  // namespace tavra::platform
