// The lock of a draw object with a drawing surface. A thread may lock it again while it has it, and may keep
// it from one call to another: from GetDC to ReleaseDC it is lent to the thread that draws. Any thread.
//
// Not a std::recursive_mutex: an application may release a context on another thread than the one that got
// it, which would be undefined there and is refused here; and a window that is painted meanwhile must not
// wait for the application, which may be waiting for the window.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace tavra {

class DrawMutex {
  public:
    // Waits until no other thread has it. False: the mutex has been ended.
    [[nodiscard]] bool lock();
    // The same, but waits only for a thread that has it for a moment. False also if it is lent to another.
    [[nodiscard]] bool lockUnlessLent();
    void unlock();

    // This thread, which has it, goes on having it.
    void lend();
    bool isLentHere() const;
    void endLending();  // only if it is lent here; it is to be unlocked once more then

    // Whoever waits, now or later, gets false. A thread that has it goes on.
    void end();

  private:
    bool isHere() const { return depth_ != 0 && owner_ == std::this_thread::get_id(); }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::thread::id owner_;
    std::uint32_t depth_ = 0;
    bool lent_ = false;
    bool ended_ = false;
};

// Has the mutex, if it could be had, until the end of its life.
class DrawMutexLock {
  public:
    enum class Wait { Always, UnlessLent };

    explicit DrawMutexLock(DrawMutex& mutex, Wait wait = Wait::Always)
        : mutex_(mutex), owned_(wait == Wait::Always ? mutex.lock() : mutex.lockUnlessLent()) {}
    ~DrawMutexLock() {
        if (owned_) mutex_.unlock();
    }
    DrawMutexLock(const DrawMutexLock&) = delete;
    DrawMutexLock& operator=(const DrawMutexLock&) = delete;

    explicit operator bool() const { return owned_; }
    // Leaves the mutex with this thread.
    void lend() {
        mutex_.lend();
        owned_ = false;
    }

  private:
    DrawMutex& mutex_;
    bool owned_;
};

}  // namespace tavra
