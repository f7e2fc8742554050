// Threads with a name and a priority.
//
// Linux: a pthread; time critical means real-time round robin where it is permitted, else the lowest nice
// value that is, and never a failure. Windows: CreateThread, priority 15. A Thread belongs to the object that
// has it as a member; one thread at a time starts and joins it, any thread may look at ended().
#pragma once

#include <functional>
#include <memory>

#include "base/status.h"
#include "platform/event.h"

namespace tavra::platform {

enum class ThreadPriority { Normal, TimeCritical };

class Thread {
  public:
    Thread();
    ~Thread();  // joins
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    // Starts `body` on a new thread, shown by debuggers and profilers as `name` (at most 15 characters). A
    // thread that exists must have been joined. Fails with the system's error.
    Status start(const char* name, ThreadPriority priority, std::function<void()> body);

    // True from start to join, whether the body still runs or not.
    bool exists() const;

    // Set as the last act of the body, reset by start.
    const Event& ended() const { return ended_; }

    // Waits without limit for the body and gives the thread back to the system. Nothing if there is none.
    void join();

  private:
    struct Native;

    Event ended_{Event::Reset::Manual};
    std::unique_ptr<Native> native_;
};

}  // namespace tavra::platform
