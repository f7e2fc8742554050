// The calling thread's last error: a Windows error number on every platform.
//
// Windows: GetLastError and SetLastError. Linux: a word of the thread's own, with the same numbers.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra::platform {

std::uint32_t lastSystemError();
void setLastSystemError(std::uint32_t code);

// Sets the thread's last error and gives it back as a status, for `return failWith(code)`.
Status failWith(std::uint32_t code);

#if defined(__linux__)
// The error number that stands for an errno value, 31 for one that has no counterpart.
std::uint32_t errorFromErrno(int errnoValue);
void setLastErrorFromErrno(int errnoValue);
#endif

}  // namespace tavra::platform
