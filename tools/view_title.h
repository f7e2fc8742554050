// The title of `tavra view`: the state of camera, stream and window in a line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "control_state.h"

namespace tavra::tool {

struct ViewState {
    std::string camera;
    double fps = 0;
    std::uint64_t lost = 0;
    std::optional<ControlState> control;  // none: the camera did not answer
    bool color = false;                   // white balance gains belong to the line
    bool autoExposure = false, autoWhiteBalance = false;
    bool fit = false;
    double magnification = 1;
    std::uint8_t rotation = 0;  // TAVRA_ROTATION_ code
    std::string movie;          // its file; empty: none is recorded
    double movieSeconds = 0;
    std::string notice;  // what has just been done or could not be; may be empty
};

// "TV-2326C  30.0 fps  0 lost  exposure 8.000ms  gain 6.0dB  wb R 1.25 B 1.48  auto exposure  fit x2"
std::string viewTitle(const ViewState& state);

}  // namespace tavra::tool
