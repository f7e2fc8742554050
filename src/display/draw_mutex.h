// The lock of a draw object with a drawing surface. A thread may lock it again while it has it, and may keep
// it from one call to another: from GetDC to ReleaseDC it is lent to the thread that draws, and nobody locks
// it meanwhile, that thread included. Any thread.
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
    // Waits until no other thread has it. False: it is lent to this thread, which would wait for itself, or
    // the mutex has been ended.
    [[nodiscard]] bool lock();
    // The same, but waits only for a thread that has it for a moment. False also if it is lent to any.
    [[nodiscard]] bool lockUnlessLent();
    void unlock();

    // It stays with this thread, which has locked it once.
    void lend();
    bool isLentHere() const;
    // This thread has it locked again, and goes on from there to unlock or to lend it. False: it was not lent
    // here.
    [[nodiscard]] bool takeBack();

    // Whoever waits, now or later, gets false. A thread that has it goes on.
    void end();

  private:
    bool take();
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
    enum class How { Wait, UnlessLent, TakeBack };

    explicit DrawMutexLock(DrawMutex& mutex, How how = How::Wait)
        : mutex_(mutex),
          owned_(how == How::Wait         ? mutex.lock()
                 : how == How::UnlessLent ? mutex.lockUnlessLent()
                                          : mutex.takeBack()) {}
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
