#include "capture/read_loop.h"

#include <algorithm>
#include <cstring>

#include "platform/last_error.h"

namespace tavra {
namespace {

// Between two tries of something that fails at once. The thread is time critical: without a pause it would
// keep a processor from everybody else.
constexpr std::uint32_t kRetryPauseMs = 1;

bool isGone(std::uint32_t code) {
    return code == error::kDeviceNotConnected || code == error::kDeviceGone;
}

}  // namespace

std::uint32_t ReadLoop::run() {
    resumable_ = r_.usb.canResumeRead(r_.device) != 0;
    for (;;) {
        if (firstPass_) {
            if (!beginStream()) return status_;
            if (queueFirstReads() == Next::End) break;
        }
        if (oneRead() == Next::End) break;
        // All four blocks held: no further read is started, and the camera buffers on its side. A stop that
        // ends the wait is seen by the next wait for a read.
        r_.queue.waitSpace();
        slot_ = nextSlot(slot_);
        read_ = nextRead(read_);
    }
    r_.usb.endRead(r_.device);
    return status_;
}

// A device that settles answers 31 for a while. Any other failure shows again when reads are started.
bool ReadLoop::beginStream() {
    while (r_.usb.beginRead(r_.device) == 0 && r_.usb.getLastError() == error::kDeviceNotFunctioning) {
        if (r_.stop.wait(kRetryPauseMs)) return false;
    }
    return true;
}

// The ring goes on where it stood, not at slot 0: frames that the capture thread still holds lie behind.
ReadLoop::Next ReadLoop::queueFirstReads() {
    queueSlot_ = slot_;
    queueRead_ = read_;
    for (std::uint32_t i = 0; i < r_.sizes.firstDepth; ++i) {
        if (queueNextRead() == Next::End) return Next::End;
    }
    firstPass_ = false;
    return Next::Again;
}

ReadLoop::Next ReadLoop::oneRead() {
    if (!waitForRead()) return Next::End;
    if (queueNextRead() == Next::End) return Next::End;
    std::uint32_t length = 0;
    switch (takeResult(length)) {
        case Result::Failed: return Next::Again;
        case Result::Gone: return Next::End;
        case Result::Restart:  // what came is kept, but does not end the frame
            handleData(length, false);
            return Next::Again;
        case Result::Data: break;
    }
    handleData(length, length < r_.sizes.readSize);
    return Next::Again;
}

bool ReadLoop::waitForRead() {
    const platform::Event* const either[] = {&r_.stop, &r_.reads[read_]->event};
    return platform::waitAny(either, platform::kWaitForever) == 1;
}

ReadLoop::Next ReadLoop::queueNextRead() {
    bool gone = false;
    if (!startRead(queueSlot_, queueRead_, gone)) return gone ? deviceGone() : Next::End;
    queueSlot_ = nextSlot(queueSlot_);
    queueRead_ = nextRead(queueRead_);
    return Next::Again;
}

bool ReadLoop::startRead(std::uint32_t slot, std::uint32_t read, bool& gone) {
    PendingRead& pending = *r_.reads[read];
    for (;;) {
        pending.usb.event = pending.event.native();
        r_.usb.startRead(r_.device, slotData(slot), r_.sizes.readSize, &pending.usb);
        const std::uint32_t code = r_.usb.getLastError();
        if (code == error::kIoPending) return true;
        gone = isGone(code);
        if (gone) return false;
        // Anything else, success included, is a read that was not queued.
        if (r_.stop.wait(kRetryPauseMs)) return false;
    }
}

ReadLoop::Next ReadLoop::deviceGone() {
    status_ = error::kDeviceGone;
    passFailure(status_);
    return Next::End;
}

ReadLoop::Result ReadLoop::takeResult(std::uint32_t& length) {
    const int succeeded = r_.usb.getReadResult(r_.device, &r_.reads[read_]->usb, &length, 1);
    length = std::min(length, r_.sizes.readSize);
    if (succeeded != 0) return Result::Data;
    const std::uint32_t code = r_.usb.getLastError();
    if (code == error::kDeviceNotFunctioning && resumable_) {
        r_.usb.endRead(r_.device);
        firstPass_ = true;
        return Result::Restart;
    }
    if (code == 0) return Result::Data;  // an empty failure
    if (isGone(code)) {
        deviceGone();
        return Result::Gone;
    }
    passFailure(code);
    return Result::Failed;
}

void ReadLoop::handleData(std::uint32_t length, bool frameEnded) {
    if (!r_.queue.waitWritable()) {
        if (frameEnded) r_.queue.advance();
        return;
    }
    FrameBlock& block = r_.queue.writing();
    append(block, length);
    if (!frameEnded && block.length < block.capacity) return;
    r_.queue.pass(0);
    r_.queue.advance();
}

// A frame that is read in several reads is whole in memory as it stands, because slots are contiguous. Only
// one that goes on at the first slot again is copied, into the spare block behind the last slot.
void ReadLoop::append(FrameBlock& block, std::uint32_t length) const {
    std::uint8_t* const received = slotData(slot_);
    if (block.length == 0) block.data = received;
    std::uint8_t* const end = block.data + block.length;
    const std::uint32_t taken = std::min(length, block.capacity - block.length);
    if (end != received && taken > 0) std::memmove(end, received, taken);
    block.length += taken;
}

void ReadLoop::passFailure(std::uint32_t code) {
    if (r_.queue.waitWritable()) r_.queue.pass(code);
    r_.queue.advance();
}

}  // namespace tavra
