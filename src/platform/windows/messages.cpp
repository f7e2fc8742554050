#include "platform/messages.h"

#include <windows.h>

#include "platform/last_error.h"

namespace tavra::platform {

void nameReceiver(TavraWindow) {}

Status postMessage(TavraWindow receiver, std::uint32_t message, std::uint64_t parameter1,
                   std::uint64_t parameter2) {
    // The system takes a null window for the calling thread's own queue, where nobody looks.
    if (receiver == nullptr) return failWith(error::kInvalidWindowHandle);
    const BOOL posted = PostMessageW(static_cast<HWND>(receiver), message, static_cast<WPARAM>(parameter1),
                                     static_cast<LPARAM>(parameter2));
    return posted ? Status() : Status(lastSystemError());
}

}  // namespace tavra::platform
