// Posting a message to the application's receiver.
//
// Linux: the receiver queue of tavra_host.h, or a window on the X server. Windows: PostMessage to a window.
// Posting never waits for the receiver.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "tavra/tavra_types.h"

namespace tavra::platform {

// Has to come before the first message to a window on an X server, which it waits for; nothing for other
// receivers. Whether there is such a window is seen from posting to it. Any thread.
void nameReceiver(TavraWindow receiver);

// Puts a message behind the others of the receiver. Fails with the system's error, also set as the thread's
// last error: 1400 when `receiver` is not a receiver (any more), 1816 when its queue is full. Any thread.
Status postMessage(TavraWindow receiver, std::uint32_t message, std::uint64_t parameter1,
                   std::uint64_t parameter2);

}  // namespace tavra::platform
