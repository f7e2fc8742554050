// The exposure control in a virtual camera. Pure function of the camera's registers; any thread.
#pragma once

#include <cstdint>

#include "exposure.h"
#include "model.h"

namespace tavra::usbd {

// What the control may move, how far, and where to.
struct AutoExposure {
    bool shutter = false, gain = false;
    std::uint8_t target = 128;        // mean of a frame, of 255
    std::uint32_t shortestLines = 0;  // 0: as short as the camera can
    std::uint32_t longestLines = 0;   // 0: the longest exposure that fits a frame
    std::uint16_t lowestGain = 0, highestGain = 0;

    bool isOn() const { return shutter || gain; }
};

// Answers a frame of a mean brightness (0 to 1) in `registers`; true when something moved. A frame near the
// target moves nothing, another one the exposure by a factor of two at most. Light is made up by the shutter
// before gain is used, and gain is given back first.
bool adjustExposure(const Model& model, const AutoExposure& control, const ScanTiming& scan,
                    double brightness, ExposureRegisters& registers);

}  // namespace tavra::usbd
