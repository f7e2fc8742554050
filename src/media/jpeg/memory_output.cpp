#include "media/jpeg/memory_output.h"

#include <algorithm>
#include <cstring>

namespace tavra {

void CMemoryOutput::SetMemory(void* block, std::size_t headroom, std::size_t capacity) {
    block_ = static_cast<std::uint8_t*>(block);
    headroom_ = headroom;
    capacity_ = capacity;
    length_ = 0;
}

JpegError CMemoryOutput::Write(const void* buffer, std::size_t size, std::size_t& written) {
    written = std::min(size, capacity_ - length_);
    if (written != 0) std::memcpy(block_ + headroom_ + length_, buffer, written);
    length_ += written;
    return written == size ? JpegError::None : JpegError::FileIo;
}

}  // namespace tavra
