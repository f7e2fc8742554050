#include "read_signal.h"

#include <poll.h>
#include <unistd.h>

#include <cstdint>

namespace tavra::usbd {

// Failures have nobody to be told to: a bad event is the caller's own, as with any asynchronous read.
void setSignal(std::int64_t event) {
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(static_cast<int>(event), &one, sizeof(one));
}

void resetSignal(std::int64_t event) {
    // Looking first keeps an eventfd that its owner made blocking from holding us up.
    pollfd descriptor{static_cast<int>(event), POLLIN, 0};
    if (poll(&descriptor, 1, 0) != 1 || (descriptor.revents & POLLIN) == 0) return;
    std::uint64_t ignored = 0;
    [[maybe_unused]] const ssize_t count = read(static_cast<int>(event), &ignored, sizeof(ignored));
}

}  // namespace tavra::usbd
