#include "display/draw_mutex.h"

namespace tavra {

bool DrawMutex::lock() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return ended_ || depth_ == 0 || isHere(); });
    return take();
}

bool DrawMutex::lockUnlessLent() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return ended_ || lent_ || depth_ == 0 || isHere(); });
    return take();
}

// By whoever need not wait any more.
bool DrawMutex::take() {
    if (lent_ || (ended_ && !isHere())) return false;
    owner_ = std::this_thread::get_id();
    ++depth_;
    return true;
}

void DrawMutex::unlock() {
    {
        const std::lock_guard guard(mutex_);
        --depth_;
    }
    changed_.notify_all();
}

// Also tells those who do not wait for a borrower.
void DrawMutex::lend() {
    {
        const std::lock_guard guard(mutex_);
        lent_ = true;
    }
    changed_.notify_all();
}

bool DrawMutex::isLentHere() const {
    const std::lock_guard guard(mutex_);
    return lent_ && isHere();
}

bool DrawMutex::takeBack() {
    const std::lock_guard guard(mutex_);
    if (!lent_ || !isHere()) return false;
    lent_ = false;
    return true;
}

void DrawMutex::end() {
    {
        const std::lock_guard guard(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
}

}  // namespace tavra
