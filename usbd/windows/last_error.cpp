#include "last_error.h"

#include <windows.h>

namespace tavra::usbd {

void setLastError(std::uint32_t code) {
    SetLastError(code);
}

std::uint32_t lastError() {
    return GetLastError();
}

}  // namespace tavra::usbd
