// One run of the stream: where all parts of the library meet.
//
// It takes finished frames from the read engine, sends each along the frame path, and tells the application
// about start and end by messages. Nothing else tells it of failures.
#pragma once

#include <cstdint>
#include <optional>

#include "camera/common_param.h"
#include "capture/draw_worker.h"
#include "capture/frame_path.h"
#include "capture/read_engine.h"
#include "capture/run_state.h"

namespace tavra {

// Made and used on the capture thread, for one run. Everything of the read side lives only as long as it, so
// a change of formats between two runs needs nothing here.
class CaptureThread {
  public:
    explicit CaptureThread(TAVRA_COMMON_PARAM& camera);

    // Until stop is asked for, something fails, or nobody wants frames.
    void run();

  private:
    enum class Verdict { Use, Skip, End };

    bool prepare();
    void readTriggerWord();
    void readGeometry();
    std::uint32_t packetSize();
    void startDrawWorker();
    bool startReadEngine(std::uint32_t packet);
    bool announceStart();

    void loop();
    bool framesWanted();
    bool waitForBlock();
    Verdict judgeStatus();
    Verdict judgeLength(std::uint8_t*& data);
    Verdict restartReading();
    std::uint32_t headerFrameNumber(const FrameBlock& block) const;

    void shutdown();
    bool closeToRecorder();
    void releaseRecorder();
    std::uint32_t endCode() const;
    void announceEnd();

    TAVRA_COMMON_PARAM& camera_;
    RunState run_;
    CWorkerDrawTimming drawWorker_;
    std::optional<CReadEngine> engine_;
    std::optional<FramePath> path_;
    bool closedToRecorder_ = false;
};

}  // namespace tavra
