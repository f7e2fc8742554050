// A worker thread that can be stopped: the base of the movie writers.
//
// Belongs to the object that derives from it. One thread at a time calls Start and Stop; a derived class
// stops its worker in its own destructor, as long as it is still whole.
#pragma once

#include "base/status.h"
#include "platform/event.h"
#include "platform/thread.h"

namespace TavraTrg {

class CWorker {
  public:
    CWorker(const CWorker&) = delete;
    CWorker& operator=(const CWorker&) = delete;

    // Stops a worker that runs, then starts a thread that runs ThreadMain. Fails with the system's error.
    virtual tavra::Status Start();
    // Asks the thread to end and waits for it, without limit. Nothing if none runs.
    virtual void Stop();
    // The thread's work. Returns soon after the stop event is set.
    virtual void ThreadMain() = 0;
    virtual ~CWorker();

  protected:
    CWorker() = default;

    const tavra::platform::Event& stopEvent() const { return stopEvent_; }
    bool runs() const { return thread_.exists(); }

  private:
    tavra::platform::Event stopEvent_{tavra::platform::Event::Reset::Manual};
    tavra::platform::Thread thread_;
};

}  // namespace TavraTrg
