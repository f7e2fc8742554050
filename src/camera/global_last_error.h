// The process-wide last error: for failures that have no usable record (null handle, failed open).
#pragma once

#include <atomic>
#include <cstdint>

namespace tavra {

inline std::atomic<std::uint32_t> globalLastError{0};  // any thread

}  // namespace tavra
