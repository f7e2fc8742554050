#include "platform/linux/x11_session.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

namespace tavra::platform {
namespace {

TavraWindow handleOf(xcb_window_t id) {
    return reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(id));
}

// The window that an event is about; 0 if none of ours.
xcb_window_t windowOf(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
        case XCB_EXPOSE: return reinterpret_cast<const xcb_expose_event_t&>(event).window;
        case XCB_CONFIGURE_NOTIFY: return reinterpret_cast<const xcb_configure_notify_event_t&>(event).window;
        case XCB_DESTROY_NOTIFY: return reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
        case XCB_CLIENT_MESSAGE: return reinterpret_cast<const xcb_client_message_event_t&>(event).window;
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE:
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE:
        case XCB_MOTION_NOTIFY:
        case XCB_LEAVE_NOTIFY: return reinterpret_cast<const xcb_button_press_event_t&>(event).event;
        default: return 0;
    }
}

// False: the memory did not last, and the work is done in part. The window thread lives on: it has other
// windows, and those of the application do not end with it.
template <typename Work>
bool withinMemory(const Work& work) {
    try {
        work();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

Status X11Session::start() {
    TAVRA_RETURN_IF_ERROR(thread_.start("tavra-window", ThreadPriority::Normal, [this] { threadMain(); }));
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !connecting_; });
    return connected_;
}

void X11Session::stop() {
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
    }
    wake_.set();
    thread_.join();
}

bool X11Session::running() const {
    const std::lock_guard lock(mutex_);
    return alive_;
}

bool X11Session::isOwnThread() const {
    return threadId_ == std::this_thread::get_id();
}

bool X11Session::run(const std::function<void(X11Connection&)>& work) {
    std::unique_lock lock(mutex_);
    if (isOwnThread()) {
        lock.unlock();
        work(*connection_);
        return true;
    }
    if (!alive_) return false;
    Job job{&work};
    jobs_.push_back(&job);
    wake_.set();
    changed_.wait(lock, [&job] { return job.done; });
    if (job.outOfMemory) throw std::bad_alloc();
    return job.ran;
}

bool X11Session::runOn(TavraWindow window, const std::function<void(X11Window&)>& work) {
    bool found = false;
    const bool ran = run([&](X11Connection&) {
        X11Window* const target = find(window);
        found = target != nullptr;
        if (found) work(*target);
    });
    return ran && found;
}

bool X11Session::isWindow(TavraWindow window) const {
    const std::lock_guard lock(mutex_);
    return windows_.count(window) != 0;
}

bool X11Session::mark(TavraWindow window, bool paint, bool erase, bool resize) {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    if (found == windows_.end()) return false;
    Entry& entry = found->second;
    entry.paint = entry.paint || paint;
    entry.erase = entry.erase || erase;
    entry.resizes += resize ? 1 : 0;
    wake_.set();
    return true;
}

void X11Session::markResized(TavraWindow window) {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    if (found == windows_.end()) return;
    found->second.resizes = std::max(found->second.resizes, 1u);
    wake_.set();
}

// The window thread.

void X11Session::threadMain() {
    // A server that goes away must not end the process.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    X11Connection connection;
    connection_ = &connection;
    const Status opened = connection.open();
    {
        const std::lock_guard lock(mutex_);
        threadId_ = std::this_thread::get_id();
        connected_ = opened;
        if (opened.ok()) screen_ = {connection.screen->width_in_pixels, connection.screen->height_in_pixels};
        connecting_ = false;
        alive_ = opened.ok();
    }
    changed_.notify_all();
    if (!opened.ok()) return;
    loop();
    destroyAll(!connection.broken());
    {
        const std::lock_guard lock(mutex_);
        alive_ = false;
        threadId_ = {};  // the system may give it to another thread
    }
    runJobs(false);
}

void X11Session::loop() {
    for (;;) {
        bool worked = handleEvents();
        worked = runJobs(true) || worked;
        static_cast<void>(withinMemory([&] { worked = tellResizes() || worked; }));
        static_cast<void>(withinMemory([&] { worked = paintMarked() || worked; }));
        connection_->x->xcb_flush(connection_->raw);
        if (connection_->broken()) return;
        {
            const std::lock_guard lock(mutex_);
            if (stop_) return;
        }
        if (worked) continue;  // what was asked meanwhile may have brought events with its answers
        pollfd both[] = {{connection_->x->xcb_get_file_descriptor(connection_->raw), POLLIN, 0},
                         {static_cast<int>(wake_.native()), POLLIN, 0}};
        poll(both, 2, -1);
        wake_.wait(0);  // reset
    }
}

bool X11Session::runJobs(bool reallyRun) {
    for (bool any = false;; any = true) {
        Job* job = nullptr;
        {
            const std::lock_guard lock(mutex_);
            if (jobs_.empty()) return any;
            job = jobs_.front();
            jobs_.pop_front();
        }
        const bool completed = !reallyRun || withinMemory([&] { (*job->work)(*connection_); });
        connection_->x->xcb_flush(connection_->raw);
        {
            const std::lock_guard lock(mutex_);
            job->ran = reallyRun;
            job->outOfMemory = !completed;
            job->done = true;
        }
        changed_.notify_all();
    }
}

bool X11Session::handleEvents() {
    bool any = false;
    while (const Reply<xcb_generic_event_t> event{connection_->x->xcb_poll_for_event(connection_->raw)}) {
        static_cast<void>(withinMemory([&] { handle(*event); }));
        any = true;
    }
    return any;
}

void X11Session::handle(const xcb_generic_event_t& event) {
    if (handleInner(event)) return;
    const TavraWindow handle = handleOf(windowOf(event));
    X11Window* const window = find(handle);
    if (window == nullptr) return;
    switch (event.response_type & 0x7F) {
        case XCB_EXPOSE: mark(handle, true, false, false); return;
        case XCB_DESTROY_NOTIFY: destroy(handle, false); return;
        default: break;
    }
    if (window->handle(event)) destroy(handle, true);
}

// What draws on a window inside of ours knows nothing of its exposures: they are those of ours.
bool X11Session::handleInner(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
        case XCB_CREATE_NOTIFY: {
            const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
            if (find(handleOf(created.window)) != nullptr) return true;  // one of ours, in another
            const std::uint32_t mask = XCB_EVENT_MASK_EXPOSURE;
            connection_->x->xcb_change_window_attributes(connection_->raw, created.window, XCB_CW_EVENT_MASK,
                                                         &mask);
            inner_[created.window] = handleOf(created.parent);
            mark(handleOf(created.parent), true, false, false);
            return true;
        }
        case XCB_DESTROY_NOTIFY:
            return inner_.erase(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window) != 0;
        case XCB_EXPOSE: {
            const auto found = inner_.find(reinterpret_cast<const xcb_expose_event_t&>(event).window);
            if (found == inner_.end()) return false;
            mark(found->second, true, false, false);
            return true;
        }
        default: return false;
    }
}

bool X11Session::tellResizes() {
    std::vector<std::pair<X11Window*, std::uint32_t>> told;
    {
        const std::lock_guard lock(mutex_);
        for (auto& [handle, entry] : windows_) {
            if (entry.resizes != 0) told.emplace_back(entry.window.get(), std::exchange(entry.resizes, 0));
        }
    }
    for (const auto& resize : told) {
        for (std::uint32_t i = 0; i < resize.second; ++i) {
            static_cast<void>(
                withinMemory([&] { resize.first->events().onSize(IWindowEvents::kRestored, 0, 0); }));
        }
    }
    return !told.empty();
}

bool X11Session::paintMarked() {
    std::vector<std::pair<X11Window*, bool>> marked;
    {
        const std::lock_guard lock(mutex_);
        for (auto& [handle, entry] : windows_) {
            if (!entry.paint) continue;
            marked.emplace_back(entry.window.get(), entry.erase);
            entry.paint = entry.erase = false;
        }
    }
    for (const auto& painting : marked) {
        static_cast<void>(withinMemory([&] { painting.first->paint(painting.second); }));
    }
    return !marked.empty();
}

Status X11Session::create(const WindowRequest& request, IWindowEvents& events, TavraWindow& window) {
    auto made = std::make_unique<X11Window>(*connection_, events);
    TAVRA_RETURN_IF_ERROR(made->create(request, numbers_));
    window = handleOf(made->id());
    X11Window& created = *made;
    {
        const std::lock_guard lock(mutex_);
        windows_[window].window = std::move(made);
    }
    // There is a window now, whatever becomes of the first news of it.
    static_cast<void>(withinMemory([&] {
        const Size client = created.clientSize();
        events.onSize(IWindowEvents::kRestored, client.width, client.height);
        while (tellResizes()) {  // bars that the first has brought
        }
        events.onMove();
    }));
    return Status();
}

// The window is no window any more when it is told of its end.
void X11Session::destroy(TavraWindow window, bool onServer) {
    std::unique_ptr<X11Window> ended;
    {
        const std::lock_guard lock(mutex_);
        const auto found = windows_.find(window);
        if (found == windows_.end()) return;
        ended = std::move(found->second.window);
        windows_.erase(found);
    }
    if (!onServer) ended->forget();
    static_cast<void>(withinMemory([&] { ended->events().onDestroy(); }));
}

void X11Session::destroyAll(bool onServer) {
    for (;;) {
        TavraWindow next = nullptr;
        {
            const std::lock_guard lock(mutex_);
            if (windows_.empty()) return;
            next = windows_.begin()->first;
        }
        destroy(next, onServer);
    }
}

X11Window* X11Session::find(TavraWindow window) const {
    const std::lock_guard lock(mutex_);
    const auto found = windows_.find(window);
    return found == windows_.end() ? nullptr : found->second.window.get();
}

}  // namespace tavra::platform
