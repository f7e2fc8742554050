#include "platform/linux/gl_display.h"

#include <array>
#include <cstdlib>
#include <cstring>

#include "platform/linux/loaded_modules.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kNoDisplay = 1459;

// Whether a list of words holds this one.
bool contains(const char* list, const char* word) {
    const std::size_t length = std::strlen(word);
    for (const char* at = list; at != nullptr && (at = std::strstr(at, word)) != nullptr; at += length) {
        const bool begins = at == list || at[-1] == ' ';
        if (begins && (at[length] == ' ' || at[length] == '\0')) return true;
    }
    return false;
}

}  // namespace

GlDisplay::~GlDisplay() {
    if (display != EGL_NO_DISPLAY) gl->eglTerminate(display);
    if (connection != nullptr) x->xcb_disconnect(connection);
}

std::uint32_t GlDisplay::open() {
    if (const Status loaded = loadGl(gl); !loaded.ok()) return loaded.code();
    if (const Status loaded = loadX11(x); !loaded.ok()) return loaded.code();
    int screenNumber = 0;
    connection = connectX11(*x, &screenNumber);
    if (broken()) return kNoDisplay;
    auto screens = x->xcb_setup_roots_iterator(x->xcb_get_setup(connection));
    for (int skipped = 0; skipped < screenNumber && screens.rem > 1; ++skipped) x->xcb_screen_next(&screens);
    screen = screens.data;
    if (screen == nullptr) return kNoDisplay;
    if (!openEgl(screenNumber)) return sprite_error::kNotAvailable;
    keepsBackBuffer = findConfig(EGL_WINDOW_BIT | EGL_SWAP_BEHAVIOR_PRESERVED_BIT);
    return keepsBackBuffer || findConfig(EGL_WINDOW_BIT) ? 0 : sprite_error::kNotAvailable;
}

// Drivers stay once they are loaded: loading them takes most of the time that a new display takes, and some
// leave memory behind when they go.
bool GlDisplay::openEgl(int screenNumber) {
    const std::set<std::string> before = loadedModules();
    if (!contains(gl->eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS), "EGL_EXT_platform_xcb")) return false;
    const EGLint attributes[] = {EGL_PLATFORM_XCB_SCREEN_EXT, screenNumber, EGL_NONE};
    display = gl->eglGetPlatformDisplay(EGL_PLATFORM_XCB_EXT, connection, attributes);
    if (display == EGL_NO_DISPLAY || gl->eglInitialize(display, nullptr, nullptr) != EGL_TRUE) return false;
    keepLoadedSince(before);
    return true;
}

// Windows have the pixels of the screen's root, so what is drawn must have them, too. The back buffer then
// has alpha only where the root has; nothing that is drawn reads it.
bool GlDisplay::findConfig(EGLint surfaces) {
    const EGLint wanted[] = {EGL_SURFACE_TYPE, surfaces, EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT,
                             EGL_RED_SIZE,     8,        EGL_GREEN_SIZE,      8,
                             EGL_BLUE_SIZE,    8,        EGL_DEPTH_SIZE,      16,
                             EGL_NONE};
    std::array<EGLConfig, 256> found{};
    EGLint count = 0;
    if (gl->eglChooseConfig(display, wanted, found.data(), static_cast<EGLint>(found.size()), &count) !=
        EGL_TRUE) {
        return false;
    }
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        EGLint visual = 0;
        gl->eglGetConfigAttrib(display, found[i], EGL_NATIVE_VISUAL_ID, &visual);
        if (static_cast<xcb_visualid_t>(visual) != screen->root_visual) continue;
        config = found[i];
        return true;
    }
    return false;
}

void GlDisplay::dropEvents() const {
    while (xcb_generic_event_t* const event = x->xcb_poll_for_event(connection)) std::free(event);
}

}  // namespace tavra::platform
