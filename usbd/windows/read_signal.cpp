#include "read_signal.h"

#include <windows.h>

namespace tavra::usbd {

void setSignal(std::int64_t event) {
    SetEvent(reinterpret_cast<HANDLE>(event));
}

void resetSignal(std::int64_t event) {
    ResetEvent(reinterpret_cast<HANDLE>(event));
}

}  // namespace tavra::usbd
