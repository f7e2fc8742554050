#include "platform/linux/x11_messenger.h"

#include <poll.h>
#include <signal.h>

#include <cstring>
#include <ctime>
#include <string_view>

#include "base/never_destroyed.h"
#include "platform/last_error.h"
#include "platform/linux/x11_connection.h"

namespace tavra::platform {
namespace {

constexpr int kPatienceMs = 200;
constexpr std::string_view kMessageType = "TAVRA_MESSAGE";

// A server that goes away must not end the process: the signal of a broken pipe is kept off the thread, and
// taken back if it came.
class PipeSignalHeld {
  public:
    PipeSignalHeld() {
        sigset_t pending;
        sigpending(&pending);
        cameBefore_ = sigismember(&pending, SIGPIPE) == 1;
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~PipeSignalHeld() {
        const timespec now{};
        if (!cameBefore_) sigtimedwait(&pipe_, nullptr, &now);
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    PipeSignalHeld(const PipeSignalHeld&) = delete;
    PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;

  private:
    sigset_t pipe_{};
    sigset_t before_{};
    bool cameBefore_ = false;
};

}  // namespace

// A connection, and the type of the messages on it.
class X11Messenger::Wire {
  public:
    Wire() {
        if (!loadX11(x).ok()) return;
        raw = connectX11(*x, nullptr);
        if (broken()) return;
        const auto asked =
            x->xcb_intern_atom(raw, 0, static_cast<std::uint16_t>(kMessageType.size()), kMessageType.data());
        const Reply<xcb_intern_atom_reply_t> reply(x->xcb_intern_atom_reply(raw, asked, nullptr));
        if (reply) type = reply->atom;
    }
    ~Wire() {
        if (raw != nullptr) x->xcb_disconnect(raw);
    }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    bool broken() const { return raw == nullptr || x->xcb_connection_has_error(raw) != 0; }

    // Asks to be told of the window's end; the application's own wishes stay. False: it does not exist.
    bool watch(xcb_window_t window) const {
        const std::uint32_t wanted = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        const auto asked = x->xcb_change_window_attributes_checked(raw, window, XCB_CW_EVENT_MASK, &wanted);
        const Reply<xcb_generic_error_t> refused(x->xcb_request_check(raw, asked));
        return !refused && !broken();
    }

    // Whether a message can be written at once, within a time.
    bool takesMore(int timeoutMs) const {
        pollfd wire{x->xcb_get_file_descriptor(raw), POLLOUT, 0};
        return poll(&wire, 1, timeoutMs) == 1 && (wire.revents & POLLOUT) != 0;
    }

    void send(const xcb_client_message_event_t& event) const {
        char bytes[32] = {};
        static_assert(sizeof event == sizeof bytes);
        std::memcpy(bytes, &event, sizeof event);
        // Without a mask it goes to the client that made the window.
        x->xcb_send_event(raw, 0, event.window, XCB_EVENT_MASK_NO_EVENT, bytes);
        x->xcb_flush(raw);
    }

    const X11Library* x = nullptr;
    xcb_connection_t* raw = nullptr;
    xcb_atom_t type = XCB_ATOM_NONE;
};

// The window counts before the server is asked, so that its end is not missed.
void X11Messenger::name(xcb_window_t window) {
    const PipeSignalHeld held;
    const std::lock_guard naming(nameMutex_);
    const std::shared_ptr<Wire> wire = connected();
    if (wire == nullptr) return;
    {
        const std::lock_guard lock(mutex_);
        windows_.insert(window);
    }
    if (wire->watch(window)) return;
    const std::lock_guard lock(mutex_);
    forget(window);
}

std::shared_ptr<X11Messenger::Wire> X11Messenger::connected() {
    {
        const std::lock_guard lock(mutex_);
        takeNews();
        if (wire_ != nullptr) return wire_;
    }
    auto made = std::make_shared<Wire>();
    if (made->broken() || made->type == XCB_ATOM_NONE) return nullptr;
    const std::lock_guard lock(mutex_);
    wire_ = made;
    return made;
}

Status X11Messenger::post(xcb_window_t window, std::uint32_t message, std::uint64_t parameter1,
                          std::uint64_t parameter2) {
    const PipeSignalHeld held;
    const std::lock_guard lock(mutex_);
    takeNews();
    if (windows_.count(window) == 0) return failWith(error::kInvalidWindowHandle);
    if (!takesMore()) return failWith(error::kNotEnoughQuota);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = wire_->type;
    event.data.data32[0] = message;
    event.data.data32[1] = static_cast<std::uint32_t>(parameter1);
    event.data.data32[2] = static_cast<std::uint32_t>(parameter1 >> 32);
    event.data.data32[3] = static_cast<std::uint32_t>(parameter2);
    event.data.data32[4] = static_cast<std::uint32_t>(parameter2 >> 32);
    wire_->send(event);
    return wire_->broken() ? failWith(error::kInvalidWindowHandle) : Status();
}

bool X11Messenger::takesMore() {
    lagging_ = !wire_->takesMore(lagging_ ? 0 : kPatienceMs);
    return !lagging_;
}

// Windows that have ended since, or all of them with the connection. Does not wait.
void X11Messenger::takeNews() {
    if (wire_ == nullptr) return;
    const std::shared_ptr<Wire> wire = wire_;
    while (const Reply<xcb_generic_event_t> event{wire->x->xcb_poll_for_event(wire->raw)}) {
        if ((event->response_type & 0x7F) != XCB_DESTROY_NOTIFY) continue;
        forget(reinterpret_cast<const xcb_destroy_notify_event_t&>(*event).window);
    }
    if (!wire->broken()) return;
    windows_.clear();
    wire_.reset();
}

void X11Messenger::forget(xcb_window_t window) {
    windows_.erase(window);
    if (windows_.empty()) wire_.reset();
}

X11Messenger& x11Messenger() {
    static NeverDestroyed<X11Messenger> messenger;  // threads may post until the end
    return messenger.get();
}

}  // namespace tavra::platform
