#include "media/jpeg/memory_buffer.h"

#include <new>

namespace tavra {
namespace {

constexpr std::size_t kAlignment = 64;

}  // namespace

JpegError CMemoryBuffer::Allocate(std::size_t size) {
    Free();
    if (size > PTRDIFF_MAX - kAlignment) return JpegError::OutOfMemory;
    memory_.reset(new (std::nothrow) std::uint8_t[size + kAlignment]);
    if (!memory_) return JpegError::OutOfMemory;
    const auto misaligned = reinterpret_cast<std::uintptr_t>(memory_.get()) % kAlignment;
    aligned_ = memory_.get() + (kAlignment - misaligned);
    size_ = size;
    return JpegError::None;
}

void CMemoryBuffer::Free() {
    memory_.reset();
    aligned_ = nullptr;
    size_ = 0;
}

}  // namespace tavra
