#include "capture/draw_worker.h"

#include <utility>

#include "platform/timer_resolution.h"

namespace tavra {

Status CWorker::start(const char* name) {
    stop();  // one that runs
    stopEvent_.reset();
    return thread_.start(name, platform::ThreadPriority::Normal, [this] { Run(); });
}

void CWorker::stop() {
    stopEvent_.set();
    thread_.join();
}

CWorkerDrawTimming::CWorkerDrawTimming(Invalidate invalidate, std::uint32_t intervalMs)
    : invalidate_(std::move(invalidate)), intervalMs_(intervalMs) {
    platform::raiseTimerResolution();
}

CWorkerDrawTimming::~CWorkerDrawTimming() {
    stop();
    platform::restoreTimerResolution();
}

void CWorkerDrawTimming::request(TavraWindow window) {
    const std::lock_guard lock(pendingMutex_);
    targetWindow_ = window;
    drawPending_ = true;
    if (intervalMs_ < kImmediateBelowMs) wakeEvent_.set();
}

void CWorkerDrawTimming::Run() {
    const platform::Event* const either[] = {&GetStopEvent(), &wakeEvent_};
    for (;;) {
        const int ended = platform::waitAny(either, intervalMs_);
        if (ended == 0 || ended == platform::kWaitFailed) return;
        drawIfRequested();
    }
}

void CWorkerDrawTimming::drawIfRequested() {
    const std::lock_guard lock(pendingMutex_);
    if (!std::exchange(drawPending_, false)) return;
    invalidate_(targetWindow_);
}

}  // namespace tavra
