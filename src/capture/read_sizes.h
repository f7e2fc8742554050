// How much is read at once and how much memory that takes. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>

namespace tavra {

// Bytes of a frame on the wire, and of the packets that carry it.
struct FrameLayout {
    std::uint32_t headerSize = 0;
    std::uint32_t rawSize = 0;
    std::uint32_t packetSize = 0;  // 512 or 1024

    std::uint64_t wholeSize() const { return std::uint64_t{headerSize} + rawSize; }
};

struct ReadSizes {
    std::uint32_t blockSize = 0;   // room of a frame block; a multiple of the read size
    std::uint32_t readSize = 0;    // bytes asked of one read
    std::uint32_t firstDepth = 0;  // reads queued at start
    std::uint32_t slotCount = 0;   // read slots in the ring
    std::uint64_t bufferSize = 0;  // all slots and one spare block behind them
};

// The most that one read asks for: a whole frame up to 512 KiB.
std::uint32_t maximumTransfer(const FrameLayout& layout);

// A block is always larger than a frame, so that a frame's last read ends with the camera's short packet and
// not with a full buffer. At least four reads and two frames' worth are queued. None: a frame whose sizes
// cannot be counted in 32 bits.
std::optional<ReadSizes> readSizes(const FrameLayout& layout, std::uint32_t maximumTransfer);

}  // namespace tavra
