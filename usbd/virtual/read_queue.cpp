#include "read_queue.h"

#include <algorithm>
#include <cstring>

#include "base/little_endian.h"
#include "error_numbers.h"
#include "read_signal.h"

namespace tavra::usbd {
namespace {

// Only the frame number's bytes that lie inside [from, from + size).
void putNumber(std::uint8_t* buffer, std::size_t from, std::size_t size, const FrameNumber& number) {
    std::uint8_t bytes[4];
    storeLe32(bytes, number.value);
    for (std::size_t i = 0; i < sizeof(bytes); ++i) {
        const std::size_t at = number.offset + i;
        if (at >= from && at < from + size) buffer[at - from] = bytes[i];
    }
}

}  // namespace

ErrorCode ReadQueue::start(void* buffer, std::uint32_t size, TavraUsbRead& read) {
    resetSignal(read.event);
    const std::lock_guard lock(mutex_);
    if (broken_ != error::kNone) return broken_;
    read.status = error::kIoPending;
    read.transferred = 0;
    reads_.push_back({static_cast<std::uint8_t*>(buffer), size, &read});
    if (senderWaits_) queued_.notify_one();
    return error::kIoPending;
}

ErrorCode ReadQueue::result(TavraUsbRead& read, std::uint32_t& transferred, bool wait) {
    std::unique_lock lock(mutex_);
    if (read.status == error::kIoPending && !wait) return error::kIoIncomplete;
    ++waiters_;
    completed_.wait(lock, [&] { return read.status != error::kIoPending; });
    --waiters_;
    transferred = static_cast<std::uint32_t>(read.transferred);
    return static_cast<ErrorCode>(read.status);
}

void ReadQueue::open() {
    const std::lock_guard lock(mutex_);
    sending_ = true;
}

void ReadQueue::stopSending() {
    const std::lock_guard lock(mutex_);
    sending_ = false;
    queued_.notify_all();
}

void ReadQueue::cancelAll(ErrorCode error) {
    const std::lock_guard lock(mutex_);
    for (const Waiting& waiting : reads_) complete(waiting, 0, error);
    reads_.clear();
}

void ReadQueue::breakOff(ErrorCode error) {
    const std::lock_guard lock(mutex_);
    broken_ = error;
}

bool ReadQueue::waitForRead() {
    std::unique_lock lock(mutex_);
    senderWaits_ = true;
    queued_.wait(lock, [&] { return !sending_ || !reads_.empty(); });
    senderWaits_ = false;
    return sending_;
}

bool ReadQueue::take(Waiting& waiting) {
    if (!waitForRead()) return false;
    const std::lock_guard lock(mutex_);
    // Between the two only the sender's own end can have emptied the queue.
    if (!sending_ || reads_.empty()) return false;
    waiting = reads_.front();
    reads_.pop_front();
    return true;
}

// Called with the mutex held, so that whoever sees the result knows that the event is set.
void ReadQueue::complete(const Waiting& waiting, std::uint32_t transferred, ErrorCode error) {
    const std::int64_t event = waiting.read->event;
    waiting.read->transferred = transferred;
    waiting.read->status = error;
    setSignal(event);
    if (waiters_ > 0) completed_.notify_all();
}

bool ReadQueue::send(std::span<const std::uint8_t> transfer, const FrameNumber* number) {
    std::size_t at = 0;
    // One more read after the last byte where a full packet, or a full read, came last: it gets the empty
    // packet.
    for (bool ended = false; !ended;) {
        Waiting waiting{};
        if (!take(waiting)) return false;
        const std::size_t left = transfer.size() - at;
        const bool overrun = left > waiting.size && waiting.size % packetSize_ != 0;
        // A packet that does not fit the rest of the read is lost whole.
        const std::size_t size =
            overrun ? waiting.size - waiting.size % packetSize_ : std::min<std::size_t>(left, waiting.size);
        // Outside the lock: the reader's memory is lent to us until the read completes.
        if (size > 0) std::memcpy(waiting.buffer, transfer.data() + at, size);
        if (number != nullptr) putNumber(waiting.buffer, at, size, *number);
        at += size;
        if (overrun) at = std::min(at + packetSize_, transfer.size());
        ended = at == transfer.size() && (transfer.size() % packetSize_ != 0 || size < waiting.size);
        const std::lock_guard lock(mutex_);
        complete(waiting, static_cast<std::uint32_t>(size), overrun ? error::kDataError : error::kNone);
    }
    return true;
}

bool ReadQueue::fail(ErrorCode error) {
    Waiting waiting{};
    if (!take(waiting)) return false;
    const std::lock_guard lock(mutex_);
    complete(waiting, 0, error);
    return true;
}

}  // namespace tavra::usbd
