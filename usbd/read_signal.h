// The event that a caller put into a read (TavraUsbRead::event): an eventfd or a Windows event, manual reset.
// It belongs to the caller; any thread.
#pragma once

#include <cstdint>

namespace tavra::usbd {

void setSignal(std::int64_t event);
void resetSignal(std::int64_t event);

}  // namespace tavra::usbd
