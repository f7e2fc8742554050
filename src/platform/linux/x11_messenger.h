// Messages to windows of the application on an X server: a ClientMessage each (tavra_host.h).
//
// Its connection is made with the first window that is named, and stays as long as there are such windows.
// One for the process; any thread. Posting does not wait for the application. A server that lags behind is
// given a moment, once; while it still takes nothing, messages are lost.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <set>

#include "base/status.h"

namespace tavra::platform {

class X11Messenger {
  public:
    // From now on the window can be posted to, if it exists. Waits for the server.
    void name(xcb_window_t window);

    // 1400: the window was not named, or is gone. 1816: the server lags behind.
    Status post(xcb_window_t window, std::uint32_t message, std::uint64_t parameter1,
                std::uint64_t parameter2);

  private:
    class Wire;

    std::shared_ptr<Wire> connected();
    bool takesMore();
    void takeNews();
    void forget(xcb_window_t window);

    std::mutex nameMutex_;  // one connection at a time is made; never held by a post
    std::mutex mutex_;      // held for moments only
    std::shared_ptr<Wire> wire_;
    std::set<xcb_window_t> windows_;
    bool lagging_ = false;
};

// The process's own.
X11Messenger& x11Messenger();

}  // namespace tavra::platform
