// What the read thread does: keeps reads in flight and cuts what they bring into frame blocks.
//
// The design stands on short reads: a read that comes back short ends a frame. So a stream that begins in the
// middle of a frame, or loses data, is in step again with the next frame's end.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "capture/frame_queue.h"
#include "capture/read_sizes.h"
#include "platform/event.h"
#include "platform/usb_access.h"

namespace tavra {

// A read and its event. There is one more of them than reads are in flight.
struct PendingRead {
    TavraUsbRead usb{};
    platform::Event event{platform::Event::Reset::Manual, true};
};

// Made by the read engine for one run; used on the read thread only.
class ReadLoop {
  public:
    struct Resources {
        const platform::UsbAccess& usb;
        TavraUsbDevice device;
        ReadSizes sizes;
        std::uint8_t* memory;
        std::span<const std::unique_ptr<PendingRead>> reads;  // firstDepth + 1 of them
        FrameQueue& queue;
        const platform::Event& stop;
    };

    explicit ReadLoop(const Resources& resources) : r_(resources) {}

    // Until stop is asked for (0) or the device is gone (5). No read is in flight afterwards.
    std::uint32_t run();

  private:
    enum class Next { Again, End };
    enum class Result { Data, Restart, Failed, Gone };

    bool beginStream();
    Next queueFirstReads();
    Next oneRead();
    bool waitForRead();
    Next queueNextRead();
    Result takeResult(std::uint32_t& length);
    void handleData(std::uint32_t length, bool frameEnded);
    void append(FrameBlock& block, std::uint32_t length) const;
    void passFailure(std::uint32_t code);

    // True: in flight. False with `gone`: the device went away; without: stop was asked for.
    bool startRead(std::uint32_t slot, std::uint32_t read, bool& gone);
    Next deviceGone();

    std::uint8_t* slotData(std::uint32_t slot) const {
        return r_.memory + std::uint64_t{slot} * r_.sizes.readSize;
    }
    std::uint32_t nextSlot(std::uint32_t slot) const { return slot + 1 == r_.sizes.slotCount ? 0 : slot + 1; }
    std::uint32_t nextRead(std::uint32_t read) const {
        return read + 1 == static_cast<std::uint32_t>(r_.reads.size()) ? 0 : read + 1;
    }

    Resources r_;
    bool firstPass_ = true;
    bool resumable_ = false;
    std::uint32_t slot_ = 0;       // the read waited for
    std::uint32_t read_ = 0;       // its record
    std::uint32_t queueSlot_ = 0;  // the next to be queued
    std::uint32_t queueRead_ = 0;
    std::uint32_t status_ = 0;
};

}  // namespace tavra
