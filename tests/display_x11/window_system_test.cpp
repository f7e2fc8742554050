// The windows themselves, without a camera: what their thread owes to the others.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

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
    void onSize(std::uint32_t, std::uint32_t, std::uint32_t) override { call(whenSized); }
    void onPaint(platform::IPaint&, platform::Size) override { call(whenPainted); }
    void onErase(platform::IPaint&) override {}
    void onCommand(std::uint64_t) override {}
    void onScroll(platform::Axis, platform::ScrollCode, std::int32_t) override {}
    void onMouse(const platform::MouseMessage&) override { call(whenMouse); }
    void onAltKey() override {}

    std::function<void()> whenDestroyed, whenSized, whenPainted, whenMouse;

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

}  // namespace
}  // namespace tavra::test
