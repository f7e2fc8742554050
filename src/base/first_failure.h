// Of two operations that are both done, whatever becomes of the first: the result of the two. Any thread.
#pragma once

#include "base/status.h"

namespace tavra {

constexpr Status firstFailure(Status first, Status second) {
    return first.ok() ? second : first;
}

}  // namespace tavra
