// A queue of pointers between two threads, with an event that is set while something is in it.
//
// Belongs to the recorder or the writer that has it as a member; any thread pushes, pops and waits for the
// event. The mutex is held for the pointers alone, never while somebody works on what they point to.
#pragma once

#include <cstddef>
#include <mutex>
#include <vector>

#include "platform/event.h"

namespace tavra::movie {

template <typename T>
class PointerQueue {
  public:
    // Room for so many pointers; a push within it allocates nothing. Throws std::bad_alloc.
    void reserve(std::size_t count) {
        const std::lock_guard lock(mutex_);
        items_.reserve(count);
    }

    void push(T* item) {
        const std::lock_guard lock(mutex_);
        items_.push_back(item);
        notEmpty_.set();
    }

    // In front of all others: it is the next that pop gives.
    void pushFront(T* item) {
        const std::lock_guard lock(mutex_);
        items_.insert(items_.begin(), item);
        notEmpty_.set();
    }

    // The first, which leaves the queue; null when there is none.
    T* pop() {
        const std::lock_guard lock(mutex_);
        if (items_.empty()) return nullptr;
        T* const first = items_.front();
        items_.erase(items_.begin());
        if (items_.empty()) notEmpty_.reset();
        return first;
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return items_.size();
    }

    const platform::Event& notEmpty() const { return notEmpty_; }

  private:
    mutable std::mutex mutex_;
    std::vector<T*> items_;
    platform::Event notEmpty_{platform::Event::Reset::Manual};
};

}  // namespace tavra::movie
