// The name of the calling thread, as debuggers and profilers show it.
#pragma once

namespace tavra::usbd {

// At most 15 characters.
void nameThisThread(const char* name);

}  // namespace tavra::usbd
