// What the controls of exposure and white balance have made of the camera.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "camera.h"

namespace tavra::tool {

struct ControlState {
    std::uint32_t exposureClock = 0;
    double exposureSeconds = 0;
    std::uint16_t gain = 0;  // setting value
    double decibels = 0;
    std::array<std::uint16_t, 4> whiteBalance{};  // R, Gr, Gb, B; 128 is 1.0

    bool sameExposure(const ControlState& other) const {
        return exposureClock == other.exposureClock && gain == other.gain;
    }
    bool sameWhiteBalance(const ControlState& other) const { return whiteBalance == other.whiteBalance; }
    // "exposure 8.000ms  gain 6.0dB  wb R 1.25 B 1.48"; the last on colour cameras.
    std::string text(bool color) const;
};

// Throws Failure if the camera does not answer.
ControlState readControlState(const Camera& camera, bool color);
// Only the numbers of the controls, without their units: on most cameras no transfer, fit for a callback.
// False, with the state unchanged in part, if the camera does not answer.
bool readControlNumbers(const Camera& camera, bool color, ControlState& state);
// Time and decibels of the numbers.
void addUnits(const Camera& camera, ControlState& state);

// Whether white balance has something to act on: a Bayer mosaic, or a camera that does it itself. Quad
// mosaics pass it unchanged, and the control would push its gains to their ends.
bool whiteBalanceActs(const Camera& camera);

// Throws Failure unless the camera sends frames that the controls of the library work on.
void requireMosaicFormat(const Camera& camera, const std::string& what);

}  // namespace tavra::tool
