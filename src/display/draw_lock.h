// The lock of a draw object whose drawing surface an application may hold: what one thread takes for a moment
// can stay with it until it comes back, as from GetDC to ReleaseDC. Any thread.
//
// Not a plain mutex: one that is unlocked by the wrong thread, locked twice by the right one, or destroyed
// while locked would be undefined, and an application can do all of that.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavra {

class DrawLock {
  public:
    // Waits until it is free. False: the calling thread has kept it, and would wait for itself.
    [[nodiscard]] bool lock();
    // Waits as well, but not for a thread that keeps it. False: one does.
    [[nodiscard]] bool lockUnlessKept();
    void unlock();

    // The lock, taken by this thread, stays with it.
    void keep();
    // This thread has taken it once more, and goes on from there to unlock or to keep it. False: this thread
    // had not kept it.
    [[nodiscard]] bool resume();

  private:
    enum class State { Free, Taken, Kept };

    std::mutex mutex_;
    std::condition_variable changed_;
    State state_ = State::Free;
    std::thread::id keeper_;
};

// Unlocks at the end of its life, unless told otherwise.
class DrawLockGuard {
  public:
    explicit DrawLockGuard(DrawLock& taken) : lock_(&taken) {}
    ~DrawLockGuard() {
        if (lock_ != nullptr) lock_->unlock();
    }
    DrawLockGuard(const DrawLockGuard&) = delete;
    DrawLockGuard& operator=(const DrawLockGuard&) = delete;

    void keep() {
        lock_->keep();
        lock_ = nullptr;
    }

  private:
    DrawLock* lock_;
};

}  // namespace tavra
