// One window on an X server: its pixels, the scroll bars that it draws itself, and what its events mean.
//
// Made and used on the window thread only; the session that it belongs to owns it.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>

#include "platform/linux/window_numbers.h"
#include "platform/linux/x11_canvas.h"
#include "platform/linux/x11_connection.h"
#include "platform/window.h"

namespace tavra::platform {

// 0: none that a server could have.
inline xcb_window_t nativeOf(TavraWindow window) {
    const auto number = reinterpret_cast<std::uintptr_t>(window);
    return number > 0xFFFFFFFF ? 0 : static_cast<xcb_window_t>(number);
}

class X11Window {
  public:
    static constexpr std::uint32_t kBarThickness = 16;

    X11Window(X11Connection& connection, IWindowEvents& events)
        : connection_(connection), events_(events), canvas_(connection) {}
    ~X11Window();
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    // 1400: the parent is no window. 1406: a child without a parent.
    Status create(const WindowRequest& request, WindowNumbers& numbers);
    xcb_window_t id() const { return id_; }
    IWindowEvents& events() const { return events_; }
    // The window is no more; nothing of it is asked of the server.
    void forget() { id_ = 0; }

    void setTitle(const std::u16string& title);
    const std::u16string& title() const { return title_; }
    // Tells of a size if other scroll bars are allowed.
    void setStyle(std::uint32_t style);
    void place(std::int32_t x, std::int32_t y, Size size);
    // Without the frame that a window manager adds, which only it knows.
    Status onScreen(Rectangle& rectangle) const { return connection_.onScreen(id_, rectangle); }
    Size clientSize() const { return clientSizeIn(size_); }
    Size clientSizeIn(Size whole) const;  // what the bars leave
    void setScrollBar(Axis axis, const ScrollBar& bar);
    void setMouse(bool taken) { mouseTaken_ = taken; }
    void setCursor(Cursor cursor);
    bool active() const;
    // Sends the mouse event at hand on.
    void forward(xcb_window_t parent) const;

    // The user has asked to close it, and may.
    bool handle(const xcb_generic_event_t& event);
    void paint(bool erase);

  private:
    struct Bar {
        ScrollBar state;
        bool shown() const { return state.top > 0 && state.page <= static_cast<std::uint32_t>(state.top); }
    };
    struct Drag {
        bool on = false;
        Axis axis = Axis::Horizontal;
        std::int32_t from = 0;      // of the pointer
        std::int32_t position = 0;  // of the bar then
    };

    void applyStyle(std::uint32_t style);
    void applyCursor(xcb_cursor_t cursor) const;
    void setHints(const WindowRequest& request);
    Rectangle paintedPart() const;
    void onConfigure(const xcb_configure_notify_event_t& event);
    void onButton(const xcb_button_press_event_t& event, bool pressed);
    void sendButton(const xcb_button_press_event_t& event, bool pressed);
    void onPointer(const xcb_motion_notify_event_t& event);
    void sendMouse(std::uint32_t message, std::uint16_t state, std::int32_t wheel, std::int32_t x,
                   std::int32_t y);
    bool isForClient(std::int32_t x, std::int32_t y) const;
    bool isDoubleClick(const xcb_button_press_event_t& event);

    Rectangle barRectangle(Axis axis) const;
    Rectangle thumbRectangle(Axis axis) const;
    Bar& bar(Axis axis) { return axis == Axis::Horizontal ? horizontal_ : vertical_; }
    const Bar& bar(Axis axis) const { return axis == Axis::Horizontal ? horizontal_ : vertical_; }
    bool pressBar(std::int32_t x, std::int32_t y);
    void pressBarAt(Axis axis, std::int32_t at);
    void dragThumb(std::int32_t x, std::int32_t y, ScrollCode code);
    void drawBars(PixelPaint& paint) const;

    X11Connection& connection_;
    IWindowEvents& events_;
    X11Canvas canvas_;
    xcb_window_t id_ = 0;
    xcb_gcontext_t gc_ = 0;
    std::u16string title_;
    bool closable_ = false;
    std::uint32_t style_ = 0;
    bool visible_ = false;
    Size size_;
    std::int32_t x_ = 0;
    std::int32_t y_ = 0;
    Bar horizontal_;
    Bar vertical_;
    Drag drag_;
    bool barPressed_ = false;  // the release belongs to a bar, too
    bool mouseTaken_ = false;
    bool ownCursor_ = false;
    xcb_timestamp_t lastPress_ = 0;
    xcb_button_t lastButton_ = 0;
    const xcb_button_press_event_t* current_ = nullptr;  // the mouse event at hand
};

}  // namespace tavra::platform
