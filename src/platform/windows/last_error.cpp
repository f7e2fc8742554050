#include "platform/last_error.h"

#include <windows.h>

namespace tavra::platform {

std::uint32_t lastSystemError() {
    return GetLastError();
}

void setLastSystemError(std::uint32_t code) {
    SetLastError(code);
}

Status failWith(std::uint32_t code) {
    SetLastError(code);
    return Status(code);
}

}  // namespace tavra::platform
