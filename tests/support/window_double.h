// Windows that exist in memory only: a system with one window, which writes down what it is asked for and
// does what a test says. The test plays the window's thread by calling the events itself.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/window.h"
#include "support/recording_paint.h"

namespace tavra::test {

class WindowDouble final : public platform::IWindowSystem {
  public:
    static constexpr std::uint32_t kFrame = 10;  // all that a frame adds, on each axis
    static constexpr std::uint32_t kBarHeight = 16, kBarWidth = 18;
    static constexpr std::uint32_t kInvalidWindow = 1400;

    Status registerClass(bool closable) override {
        log.push_back(closable ? "register closable" : "register");
        return registerResult;
    }
    Status unregisterClass(bool closable) override {
        log.push_back(closable ? "unregister closable" : "unregister");
        return unregisterResult;
    }
    Status create(const platform::WindowRequest& asked, platform::IWindowEvents& receiver,
                  TavraWindow& window) override {
        log.push_back("create");
        request = asked;
        if (!createResult.ok()) return createResult;
        events = &receiver;
        exists = true;
        titleText = asked.title;
        outer = {asked.x, asked.y, asked.x + static_cast<int>(asked.size.width),
                 asked.y + static_cast<int>(asked.size.height)};
        client = outer;
        window = handle();
        events->onCreate(window);
        if (whenCreated) whenCreated();
        return Status();
    }
    Status destroy(TavraWindow window) override {
        if (!isWindow(window)) return Status(kInvalidWindow);
        if (!destroyResult.ok()) return destroyResult;
        close();
        return Status();
    }
    // As the user does.
    void close() {
        log.push_back("destroy");
        exists = false;
        platform::IWindowEvents* const last = std::exchange(events, nullptr);
        if (whenDestroyed) whenDestroyed();
        last->onDestroy();
    }
    bool isWindow(TavraWindow window) override { return exists && window == handle(); }
    bool isActive(TavraWindow) override { return active; }

    Status setTitle(TavraWindow window, const std::u16string& text) override {
        if (!isWindow(window)) return Status(kInvalidWindow);
        titleText = text;
        return Status();
    }
    std::u16string title(TavraWindow window) override {
        return isWindow(window) ? titleText : std::u16string();
    }
    Status setStyle(TavraWindow window, std::uint32_t style) override {
        log.push_back("style " + std::to_string(style));
        return isWindow(window) ? styleResult : Status(kInvalidWindow);
    }
    Status outerSize(platform::Size size, std::uint32_t, TavraMenu, platform::Size& result) override {
        result = {size.width + kFrame, size.height + kFrame};
        return outerSizeResult;
    }
    platform::Size workArea() override { return area; }
    Status desktop(platform::Rectangle& rectangle) override {
        if (desktopResult.ok()) rectangle = {0, 0, 1280, 1024};
        return desktopResult;
    }
    Status place(TavraWindow window, std::int32_t x, std::int32_t y, platform::Size size) override {
        log.push_back("place " + std::to_string(x) + "," + std::to_string(y) + " " +
                      std::to_string(size.width) + "x" + std::to_string(size.height));
        return isWindow(window) ? placeResult : Status(kInvalidWindow);
    }
    Status windowOnScreen(TavraWindow window, platform::Rectangle& rectangle) override {
        if (!isWindow(window)) return Status(kInvalidWindow);
        rectangle = outer;
        return Status();
    }
    Status clientOnScreen(TavraWindow window, platform::Rectangle& rectangle) override {
        if (window == parentHandle()) {
            rectangle = parentClient;
            return Status();
        }
        if (!isWindow(window) || !clientResult.ok()) return Status(kInvalidWindow);
        rectangle = client;
        return Status();
    }
    Status invalidate(TavraWindow window, bool erase) override {
        log.push_back(erase ? "invalidate erase" : "invalidate");
        return isWindow(window) ? invalidateResult : Status(kInvalidWindow);
    }
    Status postResize(TavraWindow window) override {
        log.push_back("post resize");
        return isWindow(window) ? postResult : Status(kInvalidWindow);
    }
    void setScrollBar(TavraWindow, platform::Axis axis, const platform::ScrollBar& bar) override {
        (axis == platform::Axis::Horizontal ? horizontal : vertical) = bar;
        log.push_back(axis == platform::Axis::Horizontal ? "bar h" : "bar v");
    }
    std::uint32_t scrollBarThickness(platform::Axis axis) override {
        return axis == platform::Axis::Horizontal ? kBarHeight : kBarWidth;
    }
    void takeMouse(TavraWindow) override { log.push_back("take mouse"); }
    void releaseMouse(TavraWindow) override { log.push_back("release mouse"); }
    void setCursor(TavraWindow, platform::Cursor cursor) override {
        log.push_back(cursor == platform::Cursor::ZoomIn ? "cursor in" : "cursor out");
    }
    bool altHeld() override { return alt; }
    void forward(TavraWindow, TavraWindow parent, const platform::MouseMessage& mouse) override {
        log.push_back("forward " + std::to_string(mouse.message) + " to " +
                      (parent == parentHandle() ? "parent" : "another"));
    }

    TavraWindow handle() { return &exists; }
    TavraWindow parentHandle() { return &parentClient; }
    // A client area on the screen, with a window as large around it.
    void setClient(int left, int top, int width, int height) {
        client = outer = {left, top, left + width, top + height};
    }
    std::vector<std::string> takeLog() { return std::exchange(log, {}); }

    // What the application does inside of a creation or a destruction.
    std::function<void()> whenCreated, whenDestroyed;
    std::vector<std::string> log;
    platform::WindowRequest request;
    platform::IWindowEvents* events = nullptr;
    bool exists = false;
    bool active = true;
    bool alt = false;
    std::u16string titleText;
    platform::Size area{1280, 1000};
    platform::Rectangle outer, client, parentClient{100, 50, 900, 650};
    platform::ScrollBar horizontal, vertical;
    Status registerResult, unregisterResult, createResult, styleResult, outerSizeResult, desktopResult,
        placeResult, clientResult, destroyResult, invalidateResult, postResult;
};

}  // namespace tavra::test
