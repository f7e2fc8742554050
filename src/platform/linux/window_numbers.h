// The numbers of windows that somebody still holds. A new X server counts from where the last one did, and a
// camera whose window went with its server must not take another camera's window for its own. Any thread.
#pragma once

#include <xcb/xcb.h>

#include <mutex>
#include <set>

namespace tavra::platform {

class WindowNumbers {
  public:
    // False: it is held already.
    bool take(xcb_window_t number) {
        const std::lock_guard lock(mutex_);
        return held_.insert(number).second;
    }
    void giveBack(xcb_window_t number) {
        const std::lock_guard lock(mutex_);
        held_.erase(number);
    }
    void giveAllBack() {
        const std::lock_guard lock(mutex_);
        held_.clear();
    }

  private:
    std::mutex mutex_;
    std::set<xcb_window_t> held_;
};

}  // namespace tavra::platform
