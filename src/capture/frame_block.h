// A frame, or what came of it, on its way from the read thread to the capture thread.
#pragma once

#include <cstdint>

#include "platform/event.h"

namespace tavra {

// Belongs to the frame queue. The two events say whose turn it is: while `free` is set the read thread fills
// the block, while `filled` is set the capture thread looks at it.
struct FrameBlock {
    std::uint32_t status = 0;      // 0: good, else why there is no frame
    std::uint8_t* data = nullptr;  // in the read memory, `length` bytes
    std::uint32_t length = 0;
    std::uint32_t capacity = 0;
    std::uint32_t rawSize = 0;
    std::uint32_t headerSize = 0;
    platform::Event free{platform::Event::Reset::Manual, true};
    platform::Event filled{platform::Event::Reset::Manual};
};

}  // namespace tavra
