// Windows on an X server, as the rest of the library sees them.
#include <memory>
#include <mutex>
#include <new>

#include "base/never_destroyed.h"
#include "platform/last_error.h"
#include "platform/linux/window_numbers.h"
#include "platform/linux/x11_session.h"
#include "platform/window.h"

namespace tavra::platform {
namespace {

const Status kNoSuchWindow(error::kInvalidWindowHandle);

class X11Windows final : public IWindowSystem {
  public:
    // The session lives from the first registration to the last unregistration. One whose server is gone is
    // replaced by the next registration.
    Status registerClass(bool) override {
        const std::lock_guard lock(mutex_);
        if (session_ == nullptr || !session_->running()) {
            auto started = std::make_shared<X11Session>(numbers_);
            TAVRA_RETURN_IF_ERROR(started->start());
            session_ = std::move(started);
        }
        ++registrations_;
        return Status();
    }
    Status unregisterClass(bool) override {
        std::shared_ptr<X11Session> last;
        {
            const std::lock_guard lock(mutex_);
            if (registrations_ > 0 && --registrations_ == 0) {
                last = std::move(session_);
                numbers_.giveAllBack();
            }
        }
        if (last != nullptr) last->stop();
        return Status();
    }

    Status create(const WindowRequest& request, IWindowEvents& events, TavraWindow& window) override {
        Status status = kNoSuchWindow;
        const auto current = session();
        if (current == nullptr) return status;
        current->run([&](X11Connection&) {
            try {
                status = current->create(request, events, window);
            } catch (const std::bad_alloc&) {
                status = Status(error::kOutOfMemory);
            }
        });
        return status;
    }
    Status destroy(TavraWindow window) override {
        const auto current = session();
        if (current == nullptr) return kNoSuchWindow;
        // Also of a window that has just ended: the window thread may still be telling of that.
        bool existed = false;
        current->run([&](X11Connection&) {
            existed = current->isWindow(window);
            current->destroy(window, true);
        });
        numbers_.giveBack(nativeOf(window));
        return existed ? Status() : kNoSuchWindow;
    }
    bool isWindow(TavraWindow window) override {
        const auto current = session();
        return current != nullptr && current->isWindow(window);
    }
    bool isActive(TavraWindow window) override {
        bool active = false;
        return on(window, [&](X11Window& target) { active = target.active(); }).ok() && active;
    }

    Status setTitle(TavraWindow window, const std::u16string& title) override {
        return on(window, [&](X11Window& target) { target.setTitle(title); });
    }
    std::u16string title(TavraWindow window) override {
        std::u16string text;
        static_cast<void>(on(window, [&](X11Window& target) { text = target.title(); }));
        return text;
    }
    Status setStyle(TavraWindow window, std::uint32_t style) override {
        return on(window, [&](X11Window& target) { target.setStyle(style); });
    }

    // Frames are the window manager's, and menus there are none.
    Status outerSize(Size client, std::uint32_t, TavraMenu, Size& outer) override {
        outer = client;
        return Status();
    }
    Size workArea() override {
        Size area;
        if (const auto current = session()) {
            current->run([&](X11Connection& connection) { area = connection.workArea(); });
        }
        return area;
    }
    Status desktop(Rectangle& rectangle) override {
        const auto current = session();
        if (current == nullptr || !current->running()) return kNoSuchWindow;
        const Size screen = current->screen();
        rectangle = {0, 0, static_cast<std::int32_t>(screen.width), static_cast<std::int32_t>(screen.height)};
        return Status();
    }
    Status place(TavraWindow window, std::int32_t x, std::int32_t y, Size size) override {
        return on(window, [&](X11Window& target) { target.place(x, y, size); });
    }
    Status windowOnScreen(TavraWindow window, Rectangle& rectangle) override {
        Status status;
        const Status found = on(window, [&](X11Window& target) { status = target.onScreen(rectangle); });
        return found.ok() ? status : foreignOnScreen(window, rectangle);
    }
    Status clientOnScreen(TavraWindow window, Rectangle& rectangle) override {
        Status status;
        const Status found = on(window, [&](X11Window& target) {
            status = target.onScreen(rectangle);
            const Size client = target.clientSizeIn({static_cast<std::uint32_t>(rectangle.width()),
                                                     static_cast<std::uint32_t>(rectangle.height())});
            rectangle.right = rectangle.left + static_cast<std::int32_t>(client.width);
            rectangle.bottom = rectangle.top + static_cast<std::int32_t>(client.height);
        });
        return found.ok() ? status : foreignOnScreen(window, rectangle);
    }

    Status invalidate(TavraWindow window, bool erase) override { return mark(window, true, erase, false); }
    Status postResize(TavraWindow window) override { return mark(window, false, false, true); }

    // A bar that comes or goes changes the client area, which is told like any other change of it.
    void setScrollBar(TavraWindow window, Axis axis, const ScrollBar& bar) override {
        bool changed = false;
        static_cast<void>(on(window, [&](X11Window& target) {
            const Size before = target.clientSize();
            target.setScrollBar(axis, bar);
            changed = target.clientSize() != before;
        }));
        if (!changed) return;
        if (const auto current = session()) current->markResized(window);
    }
    std::uint32_t scrollBarThickness(Axis) override { return X11Window::kBarThickness; }
    void takeMouse(TavraWindow window) override {
        static_cast<void>(on(window, [](X11Window& target) { target.setMouse(true); }));
    }
    void releaseMouse(TavraWindow window) override {
        static_cast<void>(on(window, [](X11Window& target) { target.setMouse(false); }));
    }
    void setCursor(TavraWindow window, Cursor cursor) override {
        static_cast<void>(on(window, [cursor](X11Window& target) { target.setCursor(cursor); }));
    }
    bool altHeld() override {
        const auto current = session();
        bool held = false;
        if (current != nullptr) current->run([&](X11Connection& connection) { held = connection.altHeld; });
        return held;
    }
    void forward(TavraWindow window, TavraWindow parent, const MouseMessage&) override {
        const xcb_window_t to = nativeOf(parent);
        if (to != 0) static_cast<void>(on(window, [to](X11Window& target) { target.forward(to); }));
    }

  private:
    std::shared_ptr<X11Session> session() const {
        const std::lock_guard lock(mutex_);
        return session_;
    }
    template <typename Work>
    Status on(TavraWindow window, Work work) const {
        const auto current = session();
        return current != nullptr && current->runOn(window, work) ? Status() : kNoSuchWindow;
    }
    Status mark(TavraWindow window, bool paint, bool erase, bool resize) const {
        const auto current = session();
        const bool marked = current != nullptr && current->mark(window, paint, erase, resize);
        return marked ? Status() : kNoSuchWindow;
    }
    // A window of the application's.
    Status foreignOnScreen(TavraWindow window, Rectangle& rectangle) const {
        Status status = kNoSuchWindow;
        const xcb_window_t number = nativeOf(window);
        const auto current = session();
        if (current == nullptr || number == 0) return status;
        current->run([&](X11Connection& connection) { status = connection.onScreen(number, rectangle); });
        return status;
    }

    WindowNumbers numbers_;  // of all sessions
    mutable std::mutex mutex_;
    std::shared_ptr<X11Session> session_;
    std::uint32_t registrations_ = 0;
};

}  // namespace

IWindowSystem& windowSystem() {
    static NeverDestroyed<X11Windows> system;  // threads may ask until the end
    return system.get();
}

}  // namespace tavra::platform
