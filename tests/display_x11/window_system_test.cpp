// The windows themselves, without a camera: what their thread owes to the others.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

#include "display_x11/user.h"
#include "platform/linux/x11_session.h"
#include "platform/window.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

// Something that one thread waits for and another does.
class Moment {
  public:
    void come() {
        const std::lock_guard lock(mutex_);
        came_ = true;
        changed_.notify_all();
    }
    bool waitFor(std::chrono::milliseconds patience) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, patience, [this] { return came_; });
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool came_ = false;
};

constexpr std::chrono::milliseconds kPatience{20000};

// Does what the test says, on the window's thread.
class EventsDouble final : public platform::IWindowEvents {
  public:
    void onCreate(TavraWindow) override {}
    void onDestroy() override { call(whenDestroyed); }
    void onMove() override {}
    void onSize(std::uint32_t, std::uint32_t width, std::uint32_t) override {
        if (whenSized) whenSized(width);
    }
    void onPaint(platform::IPaint&, platform::Size) override { call(whenPainted); }
    void onErase(platform::IPaint&) override {}
    void onCommand(std::uint64_t) override {}
    void onScroll(platform::Axis, platform::ScrollCode, std::int32_t) override {}
    void onMouse(const platform::MouseMessage&) override { call(whenMouse); }
    void onAltKey() override {}

    std::function<void()> whenDestroyed, whenPainted, whenMouse;
    std::function<void(std::uint32_t)> whenSized;  // with the width

  private:
    static void call(const std::function<void()>& what) {
        if (what) what();
    }
};

class WindowSystem : public testing::Test {
  protected:
    WindowSystem() {
        EXPECT_TRUE(server.started()) << "Xvfb does not start: scripts/install-deps test";
        EXPECT_TRUE(system.registerClass(true).ok());
    }
    ~WindowSystem() override { EXPECT_TRUE(system.unregisterClass(true).ok()); }

    static platform::WindowRequest request(TavraWindow parent = nullptr) {
        platform::WindowRequest made;
        made.style = platform::kStyleVisible | (parent != nullptr ? platform::kStyleChild : 0);
        made.size = {20, 10};
        made.parent = parent;
        return made;
    }
    TavraWindow make(EventsDouble& receiver, TavraWindow parent = nullptr) {
        TavraWindow window = nullptr;
        EXPECT_TRUE(system.create(request(parent), receiver, window).ok());
        return window;
    }
    static xcb_window_t native(TavraWindow window) {
        return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(window));
    }

    XServer server;
    platform::IWindowSystem& system = platform::windowSystem();
    EventsDouble events;
};

// Its owner is freed then.
TEST_F(WindowSystem, DestroyReturnsAfterTheWindowWasToldAlsoIfTheUserWasFirst) {
    Moment begun, destroyed;
    bool told = false;
    events.whenDestroyed = [&] {
        begun.come();
        static_cast<void>(destroyed.waitFor(std::chrono::milliseconds(200)));
        told = true;
    };
    const TavraWindow window = make(events);
    server.destroy(native(window));
    ASSERT_TRUE(begun.waitFor(kPatience));
    EXPECT_FALSE(system.isWindow(window));
    EXPECT_EQ(system.destroy(window).code(), 1400u);
    EXPECT_TRUE(told);
    destroyed.come();
}

// A new server counts its windows from where the old one did.
TEST_F(WindowSystem, WindowThatWentWithItsServerIsNoneOfTheNextServers) {
    Moment destroyed;
    events.whenDestroyed = [&] { destroyed.come(); };
    const TavraWindow lost = make(events), closed = make(events);
    server.destroy(native(closed));
    ASSERT_TRUE(destroyed.waitFor(kPatience));
    server.kill();
    XServer next;
    ASSERT_TRUE(next.started());
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (system.isWindow(lost) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_TRUE(system.registerClass(false).ok());
    EventsDouble others;
    for (int i = 0; i < 20; ++i) {
        const TavraWindow window = make(others);
        EXPECT_NE(window, lost);
        EXPECT_NE(window, closed);
        EXPECT_FALSE(system.isWindow(lost));
        EXPECT_FALSE(system.isWindow(closed));
        EXPECT_TRUE(system.destroy(window).ok());
    }
    EXPECT_TRUE(system.unregisterClass(false).ok());
}

TEST_F(WindowSystem, WindowInsideOfAnotherOfThemHasItsOwnEvents) {
    Moment outerSized, mouse;
    events.whenSized = [&](std::uint32_t width) {
        if (width == 33) outerSized.come();
    };
    EventsDouble innerEvents;
    innerEvents.whenMouse = [&] { mouse.come(); };
    const TavraWindow outer = make(events), inner = make(innerEvents, outer);
    server.resize(native(outer), 33, 30);  // comes after the news that there is a window inside
    ASSERT_TRUE(outerSized.waitFor(kPatience));
    platform::Rectangle place;
    ASSERT_TRUE(system.windowOnScreen(inner, place).ok());  // what the news led to is done, too
    User(server).moveTo(5, 5);
    EXPECT_TRUE(mouse.waitFor(kPatience));
    EXPECT_TRUE(system.destroy(inner).ok());
}

TEST_F(WindowSystem, EventsAreLostWithoutMemoryAndTheWindowsLiveOn) {
    Moment lost, painted;
    events.whenSized = [](std::uint32_t) { throw std::bad_alloc(); };
    events.whenDestroyed = [] { throw std::bad_alloc(); };
    events.whenPainted = [&, failed = false]() mutable {
        if (std::exchange(failed, true)) return painted.come();
        lost.come();
        throw std::bad_alloc();
    };
    const TavraWindow window = make(events);
    EXPECT_TRUE(system.isWindow(window));
    ASSERT_TRUE(lost.waitFor(kPatience));
    EXPECT_TRUE(system.postResize(window).ok());
    server.resize(native(window), 33, 30);
    EXPECT_TRUE(system.invalidate(window, false).ok());
    EXPECT_TRUE(painted.waitFor(kPatience));
    EXPECT_TRUE(system.destroy(window).ok());
}

TEST_F(WindowSystem, WorkWithoutMemoryFailsWhereItWasAskedFor) {
    platform::WindowNumbers numbers;
    platform::X11Session session(numbers);
    ASSERT_TRUE(session.start().ok());
    EXPECT_THROW(session.run([](platform::X11Connection&) { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_TRUE(session.run([](platform::X11Connection&) {}));
}

// A window manager puts the frame around the place then.
TEST_F(WindowSystem, PlacesAreOfTheWindowWithoutItsFrame) {
    constexpr std::uint32_t kPlaceWanted = 1, kHasGravity = 512, kStatic = 10;
    const TavraWindow window = make(events);
    platform::Rectangle place;
    ASSERT_TRUE(system.windowOnScreen(window, place).ok());  // the server has all that came before
    const auto asked = xcb_get_property(server.connection(), 0, native(window), XCB_ATOM_WM_NORMAL_HINTS,
                                        XCB_ATOM_ANY, 0, 18);
    xcb_get_property_reply_t* const reply = xcb_get_property_reply(server.connection(), asked, nullptr);
    ASSERT_NE(reply, nullptr);
    ASSERT_EQ(xcb_get_property_value_length(reply), 18 * 4);
    const auto* const hints = static_cast<const std::uint32_t*>(xcb_get_property_value(reply));
    EXPECT_EQ(hints[0], kPlaceWanted | kHasGravity);
    EXPECT_EQ(hints[17], kStatic);
    std::free(reply);
}

}  // namespace
}  // namespace tavra::test
