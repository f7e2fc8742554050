// The one thread of the process that handles libusb's events: `tavra-usb`.
//
// It exists because completions have to be collected while every other thread is free to wait for something
// else. It runs while at least one device is open: the first one starts it, the last one to go ends it. It is
// owned by the libusb context; any thread but its own may acquire and release it.
//
// Callbacks of libusb run on it. It raises its priority like the read thread of the camera library does,
// because a completion that is collected late makes that thread wait.
#pragma once

#include <libusb.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "device.h"

namespace tavra::usbd {

// Work that has to be tried again after a while: reads that found the kernel's budget for USB transfers used
// up by others, so that no completion of their own will come.
class RetryLater {
  public:
    virtual void tryAgain() = 0;  // on the event thread

  protected:
    ~RetryLater() = default;
};

class EventThread {
  public:
    explicit EventThread(libusb_context* context) : context_(context) {}
    ~EventThread();
    EventThread(const EventThread&) = delete;
    EventThread& operator=(const EventThread&) = delete;

    // Starts the thread for the first user and ends it with the last. acquire fails with 8 when there is no
    // thread to be had.
    ErrorCode acquire();
    void release();

    // After remove has returned, `work` is not called any more.
    void add(RetryLater& work);
    void remove(RetryLater& work);
    // Calls everything added once, in a few milliseconds. Any thread, with any lock held.
    void retrySoon();

  private:
    void run();

    libusb_context* const context_;
    std::mutex userMutex_;  // users_ and thread_
    unsigned users_ = 0;
    std::thread thread_;
    std::atomic<std::thread::id> runner_;  // none while the thread does not run
    std::atomic<bool> stop_{false};
    std::atomic<bool> retryWanted_{false};
    std::mutex workMutex_;
    std::vector<RetryLater*> work_;
};

}  // namespace tavra::usbd
