// One frame on its way from the capture thread to the file: room for a chunk's header, the image, and room to
// fill up a sector behind it, in whole pages.
//
// The recorder owns all buffers; one thread at a time has one, the one that took it from a queue.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/status.h"
#include "platform/page_memory.h"

namespace tavra::movie {

struct FrameBuffer {
    static constexpr std::size_t kHeaderRoom = 8;
    static constexpr std::size_t kSpareRoom = 2064;  // the header's room included

    platform::PageBlock block;
    std::uint32_t position = 0;  // in the recording, skipped frames counted
    std::uint32_t tag = 0;       // colour array code of a raw frame

    // 8: out of memory.
    Status allocate(std::size_t imageBytes) { return block.allocate(imageBytes + kSpareRoom); }

    std::uint8_t* image() const { return block.data() + kHeaderRoom; }
};

}  // namespace tavra::movie
