// Whole frames from a camera's bulk pipe, with no copy in the normal case.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/status.h"
#include "capture/frame_queue.h"
#include "capture/read_loop.h"
#include "capture/read_memory.h"
#include "capture/read_sizes.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "platform/usb_access.h"

namespace tavra {

// Made by the capture thread for one run, and used by it alone; the read thread runs beside it. Nothing is
// allocated after construction.
class CReadEngine {
  public:
    CReadEngine(const platform::UsbAccess& usb, TavraUsbDevice device, const FrameLayout& layout,
                std::uint32_t maximumTransfer);
    ~CReadEngine() { stop(); }
    CReadEngine(const CReadEngine&) = delete;
    CReadEngine& operator=(const CReadEngine&) = delete;

    // Starts the read thread, the first time or after stop(). 8: there was not as much memory as frames of
    // this size take, or no events; else the system's error.
    Status start();
    // Waits without limit for the read thread. Reads in flight are not cancelled one by one: UsbEndRead ends
    // them, and only that makes it safe to free the memory afterwards.
    void stop();

    FrameQueue& queue() { return queue_; }
    // Set while no read thread runs; the same event over restarts.
    const platform::Event& ended() const { return thread_.ended(); }
    // Why the read thread ended by itself: 0, or 5 when the device went away.
    std::uint32_t status() const { return status_; }
    const ReadSizes& sizes() const { return sizes_; }

  private:
    bool makeReads();
    bool ready() const;
    void readThread();

    const platform::UsbAccess& usb_;
    TavraUsbDevice device_;
    ReadSizes sizes_;
    platform::Event stop_{platform::Event::Reset::Manual};
    FrameQueue queue_;
    ReadMemory memory_;
    std::vector<std::unique_ptr<PendingRead>> reads_;
    std::atomic<std::uint32_t> status_{0};
    platform::Thread thread_;
};

}  // namespace tavra
