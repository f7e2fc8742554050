// The connection to the X server, and what is asked of it once. Of the window thread only.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>

#include "base/status.h"
#include "platform/linux/x11_library.h"
#include "platform/rectangle.h"
#include "platform/window.h"

namespace tavra::platform {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

class X11Connection {
  public:
    // 1459: there is no X server, or none with pixels of 32 bits in the usual order; the codes of loadX11.
    Status open();
    ~X11Connection();

    bool broken() const { return x->xcb_connection_has_error(raw) != 0; }
    // Waits until the server has done everything so far. False: the connection is broken.
    bool synchronise() const;
    xcb_atom_t atom(const char* name) const;
    Size workArea() const;
    // Place and size of any window. 1400: there is no such window.
    Status onScreen(xcb_window_t window, Rectangle& rectangle) const;
    bool isAltKey(xcb_keycode_t code) const;
    xcb_cursor_t cursor(Cursor which) const { return which == Cursor::ZoomIn ? zoomIn_ : zoomOut_; }

    const X11Library* x = nullptr;
    xcb_connection_t* raw = nullptr;
    const xcb_screen_t* screen = nullptr;
    bool shmWorks = false;
    bool altHeld = false;  // as of the last event that tells
    struct Atoms {
        xcb_atom_t protocols, deleteWindow, utf8, name, motifHints, workArea;
    } atoms{};

  private:
    bool findScreen(int number);
    void findAltKeys();
    xcb_cursor_t makeCursor(bool plus) const;

    const xcb_setup_t* setup_ = nullptr;  // not to be had from a connection that broke
    bool altKeys_[256] = {};
    xcb_cursor_t zoomIn_ = 0;
    xcb_cursor_t zoomOut_ = 0;
};

}  // namespace tavra::platform
