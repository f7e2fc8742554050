// Windows of the library's own: made, placed, scrolled, drawn again, and what happens to them.
//
// Windows: USER. Linux: X11, over a connection and on a thread of the library's own, which exist as long as
// there are windows; the display libraries are loaded when the first one is made. A window is named by its
// handle, an HWND or XID. Operations may come from any thread and on handles that are no window any more,
// unless said otherwise; those that fail give the system's error.
#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "platform/paint.h"
#include "platform/rectangle.h"
#include "tavra/tavra_types.h"

namespace tavra::platform {

// Style bits that matter to more than the system.
inline constexpr std::uint32_t kStyleHorizontalScroll = 1u << 20;
inline constexpr std::uint32_t kStyleVerticalScroll = 1u << 21;
inline constexpr std::uint32_t kStyleVisible = 1u << 28;
inline constexpr std::uint32_t kStyleChild = 1u << 30;

enum class Axis { Horizontal, Vertical };

// Positions 0 to top, of which `page` are in sight. A bar without room to scroll is not shown.
struct ScrollBar {
    std::int32_t top = 0;
    std::uint32_t page = 0;
    std::int32_t position = 0;

    friend bool operator==(const ScrollBar&, const ScrollBar&) = default;
};

// What a scroll bar asks for.
enum class ScrollCode : std::uint32_t {
    LineBack,
    LineOn,
    PageBack,
    PageOn,
    ThumbReleased,
    ThumbMoves,
    First,
    Last,
};

enum class Cursor { ZoomIn, ZoomOut };

// A mouse message by its number on Windows: 512 to 522.
struct MouseMessage {
    std::uint32_t message = 0;
    std::uint64_t keys = 0;  // buttons and keys that are held; wheel and extra buttons in bits 16 to 31
    std::int32_t x = 0;      // in the client area; of the wheel (522) on the screen
    std::int32_t y = 0;
};
inline constexpr std::uint32_t kMouseMove = 512;
inline constexpr std::uint32_t kLeftButtonUp = 514;
inline constexpr std::uint32_t kMouseWheel = 522;

// What happens to a window. Called on the window's thread only: on Windows that of its creation, which pumps
// messages; on Linux the library's. Creation calls onCreate, and may call others, before it returns.
class IWindowEvents {
  public:
    static constexpr std::uint32_t kRestored = 0, kMaximised = 2;  // kinds of size

    virtual void onCreate(TavraWindow window) = 0;
    virtual void onDestroy() = 0;  // the last call
    virtual void onMove() = 0;
    virtual void onSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) = 0;
    virtual void onPaint(IPaint& paint, Size client) = 0;
    virtual void onErase(IPaint& paint) = 0;
    virtual void onCommand(std::uint64_t parameter) = 0;
    virtual void onScroll(Axis axis, ScrollCode code, std::int32_t thumb) = 0;
    virtual void onMouse(const MouseMessage& mouse) = 0;
    virtual void onAltKey() = 0;  // pressed or released

  protected:
    ~IWindowEvents() = default;
};

struct WindowRequest {
    bool closable = false;  // has a close button
    std::u16string title;
    std::uint32_t style = 0;
    std::int32_t x = 0;  // in the parent's client area for a child, else on the screen
    std::int32_t y = 0;
    Size size;  // of the window, as outerSize gives it
    TavraWindow parent = nullptr;
    TavraMenu menu = nullptr;  // Windows only
    void* owner = nullptr;     // Windows only: kept in the window's own storage, for whoever finds the window
};

class IWindowSystem {
  public:
    // Classes of windows: with and without a close button. Registering fails with 1410 where it was done,
    // unregistering with 1412 where windows of the class exist. Where there is no display to show windows on,
    // registering fails.
    virtual Status registerClass(bool closable) = 0;
    virtual Status unregisterClass(bool closable) = 0;

    virtual Status create(const WindowRequest& request, IWindowEvents& events, TavraWindow& window) = 0;
    // Ends the window: onDestroy has returned when this does. On Windows it waits for the window's thread to
    // take messages; one that does not for two seconds loses the window without its help. Fails with 1460,
    // and has done nothing, if that thread is in the middle of an event and stays there for three more.
    virtual Status destroy(TavraWindow window) = 0;
    virtual bool isWindow(TavraWindow window) = 0;
    virtual bool isActive(TavraWindow window) = 0;

    virtual Status setTitle(TavraWindow window, const std::u16string& title) = 0;
    virtual std::u16string title(TavraWindow window) = 0;  // empty if there is no such window
    virtual Status setStyle(TavraWindow window, std::uint32_t style) = 0;

    // Size of a window whose client area has this size.
    virtual Status outerSize(Size client, std::uint32_t style, TavraMenu menu, Size& outer) = 0;
    virtual Size workArea() = 0;
    virtual Status desktop(Rectangle& rectangle) = 0;  // does not wait for the window's thread
    virtual Status place(TavraWindow window, std::int32_t x, std::int32_t y, Size size) = 0;
    virtual Status windowOnScreen(TavraWindow window, Rectangle& rectangle) = 0;
    virtual Status clientOnScreen(TavraWindow window, Rectangle& rectangle) = 0;

    // Has the whole client area painted, after erasing it or not. Never waits.
    virtual Status invalidate(TavraWindow window, bool erase) = 0;
    // Calls onSize(kRestored, 0, 0) when the window's thread comes to it. Never waits.
    virtual Status postResize(TavraWindow window) = 0;

    // On the window's thread.
    virtual void setScrollBar(TavraWindow window, Axis axis, const ScrollBar& bar) = 0;
    // Height of a horizontal bar, width of a vertical one.
    virtual std::uint32_t scrollBarThickness(Axis axis) = 0;
    virtual void takeMouse(TavraWindow window) = 0;
    virtual void releaseMouse(TavraWindow window) = 0;
    virtual void setCursor(TavraWindow window, Cursor cursor) = 0;
    virtual bool altHeld() = 0;
    // Posts the message to the parent, with the position in its client area.
    virtual void forward(TavraWindow window, TavraWindow parent, const MouseMessage& mouse) = 0;

  protected:
    ~IWindowSystem() = default;
};

// The system's own.
IWindowSystem& windowSystem();

}  // namespace tavra::platform
