// Doubles in the place of the platform's own windows, bitmaps, memory contexts, surfaces, sprites and timer
// resolution: a program that lists seams.cpp has these, for whatever a program defines itself is not taken
// from the library's archive. One of each in the process; a test begins with reset().
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/event.h"
#include "platform/window.h"
#include "support/sprite_double.h"
#include "support/surface_double.h"
#include "support/window_double.h"

namespace tavra::test {

// The one window of a WindowDouble, which the threads of a stream meet at.
class SharedWindow final : public platform::IWindowSystem {
  public:
    struct Invalidation {
        std::thread::id thread;
        bool erase;
    };

    void reset() {
        const std::lock_guard lock(mutex_);
        window_ = WindowDouble();
        invalidations_.clear();
        invalidated_.reset();
    }
    template <typename Function>
    auto locked(Function function) {
        const std::lock_guard lock(mutex_);
        return function(window_);
    }
    // Of the window, for a test that plays its thread.
    platform::IWindowEvents& events() {
        return *locked([](WindowDouble& window) { return window.events; });
    }
    // As the user does.
    void close() {
        locked([](WindowDouble& window) { window.close(); });
    }

    std::vector<Invalidation> takeInvalidations() {
        return locked([this](WindowDouble&) { return std::exchange(invalidations_, {}); });
    }
    std::size_t invalidationCount() {
        return locked([this](WindowDouble&) { return invalidations_.size(); });
    }
    // False: so many did not come.
    bool waitForInvalidations(std::size_t count, std::uint32_t timeoutMs) {
        while (invalidationCount() < count) {
            if (!invalidated_.wait(timeoutMs)) return false;
        }
        return true;
    }

    Status registerClass(bool closable) override {
        return locked([&](auto& window) { return window.registerClass(closable); });
    }
    Status unregisterClass(bool closable) override {
        return locked([&](auto& window) { return window.unregisterClass(closable); });
    }
    Status create(const platform::WindowRequest& request, platform::IWindowEvents& events,
                  TavraWindow& handle) override {
        return locked([&](auto& window) { return window.create(request, events, handle); });
    }
    Status destroy(TavraWindow handle) override {
        return locked([&](auto& window) { return window.destroy(handle); });
    }
    bool isWindow(TavraWindow handle) override {
        return locked([&](auto& window) { return window.isWindow(handle); });
    }
    bool isActive(TavraWindow handle) override {
        return locked([&](auto& window) { return window.isActive(handle); });
    }
    Status setTitle(TavraWindow handle, const std::u16string& title) override {
        return locked([&](auto& window) { return window.setTitle(handle, title); });
    }
    std::u16string title(TavraWindow handle) override {
        return locked([&](auto& window) { return window.title(handle); });
    }
    Status setStyle(TavraWindow handle, std::uint32_t style) override {
        return locked([&](auto& window) { return window.setStyle(handle, style); });
    }
    Status outerSize(platform::Size client, std::uint32_t style, TavraMenu menu,
                     platform::Size& outer) override {
        return locked([&](auto& window) { return window.outerSize(client, style, menu, outer); });
    }
    platform::Size workArea() override {
        return locked([](auto& window) { return window.workArea(); });
    }
    Status desktop(platform::Rectangle& rectangle) override {
        return locked([&](auto& window) { return window.desktop(rectangle); });
    }
    Status place(TavraWindow handle, std::int32_t x, std::int32_t y, platform::Size size) override {
        return locked([&](auto& window) { return window.place(handle, x, y, size); });
    }
    Status windowOnScreen(TavraWindow handle, platform::Rectangle& rectangle) override {
        return locked([&](auto& window) { return window.windowOnScreen(handle, rectangle); });
    }
    Status clientOnScreen(TavraWindow handle, platform::Rectangle& rectangle) override {
        return locked([&](auto& window) { return window.clientOnScreen(handle, rectangle); });
    }
    Status invalidate(TavraWindow handle, bool erase) override {
        const Status status = locked([&](auto& window) {
            invalidations_.push_back({std::this_thread::get_id(), erase});
            return window.invalidate(handle, erase);
        });
        invalidated_.set();
        return status;
    }
    Status postResize(TavraWindow handle) override {
        return locked([&](auto& window) { return window.postResize(handle); });
    }
    void setScrollBar(TavraWindow handle, platform::Axis axis, const platform::ScrollBar& bar) override {
        locked([&](auto& window) { window.setScrollBar(handle, axis, bar); });
    }
    std::uint32_t scrollBarThickness(platform::Axis axis) override {
        return locked([&](auto& window) { return window.scrollBarThickness(axis); });
    }
    void takeMouse(TavraWindow handle) override {
        locked([&](auto& window) { window.takeMouse(handle); });
    }
    void releaseMouse(TavraWindow handle) override {
        locked([&](auto& window) { window.releaseMouse(handle); });
    }
    void setCursor(TavraWindow handle, platform::Cursor cursor) override {
        locked([&](auto& window) { window.setCursor(handle, cursor); });
    }
    bool altHeld() override {
        return locked([](auto& window) { return window.altHeld(); });
    }
    void forward(TavraWindow handle, TavraWindow parent, const platform::MouseMessage& mouse) override {
        locked([&](auto& window) { window.forward(handle, parent, mouse); });
    }

  private:
    std::recursive_mutex mutex_;  // a window that is made or ends calls its events
    WindowDouble window_;
    std::vector<Invalidation> invalidations_;
    platform::Event invalidated_{platform::Event::Reset::Auto};
};

struct Seams {
    // What happens on memory contexts: "context" where one is made, "dc" and "paint" where they are asked
    // for, what was painted, "end"; also fills of a device context, and what callbacks of a test add. Of the
    // thread that draws; a test looks when the stream has ended.
    std::vector<std::string> drawing;
    Status textResult;  // of all texts
    Status lineResult;  // of all lines
    Status fillResult;  // of all fills of a device context

    SharedWindow window;
    SurfaceSystemDouble surfaces;
    SpriteDouble sprites;
    std::atomic<int> timerRaises{0}, timerRestores{0};

    void reset();
};

Seams& seams();

}  // namespace tavra::test
