// The asynchronous bulk reads of one opening: from the caller's memory to libusb and back.
//
// Reads complete in the order in which they were started. When the kernel's budget for USB transfers is used
// up, a read waits here, behind those that are in flight, and goes to the kernel as soon as one of them
// completes; when the budget is held by somebody else, it is tried again every few milliseconds. The caller
// sees a read in flight and nothing else.
//
// Any thread may call anything. The records of reads are reused: after the first reads of a stream nothing is
// allocated here. Owned by the device; the event thread must run while reads are in flight.
#pragma once

#include <libusb.h>

#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>

#include "device.h"
#include "libusb/event_thread.h"

namespace tavra::usbd {

class LibusbReadQueue final : private RetryLater {
  public:
    LibusbReadQueue(libusb_device_handle* handle, std::uint8_t endpoint, EventThread& events);
    ~LibusbReadQueue();  // as cancelAll
    LibusbReadQueue(const LibusbReadQueue&) = delete;
    LibusbReadQueue& operator=(const LibusbReadQueue&) = delete;

    // 997: in flight, or completed already with its event set. 1167: the device is gone, nothing was queued.
    // Every other reason for which the read cannot be done is told as its result, so that nobody is tempted
    // to try for ever.
    ErrorCode start(void* buffer, std::uint32_t size, TavraUsbRead& read);

    // 0 or the read's error; 996 while it is in flight, if `wait` is false.
    ErrorCode result(const TavraUsbRead& read, std::uint32_t& transferred, bool wait);

    // Ends every read with 995, unless it completes on the way, and returns when none is left.
    void cancelAll();

    // True once after a read ended in a way that can leave the endpoint halted.
    bool takeHaltSuspicion();

  private:
    // One libusb transfer with the read that it serves. Slots move between the three lists and are never
    // freed before the queue is.
    struct Slot {
        libusb_transfer* transfer = nullptr;
        TavraUsbRead* read = nullptr;
        LibusbReadQueue* queue = nullptr;
        std::list<Slot>::iterator self;
    };

    using Position = std::list<Slot>::iterator;

    static void LIBUSB_CALL completed(libusb_transfer* transfer);
    void tryAgain() override;

    // With orderMutex_ held, and mutex_ not.
    void submitWaiting();
    bool submitFirst();

    // With mutex_ held.
    bool takeFreeSlot();
    ErrorCode refusal() const;
    void finish(Position slot, std::list<Slot>& from, ErrorCode code, std::uint32_t transferred);

    libusb_device_handle* const handle_;
    const std::uint8_t endpoint_;
    EventThread& events_;

    // Two locks, so that a completion never waits for a submission, which is a call into the kernel: the
    // first keeps submissions in order and guards waiting_, the second everything else. The first is taken
    // before the second.
    std::mutex orderMutex_;
    std::list<Slot> waiting_;  // for the kernel's budget, in order

    std::mutex mutex_;
    std::condition_variable changed_;  // a read completed that somebody waits for
    std::list<Slot> free_;
    std::list<Slot> inFlight_;  // in order
    bool anyWaiting_ = false;   // waiting_ is not empty
    unsigned submitting_ = 0;   // completions that are submitting waiting reads
    unsigned watchers_ = 0;     // threads that wait on changed_
    unsigned cancellers_ = 0;
    bool gone_ = false;
    bool haltSuspected_ = false;
};

}  // namespace tavra::usbd
