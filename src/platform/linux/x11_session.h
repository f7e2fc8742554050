// The window thread: a connection to the X server and the windows on it. Everything that the server is asked
// happens on this thread; other threads hand it work and wait, or mark what is to be painted.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "base/status.h"
#include "platform/event.h"
#include "platform/linux/window_numbers.h"
#include "platform/linux/x11_window.h"
#include "platform/thread.h"
#include "platform/window.h"

namespace tavra::platform {

class X11Session {
  public:
    // numbers: outlive the session.
    explicit X11Session(WindowNumbers& numbers) : numbers_(numbers) {}
    // Waits until the connection stands, or does not.
    Status start();
    ~X11Session() { stop(); }
    // Ends thread, windows and connection. Not on the window thread, which may hold a reference till then.
    void stop();

    // False once the connection is lost: the windows are gone then, and nothing runs any more.
    bool running() const;

    // As it was when the connection was made. Does not wait for the window thread.
    Size screen() const { return screen_; }

    // Runs `work(connection)` on the window thread, and waits for it; at once if this is the window thread.
    // False: it did not run. Throws std::bad_alloc if the memory did not last.
    bool run(const std::function<void(X11Connection&)>& work);
    // The same with a window. False also if there is no such window.
    bool runOn(TavraWindow window, const std::function<void(X11Window&)>& work);

    bool isWindow(TavraWindow window) const;
    // Any thread, without waiting. False: there is no such window.
    bool mark(TavraWindow window, bool paint, bool erase, bool resize);
    // The client area is another: told once, whatever else is still to be told.
    void markResized(TavraWindow window);

    // On the window thread.
    Status create(const WindowRequest& request, IWindowEvents& events, TavraWindow& window);
    void destroy(TavraWindow window, bool onServer);

  private:
    struct Entry {
        std::unique_ptr<X11Window> window;
        bool paint = false;
        bool erase = false;
        std::uint32_t resizes = 0;  // that are still to be told
    };
    struct Job {
        const std::function<void(X11Connection&)>* work;
        bool ran = false;
        bool outOfMemory = false;
        bool done = false;
    };

    void threadMain();
    void loop();
    bool isOwnThread() const;
    bool runJobs(bool reallyRun);
    bool handleEvents();
    void handle(const xcb_generic_event_t& event);
    bool tellResizes();
    bool paintMarked();
    void destroyAll(bool onServer);
    bool handleInner(const xcb_generic_event_t& event);
    X11Window* find(TavraWindow window) const;

    WindowNumbers& numbers_;
    Thread thread_;
    Event wake_{Event::Reset::Auto};
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::thread::id threadId_;
    bool connecting_ = true;
    bool alive_ = false;
    bool stop_ = false;
    Status connected_;
    Size screen_;  // from the end of start on
    std::deque<Job*> jobs_;
    std::map<TavraWindow, Entry> windows_;  // changed by the window thread only, under the mutex
    X11Connection* connection_ = nullptr;   // of the window thread
    // Of the window thread: windows that were made inside of ours, by what draws on them; to ours.
    std::map<xcb_window_t, TavraWindow> inner_;
};

}  // namespace tavra::platform
