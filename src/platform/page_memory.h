// Memory of whole pages, for files that bypass the system's cache, and how much of it there is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/status.h"

namespace tavra::platform {

// A block that starts at a page. Belongs to whoever has it as a member; one thread at a time.
class PageBlock {
  public:
    PageBlock() = default;
    ~PageBlock() { free(); }
    PageBlock(PageBlock&& other) noexcept
        : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    PageBlock& operator=(PageBlock&& other) noexcept {
        PageBlock taken(std::move(other));
        std::swap(data_, taken.data_);
        std::swap(size_, taken.size_);
        return *this;
    }
    PageBlock(const PageBlock&) = delete;
    PageBlock& operator=(const PageBlock&) = delete;

    // Makes `size` bytes, all zero. 8: out of memory. What was there before is freed.
    Status allocate(std::size_t size);
    void free();

    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

  private:
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
};

// Physical memory that is free now, in bytes. Linux: what can be had without swapping, the file cache
// included. 0: unknown. Any thread.
std::uint64_t freePhysicalMemory();

}  // namespace tavra::platform
