#include "platform/event.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMaxEvents = 64;

// Milliseconds left until the deadline, rounded up, for poll.
int remainingMs(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return left < 0 ? 0 : static_cast<int>(left > 0x7FFFFFFF ? 0x7FFFFFFF : left);
}

}  // namespace

Event::Event(Reset reset, bool initiallySet)
    : native_(eventfd(initiallySet ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK)), reset_(reset) {}

Event::~Event() {
    if (valid()) close(static_cast<int>(native_));
}

bool Event::valid() const {
    return native_ >= 0;
}

void Event::set() {
    timesSet_.fetch_add(1, std::memory_order_release);
    // EAGAIN means that the counter is at its top: the event is set already.
    [[maybe_unused]] const int result = eventfd_write(static_cast<int>(native_), 1);
}

void Event::reset() {
    eventfd_t ignored = 0;
    [[maybe_unused]] const int result = eventfd_read(static_cast<int>(native_), &ignored);
}

bool Event::wait(std::uint32_t timeoutMs) const {
    const Event* const self = this;
    return waitAny({&self, 1}, timeoutMs) == 0;
}

int waitAny(std::span<const Event* const> events, std::uint32_t timeoutMs) {
    std::array<pollfd, kMaxEvents> descriptors{};
    if (events.empty() || events.size() > kMaxEvents) {
        setLastSystemError(error::kInvalidArgument);
        return kWaitFailed;
    }
    for (std::size_t i = 0; i < events.size(); ++i) {
        descriptors[i] = {static_cast<int>(events[i]->native_), POLLIN, 0};
    }
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const int timeout = timeoutMs == kWaitForever ? -1 : remainingMs(deadline);
        const int ready = poll(descriptors.data(), events.size(), timeout);
        if (ready < 0 && errno != EINTR) {
            setLastErrorFromErrno(errno);
            return kWaitFailed;
        }
        if (ready == 0) return kWaitTimedOut;
        for (std::size_t i = 0; ready > 0 && i < events.size(); ++i) {
            if ((descriptors[i].revents & POLLIN) == 0) continue;
            static_cast<void>(events[i]->timesSet_.load(std::memory_order_acquire));
            if (events[i]->reset_ == Event::Reset::Manual) return static_cast<int>(i);
            eventfd_t ignored = 0;
            // Another waiter may have been faster: then this event is not set any more.
            if (eventfd_read(descriptors[i].fd, &ignored) == 0) return static_cast<int>(i);
        }
    }
}

}  // namespace tavra::platform
