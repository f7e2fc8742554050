// What the double needs of the operating system.
#pragma once

#include <cstdint>

namespace tavra::test {

// The calling thread's last error, as the USB access library gives it.
void setDoubleError(std::uint32_t code);

// The event of a read: an eventfd or an event HANDLE.
void signalEvent(std::int64_t event);
void clearEvent(std::int64_t event);

}  // namespace tavra::test
