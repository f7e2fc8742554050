#include "capture/frame_queue.h"

#include <algorithm>

namespace tavra {
namespace {

// True when `event` ended the wait, false when `stop` did (it wins if both are set) or the wait failed.
bool waitUnlessStopped(const platform::Event& stop, const platform::Event& event) {
    const platform::Event* const either[] = {&stop, &event};
    return platform::waitAny(either, platform::kWaitForever) == 1;
}

}  // namespace

FrameQueue::FrameQueue(const FrameLayout& layout, std::uint32_t capacity, const platform::Event& stop)
    : stop_(stop) {
    for (FrameBlock& block : blocks_) {
        block.capacity = capacity;
        block.rawSize = layout.rawSize;
        block.headerSize = layout.headerSize;
    }
}

bool FrameQueue::valid() const {
    return space_.valid() && std::all_of(blocks_.begin(), blocks_.end(), [](const FrameBlock& block) {
               return block.free.valid() && block.filled.valid();
           });
}

void FrameQueue::restartWriting() {
    writeIndex_ = 0;
    for (FrameBlock& block : blocks_) {
        block.length = 0;
        block.data = nullptr;
        block.filled.reset();
        block.free.set();
    }
    // The last reader may have left it unset, and with every block free nobody would set it.
    space_.set();
}

bool FrameQueue::waitWritable() {
    return waitUnlessStopped(stop_, writing().free);
}

void FrameQueue::pass(std::uint32_t status) {
    FrameBlock& block = writing();
    block.status = status;
    block.free.reset();
    block.filled.set();
}

void FrameQueue::advance() {
    writeIndex_ = next(writeIndex_);
    if (writing().free.wait(0)) return;
    space_.reset();
    // The capture thread may have released the block between the look and the reset.
    if (writing().free.wait(0)) space_.set();
}

bool FrameQueue::waitSpace() {
    return waitUnlessStopped(stop_, space_);
}

void FrameQueue::release() {
    FrameBlock& block = current();
    block.length = 0;
    block.data = nullptr;
    block.filled.reset();
    block.free.set();
    readIndex_ = next(readIndex_);
    space_.set();
}

}  // namespace tavra
