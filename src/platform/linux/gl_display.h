// An X server as OpenGL sees it: a connection of its own, EGL on it, and the kind of window that both can
// show. Made anew for each device, so that nothing of it outlives a server that goes away.
//
// The connection is another than that of the windows: devices may be used by threads that the window thread
// must never wait for, and may go after the last window.
#pragma once

#include <cstdint>

#include "platform/linux/gl_library.h"
#include "platform/linux/x11_library.h"
#include "platform/sprite_device.h"

namespace tavra::platform {

class GlDisplay {
  public:
    GlDisplay() = default;
    ~GlDisplay();
    GlDisplay(const GlDisplay&) = delete;
    GlDisplay& operator=(const GlDisplay&) = delete;

    // 126, 127: no libraries; 1459: no X server; kNotAvailable: it has no OpenGL.
    std::uint32_t open();
    bool broken() const { return x->xcb_connection_has_error(connection) != 0; }
    // Refusals that nobody waits for would pile up.
    void dropEvents() const;

    const X11Library* x = nullptr;
    const GlLibrary* gl = nullptr;
    xcb_connection_t* connection = nullptr;
    const xcb_screen_t* screen = nullptr;
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLConfig config = nullptr;
    bool keepsBackBuffer = false;  // where it is asked to

  private:
    bool openEgl(int screenNumber);
    // For surfaces of these kinds.
    bool findConfig(EGLint surfaces);
};

}  // namespace tavra::platform
