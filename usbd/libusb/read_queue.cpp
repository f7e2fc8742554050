#include "libusb/read_queue.h"

#include <new>

#include "error_numbers.h"
#include "libusb/error_map.h"
#include "read_signal.h"

namespace tavra::usbd {
namespace {

// What TavraUsbRead::status holds while a read is in flight: no error number of the interface.
constexpr std::uint64_t kPending = 0x103;

constexpr unsigned kNoTimeout = 0;

// After these the endpoint may be halted on one of the two sides.
bool canLeaveHalt(libusb_transfer_status status) {
    return status == LIBUSB_TRANSFER_STALL || status == LIBUSB_TRANSFER_ERROR ||
           status == LIBUSB_TRANSFER_OVERFLOW;
}

}  // namespace

LibusbReadQueue::LibusbReadQueue(libusb_device_handle* handle, std::uint8_t endpoint, EventThread& events)
    : handle_(handle), endpoint_(endpoint), events_(events) {
    events_.add(*this);
}

LibusbReadQueue::~LibusbReadQueue() {
    cancelAll();
    events_.remove(*this);
    for (const Slot& slot : free_) libusb_free_transfer(slot.transfer);
}

ErrorCode LibusbReadQueue::start(void* buffer, std::uint32_t size, TavraUsbRead& read) {
    const std::lock_guard order(orderMutex_);
    {
        const std::lock_guard lock(mutex_);
        if (gone_) return error::kDeviceNotConnected;
        resetSignal(read.event);
        read.transferred = 0;
        read.status = kPending;
        const bool tooLarge = size > INT32_MAX;
        if (tooLarge || !takeFreeSlot()) {
            read.status = tooLarge ? error::kInvalidArgument : error::kOutOfMemory;
            setSignal(read.event);
            return error::kIoPending;
        }
        const Position slot = free_.begin();
        slot->read = &read;
        libusb_fill_bulk_transfer(slot->transfer, handle_, endpoint_, static_cast<unsigned char*>(buffer),
                                  static_cast<int>(size), &LibusbReadQueue::completed, &*slot, kNoTimeout);
        waiting_.splice(waiting_.end(), free_, slot);
    }
    if (waiting_.size() == 1) submitWaiting();  // nobody was before it
    // A device found gone by this very read: told here, where the caller looks for it.
    const std::lock_guard lock(mutex_);
    return read.status == error::kDeviceNotConnected ? error::kDeviceNotConnected : error::kIoPending;
}

ErrorCode LibusbReadQueue::result(const TavraUsbRead& read, std::uint32_t& transferred, bool wait) {
    std::unique_lock lock(mutex_);
    if (read.status == kPending) {
        if (!wait) return error::kIoIncomplete;
        ++watchers_;
        changed_.wait(lock, [&] { return read.status != kPending; });
        --watchers_;
    }
    transferred = static_cast<std::uint32_t>(read.transferred);
    return static_cast<ErrorCode>(read.status);
}

void LibusbReadQueue::cancelAll() {
    std::unique_lock order(orderMutex_);  // no submission is under way
    std::unique_lock lock(mutex_);
    ++cancellers_;
    while (!waiting_.empty()) finish(waiting_.begin(), waiting_, error::kOperationAborted, 0);
    anyWaiting_ = false;
    // The newest first: data that arrive meanwhile then still land in the reads that come first.
    for (auto slot = inFlight_.rbegin(); slot != inFlight_.rend(); ++slot) {
        libusb_cancel_transfer(slot->transfer);  // one that has just completed needs none
    }
    order.unlock();
    ++watchers_;
    changed_.wait(lock, [this] { return inFlight_.empty() && submitting_ == 0; });
    --watchers_;
    --cancellers_;
}

bool LibusbReadQueue::takeHaltSuspicion() {
    const std::lock_guard lock(mutex_);
    const bool suspected = haltSuspected_;
    haltSuspected_ = false;
    return suspected;
}

void LibusbReadQueue::completed(libusb_transfer* transfer) {
    auto& slot = *static_cast<Slot*>(transfer->user_data);
    LibusbReadQueue& queue = *slot.queue;
    std::unique_lock lock(queue.mutex_);
    if (canLeaveHalt(transfer->status)) queue.haltSuspected_ = true;
    if (transfer->status == LIBUSB_TRANSFER_NO_DEVICE) queue.gone_ = true;
    queue.finish(slot.self, queue.inFlight_, errorFromBulkStatus(transfer->status),
                 static_cast<std::uint32_t>(transfer->actual_length));
    if (!queue.anyWaiting_) return;  // the queue may be gone from here on
    ++queue.submitting_;
    lock.unlock();
    {
        const std::lock_guard order(queue.orderMutex_);
        queue.submitWaiting();
    }
    lock.lock();
    --queue.submitting_;
    if (queue.watchers_ != 0) queue.changed_.notify_all();
}

void LibusbReadQueue::tryAgain() {
    const std::lock_guard order(orderMutex_);
    submitWaiting();
}

bool LibusbReadQueue::takeFreeSlot() {
    if (!free_.empty()) return true;
    libusb_transfer* const transfer = libusb_alloc_transfer(0);
    if (transfer == nullptr) return false;
    try {
        free_.push_front({transfer, nullptr, this, {}});
    } catch (const std::bad_alloc&) {
        libusb_free_transfer(transfer);
        return false;
    }
    free_.front().self = free_.begin();
    return true;
}

void LibusbReadQueue::submitWaiting() {
    while (!waiting_.empty() && submitFirst()) continue;
    const std::lock_guard lock(mutex_);
    anyWaiting_ = !waiting_.empty();
}

// False: the kernel has no room for the first waiting read now.
bool LibusbReadQueue::submitFirst() {
    const Position slot = waiting_.begin();
    std::unique_lock lock(mutex_);
    if (const ErrorCode code = refusal(); code != error::kNone) {
        finish(slot, waiting_, code, 0);
        return true;
    }
    const bool alone = inFlight_.empty();
    // Where its completion looks for it, which can come before the submission returns.
    inFlight_.splice(inFlight_.end(), waiting_, slot);
    lock.unlock();
    const int result = libusb_submit_transfer(slot->transfer);
    if (result == LIBUSB_SUCCESS) return true;

    lock.lock();
    if (result != LIBUSB_ERROR_NO_MEM) {
        if (result == LIBUSB_ERROR_NO_DEVICE) gone_ = true;
        finish(slot, inFlight_, errorFromResult(result), 0);
        return true;
    }
    waiting_.splice(waiting_.begin(), inFlight_, slot);
    anyWaiting_ = true;
    // The next completion comes back here. Where the last one was faster than this refusal there is room now;
    // where there was none, others hold the budget, and only time helps.
    if (!inFlight_.empty()) return false;
    if (alone) events_.retrySoon();
    return !alone;
}

// Why no read may go to the kernel, if there is a reason.
ErrorCode LibusbReadQueue::refusal() const {
    if (gone_) return error::kDeviceNotConnected;
    return cancellers_ != 0 ? error::kOperationAborted : error::kNone;
}

void LibusbReadQueue::finish(Position slot, std::list<Slot>& from, ErrorCode code,
                             std::uint32_t transferred) {
    TavraUsbRead& read = *slot->read;
    slot->read = nullptr;
    free_.splice(free_.begin(), from, slot);
    read.transferred = transferred;
    read.status = code;
    setSignal(read.event);
    if (watchers_ != 0) changed_.notify_all();
}

}  // namespace tavra::usbd
