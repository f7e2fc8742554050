#include "platform/thread.h"

#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <new>
#include <utility>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

// Priority within the round-robin class: above ordinary real-time work, below the kernel's interrupt threads
// (50).
constexpr int kRoundRobinPriority = 15;
constexpr int kLowestNice = -15;

// Best effort: real time where the user may have it, else as nice a value as the limits allow.
void raisePriority() {
    sched_param parameters{};
    parameters.sched_priority = kRoundRobinPriority;
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0) return;
    const auto threadId = static_cast<id_t>(syscall(SYS_gettid));
    for (int nice = kLowestNice; nice < 0; ++nice) {
        if (setpriority(PRIO_PROCESS, threadId, nice) == 0) return;
    }
}

// A file that grows past the process's limit gives the writer an error; the signal that comes with it would
// end the application.
void holdFileSizeSignal() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGXFSZ);
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
}

}  // namespace

struct Thread::Native {
    pthread_t id{};
    ThreadPriority priority{};
    std::function<void()> body;
    Event* ended = nullptr;

    static void* run(void* self) {
        auto& native = *static_cast<Native*>(self);
        holdFileSizeSignal();
        if (native.priority == ThreadPriority::TimeCritical) raisePriority();
        native.body();
        native.ended->set();
        return nullptr;
    }
};

Thread::Thread() = default;

Thread::~Thread() {
    join();
}

Status Thread::start(const char* name, ThreadPriority priority, std::function<void()> body) {
    if (!ended_.valid()) return failWith(error::kOutOfMemory);
    ended_.reset();
    native_.reset(new (std::nothrow) Native{{}, priority, std::move(body), &ended_});
    if (!native_) return failWith(error::kOutOfMemory);
    const int result = pthread_create(&native_->id, nullptr, &Native::run, native_.get());
    if (result != 0) {
        native_.reset();
        return failWith(errorFromErrno(result));
    }
    pthread_setname_np(native_->id, name);
    return Status();
}

bool Thread::exists() const {
    return native_ != nullptr;
}

void Thread::join() {
    if (!native_) return;
    pthread_join(native_->id, nullptr);
    native_.reset();
}

}  // namespace tavra::platform
