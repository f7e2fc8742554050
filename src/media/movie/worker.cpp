#include "media/movie/worker.h"

namespace TavraTrg {

tavra::Status CWorker::Start() {
    CWorker::Stop();
    stopEvent_.reset();
    return thread_.start("tavra-writer", tavra::platform::ThreadPriority::Normal, [this] { ThreadMain(); });
}

void CWorker::Stop() {
    if (!thread_.exists()) return;
    stopEvent_.set();
    thread_.join();
}

CWorker::~CWorker() = default;

}  // namespace TavraTrg
