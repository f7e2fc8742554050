// A virtual bulk pipe: reads that wait for data, filled in their order as a host controller fills them.
//
// A transfer of the camera ends with a short packet, which is empty where the size is a multiple of the
// packet size. A read ends when it is full or at the short packet. One thread sends; any thread queues reads,
// waits for them, ends them.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>

#include "device.h"

namespace tavra::usbd {

// Four bytes that differ from frame to frame, put over the bytes of a transfer.
struct FrameNumber {
    std::size_t offset;
    std::uint32_t value;
};

class ReadQueue {
  public:
    explicit ReadQueue(std::uint32_t packetSize) : packetSize_(packetSize) {}

    // Queues a read: 997, or the number given to breakOff.
    ErrorCode start(void* buffer, std::uint32_t size, TavraUsbRead& read);
    // See Device::readResult. The wait ends by the read's completion.
    ErrorCode result(TavraUsbRead& read, std::uint32_t& transferred, bool wait);

    // The sender's side. open: sending may begin. close: ends the sender's waits, then every read gets
    // `error`; it does not wait for the sender, which must be joined before buffers are given back.
    void open();
    void stopSending();
    void cancelAll(ErrorCode error);
    // From now on reads are refused with `error`.
    void breakOff(ErrorCode error);

    // Waits until a read is queued: false when sending was stopped.
    bool waitForRead();
    // Sends one transfer into as many reads as it takes; the frame number is left out where `number` is null.
    // False when sending was stopped in the middle.
    bool send(std::span<const std::uint8_t> transfer, const FrameNumber* number);
    // Ends the next read with an error. False as above.
    bool fail(ErrorCode error);

  private:
    struct Waiting {
        std::uint8_t* buffer;
        std::uint32_t size;
        TavraUsbRead* read;
    };

    bool take(Waiting& waiting);
    void complete(const Waiting& waiting, std::uint32_t transferred, ErrorCode error);

    const std::uint32_t packetSize_;
    std::mutex mutex_;
    std::condition_variable queued_, completed_;
    std::deque<Waiting> reads_;
    std::uint32_t waiters_ = 0;
    bool senderWaits_ = false;
    bool sending_ = false;
    ErrorCode broken_ = 0;
};

}  // namespace tavra::usbd
