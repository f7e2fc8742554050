// An X server of a test program's own, without a screen that anybody sees (Xvfb), on a display that was free.
//
// Made before the library's first window; DISPLAY names it from then on. Also a client of its own, which sees
// and does what another program would. Linux only. A program that uses this links xcb.
#pragma once

#include <sys/types.h>
#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/rectangle.h"

namespace tavra::test {

class XServer {
  public:
    // With arguments for Xvfb beside the usual ones.
    explicit XServer(const std::vector<const char*>& more = {});
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    bool started() const { return connection_ != nullptr; }
    xcb_connection_t* connection() const { return connection_; }
    xcb_window_t root() const;
    xcb_window_t makeWindow(int width, int height);

    // Pixels as 0x00RRGGBB, row by row; none if they cannot be read.
    std::vector<std::uint32_t> pixels(xcb_window_t window, std::uint32_t width, std::uint32_t height);
    // Reads again and again until the window looks like this. False: it did not within ten seconds.
    bool looksLike(xcb_window_t window, platform::Size size, const std::vector<std::uint32_t>& expected);

    // Events as the server would send them.
    void button(xcb_window_t window, bool pressed, xcb_button_t which, int x, int y, std::uint16_t state = 0);
    void closeByUser(xcb_window_t window);
    void resize(xcb_window_t window, std::uint32_t width, std::uint32_t height);
    void destroy(xcb_window_t window);
    // As one that hangs; until it goes on.
    void stop();
    void goOn();
    // As if it had crashed.
    void kill();

  private:
    pid_t process_ = -1;
    xcb_connection_t* connection_ = nullptr;
};

}  // namespace tavra::test
