// Redraws of the preview window at a pace that a fast camera cannot break.
//
// The capture thread only marks a new image; a worker turns the marks into at most one invalidation of the
// window per interval. Images between two redraws cost nothing.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>

#include "base/status.h"
#include "platform/event.h"
#include "platform/thread.h"
#include "tavra/tavra_types.h"

namespace tavra {

class IWorker {
  public:
    // True: the worker is to end.
    virtual bool Wait(std::uint32_t timeoutMs) = 0;
    virtual platform::Event& GetStopEvent() = 0;

  protected:
    ~IWorker() = default;
    virtual void Run() = 0;  // on the worker's thread
};

// A thread with a stop event. One thread at a time starts and stops it.
class CWorker : public IWorker {
  public:
    CWorker() = default;
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    bool Wait(std::uint32_t timeoutMs) override { return stopEvent_.wait(timeoutMs); }
    platform::Event& GetStopEvent() override { return stopEvent_; }

    // Fails with the system's error.
    Status start(const char* name);
    // Waits without limit for the thread. A derived class does it in its destructor.
    void stop();

  protected:
    ~CWorker() = default;

  private:
    platform::Event stopEvent_{platform::Event::Reset::Manual};
    platform::Thread thread_;
};

// One per run of the capture thread, which requests; the invalidation runs on the worker's thread.
class CWorkerDrawTimming final : public CWorker {
  public:
    // Has the whole of the window drawn again, without erasing it first.
    using Invalidate = std::function<void(TavraWindow)>;

    static constexpr std::uint32_t kDefaultIntervalMs = 33;
    // Below this the worker does not wait for the interval's end.
    static constexpr std::uint32_t kImmediateBelowMs = 16;

    explicit CWorkerDrawTimming(Invalidate invalidate, std::uint32_t intervalMs = kDefaultIntervalMs);
    ~CWorkerDrawTimming();

    // The window has a new image. One request stands for all since the last redraw.
    void request(TavraWindow window);

  private:
    void Run() override;
    void drawIfRequested();

    Invalidate invalidate_;
    std::uint32_t intervalMs_;
    platform::Event wakeEvent_{platform::Event::Reset::Auto};
    std::mutex pendingMutex_;
    TavraWindow targetWindow_ = nullptr;
    bool drawPending_ = false;
};

}  // namespace tavra
