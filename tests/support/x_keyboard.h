// Somebody at the keyboard of a test's X server: finds windows by their title and types into them. The keys
// go through the server, which decides who gets them. A program that uses this links xcb and xcb-xtest.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tavra::test {

class XKeyboard {
  public:
    explicit XKeyboard(xcb_connection_t* connection);

    // The window on the screen whose title begins so; 0 within half a minute if none comes.
    xcb_window_t waitForWindow(const std::string& title) const;
    std::string titleOf(xcb_window_t window) const;
    // Looks at the title again and again until it has the text in it. False: not within half a minute.
    bool titleGets(xcb_window_t window, const std::string& text) const;
    bool titleLoses(xcb_window_t window, const std::string& text) const;
    // The first window in it, and its size; 0 if there is none.
    xcb_window_t childOf(xcb_window_t window) const;
    struct Size {
        std::uint32_t width = 0, height = 0;
    };
    Size sizeOf(xcb_window_t window) const;
    // The process that says that the window is its own; 0 if none does.
    std::uint32_t processOf(xcb_window_t window) const;

    // Puts the pointer into the window and presses the key of this symbol, with Shift where it needs it.
    void type(xcb_window_t window, xcb_keysym_t symbol) const;
    // Clicks with a button of the mouse there.
    void click(xcb_window_t window, xcb_button_t button, int x, int y) const;

    // Looks again and again. False: not within half a minute.
    bool waitUntil(const std::function<bool()>& condition) const;

  private:
    std::vector<xcb_window_t> childrenOf(xcb_window_t window) const;
    xcb_atom_t atom(const char* name) const;
    void pointTo(xcb_window_t window, int x, int y) const;
    void fake(std::uint8_t event, std::uint8_t detail) const;

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::vector<xcb_keysym_t> symbols_;
    unsigned firstCode_ = 0, symbolsPerCode_ = 0;
};

}  // namespace tavra::test
