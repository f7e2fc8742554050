// Events and the wait for any of several: the one way in which threads of the library wait for each other.
//
// Linux: eventfd and poll. Windows: event objects and WaitForMultipleObjects. An Event belongs to the object
// that has it as a member; any thread may set, reset and wait. It must outlive every wait on it.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

namespace tavra::platform {

inline constexpr std::uint32_t kWaitForever = 0xFFFFFFFF;

class Event {
  public:
    enum class Reset { Manual, Auto };  // Auto: a wait that ends by this event resets it

    explicit Event(Reset reset, bool initiallySet = false);
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    // False when the system had no descriptor left; every other operation is then without effect.
    bool valid() const;

    void set();
    void reset();

    // True: the event was set within timeoutMs milliseconds (0: only looks).
    bool wait(std::uint32_t timeoutMs) const;

    // The eventfd or the event HANDLE, as a number, for TavraUsbRead::event. Owned by this object.
    std::int64_t native() const { return native_; }

  private:
    friend int waitAny(std::span<const Event* const> events, std::uint32_t timeoutMs);

    std::int64_t native_;
    Reset reset_;
    // Makes a set happen before the wait that it ends: what one thread wrote ahead of the set, the other sees
    // behind the wait. System calls do that on every processor, but the language does not know it.
    std::atomic<std::uint32_t> timesSet_{0};
};

inline constexpr int kWaitTimedOut = -1;
inline constexpr int kWaitFailed = -2;

// Waits until one of the events (1 to 64 of them) is set: its index, the lowest if several are; kWaitTimedOut
// after timeoutMs milliseconds; kWaitFailed with the thread's last error set.
int waitAny(std::span<const Event* const> events, std::uint32_t timeoutMs);

}  // namespace tavra::platform
