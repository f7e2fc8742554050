// Memory for a whole file, put together there and written with one write. Any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <new>

#include "platform/last_error.h"

namespace tavra::stills {

using FileBlock = std::unique_ptr<std::uint8_t[]>;

// `size` bytes, not zeroed. Null if there is no memory; the thread's last error is 8 then, on every platform.
inline FileBlock allocateFileBlock(std::uint64_t size) {
    FileBlock block(new (std::nothrow) std::uint8_t[size]);
    if (!block) platform::setLastSystemError(error::kOutOfMemory);
    return block;
}

}  // namespace tavra::stills
