// When a virtual camera exposes and how fast it sends: clock, lines, exposure and gains in seconds and
// factors. Pure functions of the model and the camera's registers; any thread.
#pragma once

#include <cstdint>

#include "geometry.h"
#include "model.h"

namespace tavra::usbd {

// The registers that timing and brightness follow from, as the host wrote them.
struct ExposureRegisters {
    std::uint32_t lines = 0;  // with clocks 0: the longest exposure that fits a frame
    std::uint32_t clocks = 0;
    std::uint16_t gain = 0;
    std::uint16_t digitalGain = 64;
    std::uint32_t verticalBlank = 0;  // lines added to every frame
    std::uint32_t clockHz = 0;
    double triggerSeconds = 0;  // above 0: a trigger of this length times the exposure
};

class ExposureTiming {
  public:
    ExposureTiming(const Model& model, const ExposureRegisters& registers, std::uint32_t imageHeight,
                   std::uint16_t scanMode);

    ScanTiming scan() const { return scan_; }
    double exposureSeconds() const { return exposureSeconds_; }
    // Time from one frame to the next: the frame's lines, or the exposure where that is longer.
    double frameSeconds() const;
    std::uint32_t clocksPerFrame() const;

  private:
    void findLimits(const Model& model, std::uint16_t scanMode);

    double clockHz_;
    double unitSeconds_ = 0;  // one clock of an exposure
    ScanTiming scan_;
    double exposureSeconds_ = 0;
};

double gainFactor(const Model& model, std::uint16_t gain);
double digitalGainFactor(const Model& model, std::uint16_t digitalGain);

// The exposure that saturates white at light 1 and gain 1.
double fullScaleSeconds(const Model& model);

}  // namespace tavra::usbd
