// A block of memory that begins at a multiple of 64 bytes, which vector loads like. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "media/jpeg/codes.h"

namespace tavra {

class CMemoryBuffer {
  public:
    // Replaces the block, of which nothing is kept: it is freed first. OutOfMemory leaves size 0. The new
    // block's bytes are not zeroed.
    JpegError Allocate(std::size_t size);
    void Free();

    std::uint8_t* data() const { return aligned_; }
    std::size_t size() const { return size_; }

  private:
    std::unique_ptr<std::uint8_t[]> memory_;
    std::uint8_t* aligned_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace tavra
