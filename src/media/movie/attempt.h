// Where memory may run out on the writer's thread: what is thrown there becomes a code. Pure; any thread.
#pragma once

#include <new>

#include "base/status.h"

namespace tavra::movie {

// Runs `operation()`, which gives a Status. 8 where it throws std::bad_alloc.
template <typename Operation>
Status attempt(Operation operation) {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return Status(error::kOutOfMemory);
    }
}

}  // namespace tavra::movie
