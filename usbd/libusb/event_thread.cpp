#include "libusb/event_thread.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <system_error>

#include "error_numbers.h"
#include "thread_name.h"

namespace tavra::usbd {
namespace {

// One above the camera library's read thread, which waits for what this thread delivers.
constexpr int kRoundRobinPriority = 16;
constexpr int kLowestNice = -16;

constexpr timeval kUntilSomethingHappens{60, 0};
constexpr timeval kRetryInterval{0, 5000};

void nameAndRaiseThisThread() {
    nameThisThread("tavra-usb");
    sched_param parameters{};
    parameters.sched_priority = kRoundRobinPriority;
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0) return;
    const auto threadId = static_cast<id_t>(syscall(SYS_gettid));
    for (int nice = kLowestNice; nice < 0; ++nice) {
        if (setpriority(PRIO_PROCESS, threadId, nice) == 0) return;
    }
}

}  // namespace

EventThread::~EventThread() {
    if (!thread_.joinable()) return;
    stop_ = true;
    libusb_interrupt_event_handler(context_);
    thread_.join();
}

ErrorCode EventThread::acquire() {
    const std::lock_guard lock(userMutex_);
    if (users_ == 0) {
        stop_ = false;
        try {
            thread_ = std::thread([this] { run(); });
        } catch (const std::system_error&) {
            return error::kOutOfMemory;
        }
    }
    ++users_;
    return error::kNone;
}

void EventThread::release() {
    const std::lock_guard lock(userMutex_);
    if (--users_ != 0) return;
    stop_ = true;
    libusb_interrupt_event_handler(context_);
    thread_.join();
}

void EventThread::add(RetryLater& work) {
    const std::lock_guard lock(workMutex_);
    work_.push_back(&work);
}

void EventThread::remove(RetryLater& work) {
    const std::lock_guard lock(workMutex_);
    std::erase(work_, &work);
}

void EventThread::retrySoon() {
    if (retryWanted_.exchange(true)) return;
    // The thread may be in its long wait. From inside, an interrupt would only cut its next, short one.
    if (std::this_thread::get_id() != runner_) libusb_interrupt_event_handler(context_);
}

void EventThread::run() {
    runner_ = std::this_thread::get_id();
    nameAndRaiseThisThread();
    while (!stop_) {
        const bool retry = retryWanted_;
        timeval timeout = retry ? kRetryInterval : kUntilSomethingHappens;
        const int result = libusb_handle_events_timeout_completed(context_, &timeout, nullptr);
        // A wait that cannot be waited must not become a busy loop.
        if (result < 0 && result != LIBUSB_ERROR_INTERRUPTED) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        if (!retry) continue;
        retryWanted_ = false;
        const std::lock_guard lock(workMutex_);
        for (RetryLater* const work : work_) work->tryAgain();
    }
    runner_ = std::thread::id();
}

}  // namespace tavra::usbd
