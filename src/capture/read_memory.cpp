#include "capture/read_memory.h"

#include <limits>
#include <new>

namespace tavra {
namespace {

constexpr std::align_val_t kPage{4096};

}  // namespace

ReadMemory::ReadMemory(const platform::UsbAccess& usb, TavraUsbDevice device, std::uint64_t size)
    : usb_(usb), device_(device) {
    if (size > std::numeric_limits<std::ptrdiff_t>::max()) return;
    size_ = static_cast<std::size_t>(size);
    if (usb_.allocReadMemory != nullptr) {
        data_ = static_cast<std::uint8_t*>(usb_.allocReadMemory(device_, size_));
        fromLibrary_ = data_ != nullptr;
    }
    if (data_ == nullptr) data_ = static_cast<std::uint8_t*>(::operator new(size_, kPage, std::nothrow));
}

ReadMemory::~ReadMemory() {
    if (fromLibrary_) {
        usb_.freeReadMemory(device_, data_, size_);
    } else {
        ::operator delete(data_, kPage);
    }
}

}  // namespace tavra
