// A caller's wish for the next frames: where they go, and how many are still to come.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>

#include "platform/event.h"

namespace tavra {

// The handle record owns two, raw and preview. The mutex guards all fields; the caller's thread sets a
// request up and takes it down, the capture thread serves it in between.
struct SnapshotRequest {
    bool active = false;
    bool streamExpected = false;  // its stream runs or ran: the end of that ends the wait
    std::uint32_t result = 0;
    platform::Event done{platform::Event::Reset::Manual};
    std::mutex mutex;
    std::uint8_t* destination = nullptr;
    std::uint32_t* frameNumbers = nullptr;  // may be null
    std::uint32_t size = 0;                 // bytes of the destination
    std::uint32_t bytesWritten = 0;
    std::uint32_t framesLeft = 0;
    // Calls that are inside the exported function: a close waits until there are none.
    std::uint32_t calls = 0;
    std::condition_variable callsEnded;
};

}  // namespace tavra
