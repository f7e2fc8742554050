#include "platform/event.h"

#include <windows.h>

#include <array>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

HANDLE handleOf(std::int64_t native) {
    return reinterpret_cast<HANDLE>(native);
}

}  // namespace

Event::Event(Reset reset, bool initiallySet)
    : native_(reinterpret_cast<std::int64_t>(CreateEventW(nullptr, reset == Reset::Manual ? TRUE : FALSE,
                                                          initiallySet ? TRUE : FALSE, nullptr))),
      reset_(reset) {}

Event::~Event() {
    if (valid()) CloseHandle(handleOf(native_));
}

bool Event::valid() const {
    return native_ != 0;
}

void Event::set() {
    SetEvent(handleOf(native_));
}

void Event::reset() {
    ResetEvent(handleOf(native_));
}

bool Event::wait(std::uint32_t timeoutMs) const {
    return WaitForSingleObject(handleOf(native_), timeoutMs) == WAIT_OBJECT_0;
}

int waitAny(std::span<const Event* const> events, std::uint32_t timeoutMs) {
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> handles;
    if (events.empty() || events.size() > handles.size()) {
        setLastSystemError(error::kInvalidArgument);
        return kWaitFailed;
    }
    for (std::size_t i = 0; i < events.size(); ++i) handles[i] = handleOf(events[i]->native_);
    static_assert(kWaitForever == INFINITE);
    const DWORD count = static_cast<DWORD>(events.size());
    const DWORD result = WaitForMultipleObjects(count, handles.data(), FALSE, timeoutMs);
    if (result == WAIT_TIMEOUT) return kWaitTimedOut;
    return result < WAIT_OBJECT_0 + count ? static_cast<int>(result - WAIT_OBJECT_0) : kWaitFailed;
}

}  // namespace tavra::platform
