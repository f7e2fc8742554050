// The calling thread's last error: what UsbGetLastError gives, and on Windows GetLastError as well.
#pragma once

#include <cstdint>

namespace tavra::usbd {

void setLastError(std::uint32_t code);
std::uint32_t lastError();

}  // namespace tavra::usbd
