#include "display/draw_lock.h"

namespace tavra {

bool DrawLock::lock() {
    std::unique_lock guard(mutex_);
    if (state_ == State::Kept && keeper_ == std::this_thread::get_id()) return false;
    changed_.wait(guard, [this] { return state_ == State::Free; });
    state_ = State::Taken;
    return true;
}

bool DrawLock::lockUnlessKept() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return state_ != State::Taken; });
    if (state_ == State::Kept) return false;
    state_ = State::Taken;
    return true;
}

void DrawLock::unlock() {
    {
        const std::lock_guard guard(mutex_);
        state_ = State::Free;
    }
    changed_.notify_all();
}

// Also tells those who do not wait for a keeper.
void DrawLock::keep() {
    {
        const std::lock_guard guard(mutex_);
        state_ = State::Kept;
        keeper_ = std::this_thread::get_id();
    }
    changed_.notify_all();
}

bool DrawLock::resume() {
    const std::lock_guard guard(mutex_);
    if (state_ != State::Kept || keeper_ != std::this_thread::get_id()) return false;
    state_ = State::Taken;
    return true;
}

}  // namespace tavra
