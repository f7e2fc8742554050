// The receiver queues of tavra_host.h, and posting to them or to X11 windows.
#include "platform/messages.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "base/never_destroyed.h"
#include "platform/event.h"
#include "platform/last_error.h"
#include "platform/linux/x11_messenger.h"
#include "tavra/tavra_host.h"

namespace tavra::platform {
namespace {

constexpr std::size_t kQueueLimit = 10000;

class Receiver {
  public:
    Status post(const TavraMessage& message) {
        const std::lock_guard lock(mutex_);
        if (messages_.size() >= kQueueLimit) return failWith(error::kNotEnoughQuota);
        try {
            messages_.push_back(message);
        } catch (const std::bad_alloc&) {
            return failWith(error::kOutOfMemory);
        }
        notEmpty_.set();
        return Status();
    }

    // Another waiter may take the message first; then the wait goes on, within the same time.
    bool take(TavraMessage& message, std::uint32_t timeoutMs) {
        using Clock = std::chrono::steady_clock;
        const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
            const bool forever = timeoutMs == kWaitForever;
            const auto waitMs = static_cast<std::uint32_t>(std::max<std::int64_t>(left, 0));
            if (!notEmpty_.wait(forever ? kWaitForever : waitMs)) return false;
            const std::lock_guard lock(mutex_);
            if (messages_.empty()) continue;
            message = messages_.front();
            messages_.pop_front();
            if (messages_.empty()) notEmpty_.reset();
            return true;
        }
    }

    int descriptor() const { return static_cast<int>(notEmpty_.native()); }
    bool valid() const { return notEmpty_.valid(); }

  private:
    std::mutex mutex_;
    std::deque<TavraMessage> messages_;
    Event notEmpty_{Event::Reset::Manual};
};

// All receivers that exist, so that a window handle of another kind, or a receiver already destroyed, is
// recognised and never dereferenced.
class ReceiverRegistry {
  public:
    std::shared_ptr<Receiver> find(TavraWindow handle) {
        const std::lock_guard lock(mutex_);
        const auto found = locate(handle);
        return found == receivers_.end() ? nullptr : *found;
    }

    TavraWindow add(std::shared_ptr<Receiver> receiver) {
        const std::lock_guard lock(mutex_);
        receivers_.push_back(std::move(receiver));
        return receivers_.back().get();
    }

    void remove(TavraWindow handle) {
        const std::lock_guard lock(mutex_);
        const auto found = locate(handle);
        if (found != receivers_.end()) receivers_.erase(found);
    }

  private:
    std::vector<std::shared_ptr<Receiver>>::iterator locate(TavraWindow handle) {
        return std::find_if(receivers_.begin(), receivers_.end(),
                            [handle](const auto& receiver) { return receiver.get() == handle; });
    }

    std::mutex mutex_;
    std::vector<std::shared_ptr<Receiver>> receivers_;
};

ReceiverRegistry& registry() {
    static NeverDestroyed<ReceiverRegistry> instance;  // threads may post until the end
    return instance.get();
}

// 0, which is no window, for what cannot be one.
xcb_window_t x11WindowOf(TavraWindow receiver) {
    const auto number = reinterpret_cast<std::uintptr_t>(receiver);
    return number > 0xFFFFFFFF ? 0 : static_cast<xcb_window_t>(number);
}

}  // namespace

void nameReceiver(TavraWindow receiver) {
    const xcb_window_t window = x11WindowOf(receiver);
    if (window != 0 && registry().find(receiver) == nullptr) x11Messenger().name(window);
}

Status postMessage(TavraWindow receiver, std::uint32_t message, std::uint64_t parameter1,
                   std::uint64_t parameter2) {
    const std::shared_ptr<Receiver> target = registry().find(receiver);
    if (!target) return x11Messenger().post(x11WindowOf(receiver), message, parameter1, parameter2);
    return target->post({message, 0, parameter1, parameter2});
}

}  // namespace tavra::platform

using tavra::platform::registry;

TavraWindow TavraHost_CreateReceiver(void) try {
    auto receiver = std::make_shared<tavra::platform::Receiver>();
    return receiver->valid() ? registry().add(std::move(receiver)) : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

void TavraHost_DestroyReceiver(TavraWindow receiver) {
    registry().remove(receiver);
}

TavraBool TavraHost_WaitMessage(TavraWindow receiver, TavraMessage* message, uint32_t timeoutMs) {
    const auto source = registry().find(receiver);
    return source && message && source->take(*message, timeoutMs) ? 1 : 0;
}

int TavraHost_ReceiverFd(TavraWindow receiver) {
    const auto source = registry().find(receiver);
    return source ? source->descriptor() : -1;
}
