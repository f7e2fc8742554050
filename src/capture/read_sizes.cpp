#include "capture/read_sizes.h"

#include <algorithm>
#include <limits>

namespace tavra {
namespace {

constexpr std::uint64_t kLargestTransfer = 0x80000;
constexpr std::uint64_t kLeastDepth = 4;
constexpr std::uint64_t kBlocks = 4;  // that the capture thread may hold
constexpr std::uint64_t kMost32 = std::numeric_limits<std::uint32_t>::max();

// Room of a whole frame and less than a packet more, in whole packets.
std::uint64_t packedSize(const FrameLayout& layout) {
    const std::uint64_t packet = layout.packetSize;
    return (layout.wholeSize() + packet) / packet * packet;
}

std::uint64_t roundedUp(std::uint64_t value, std::uint64_t unit) {
    return (value + unit - 1) / unit * unit;
}

}  // namespace

std::uint32_t maximumTransfer(const FrameLayout& layout) {
    return static_cast<std::uint32_t>(std::min(packedSize(layout), kLargestTransfer));
}

std::optional<ReadSizes> readSizes(const FrameLayout& layout, std::uint32_t maximumTransfer) {
    if (layout.packetSize == 0 || maximumTransfer == 0) return std::nullopt;
    std::uint64_t block = packedSize(layout);
    const std::uint64_t read = std::min<std::uint64_t>(block, maximumTransfer);
    block = roundedUp(block, read);
    const std::uint64_t readsOfTwoFrames = (2 * block + maximumTransfer - 1) / maximumTransfer;
    const std::uint64_t depth = std::max(readsOfTwoFrames, kLeastDepth);
    const std::uint64_t inFlight = depth * maximumTransfer;
    const std::uint64_t blocksInFlight = block <= inFlight ? inFlight / block + 1 : 1;
    const std::uint64_t slots = (blocksInFlight + kBlocks) * block / read;
    if (block > kMost32 || slots > kMost32) return std::nullopt;
    return ReadSizes{static_cast<std::uint32_t>(block), static_cast<std::uint32_t>(read),
                     static_cast<std::uint32_t>(depth), static_cast<std::uint32_t>(slots),
                     (blocksInFlight + kBlocks + 1) * block};
}

}  // namespace tavra
