// The ring of four frame blocks between the read thread and the capture thread.
#pragma once

#include <array>
#include <cstdint>

#include "capture/frame_block.h"
#include "capture/read_sizes.h"
#include "platform/event.h"

namespace tavra {

// Owned by the read engine. The write side belongs to the read thread, the read side to the capture thread;
// nothing is locked, a block's events hand it over.
class FrameQueue {
  public:
    static constexpr std::uint32_t kBlocks = 4;

    // `stop` ends the waits of the write side.
    FrameQueue(const FrameLayout& layout, std::uint32_t capacity, const platform::Event& stop);

    bool valid() const;  // false: the system had no events left

    // Before the read thread runs: all blocks empty, writing begins at the first.
    // By design: the read side stays where it is. After a restart up to three blocks come through in rotated
    // order.
    void restartWriting();

    // The read thread's.
    FrameBlock& writing() { return blocks_[writeIndex_]; }
    bool waitWritable();              // until the block at hand is free; false: stop was asked for
    void pass(std::uint32_t status);  // hands the block over; advance() follows
    void advance();                   // to the next block, noting whether it is still held
    bool waitSpace();                 // until not all blocks are held; false: stop was asked for

    // The capture thread's.
    FrameBlock& current() { return blocks_[readIndex_]; }
    bool hasArrived() const { return blocks_[readIndex_].filled.wait(0); }  // the current block
    void release();  // gives the current block back and goes on to the next

  private:
    static std::uint32_t next(std::uint32_t index) { return (index + 1) % kBlocks; }

    std::array<FrameBlock, kBlocks> blocks_;
    std::uint32_t readIndex_ = 0;
    std::uint32_t writeIndex_ = 0;
    const platform::Event& stop_;
    platform::Event space_{platform::Event::Reset::Manual, true};
};

}  // namespace tavra
