// Follows the controls of exposure and white balance frame by frame.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "control_state.h"
#include "frame_means.h"

namespace tavra::tool {

// Whether a control has changed something within one of its periods.
class Movement {
  public:
    // - period: frames from one decision of the control to the next
    explicit Movement(std::uint64_t period) : period_(period) {}

    void nextFrame(bool changed) {
        if (sinceChange_ <= period_) ++sinceChange_;
        if (changed) sinceChange_ = 0;
    }
    bool moves() const { return sinceChange_ <= period_; }

  private:
    std::uint64_t period_;
    std::uint64_t sinceChange_ = UINT64_MAX;  // frames; not counted on beyond the period
};

struct ControlReading {
    std::uint32_t frame = 0;
    ControlState state;  // as the frame came, without units
    FrameMeans means;    // behind the gains of white balance: what both controls measure
    bool exposureMoves = false, whiteBalanceMoves = false;
};

// Registers a raw callback. Made before the stream starts, gone after it has stopped. The capture thread
// reads, another thread takes the readings out.
class ControlMonitor {
  public:
    // Reads every n-th frame; with 0 those that are asked for only.
    ControlMonitor(const Camera& camera, bool color, std::uint64_t every);
    ~ControlMonitor();
    ControlMonitor(const ControlMonitor&) = delete;
    ControlMonitor& operator=(const ControlMonitor&) = delete;

    // The next frame is read.
    void ask();
    // The readings since the last call.
    std::vector<ControlReading> takeReadings();
    // Frames that came by.
    std::uint64_t frames() const;

  private:
    static void onFrame(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                        std::uint32_t number, std::uint16_t colorArray, std::uint32_t transferBits,
                        void* context, std::uint32_t* word);
    void read(const RawView& frame, std::uint32_t number, std::uint16_t colorArray);
    FrameMeans measure(const RawView& frame, std::uint16_t colorArray) const;
    bool isDue();

    const Camera& camera_;
    const bool color_;
    const bool appliesGains_;  // the library does, not the camera
    const std::uint64_t every_;
    std::uint32_t identifier_ = 0;
    ControlState state_;                // capture thread
    Movement exposure_, whiteBalance_;  // capture thread
    mutable std::mutex mutex_;          // guards what follows
    std::uint64_t frames_ = 0;
    bool asked_ = false;
    std::vector<ControlReading> readings_;
};

}  // namespace tavra::tool
