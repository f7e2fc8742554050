// The memory that frames are read into.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/usb_access.h"

namespace tavra {

// Owned by the read engine. Memory of the USB access library where it has some, else ordinary pages. It may
// be freed only when no read is in flight.
class ReadMemory {
  public:
    ReadMemory(const platform::UsbAccess& usb, TavraUsbDevice device, std::uint64_t size);
    ~ReadMemory();
    ReadMemory(const ReadMemory&) = delete;
    ReadMemory& operator=(const ReadMemory&) = delete;

    std::uint8_t* data() const { return data_; }  // null: there was not as much

  private:
    const platform::UsbAccess& usb_;
    TavraUsbDevice device_;
    std::size_t size_ = 0;
    std::uint8_t* data_ = nullptr;
    bool fromLibrary_ = false;
};

}  // namespace tavra
