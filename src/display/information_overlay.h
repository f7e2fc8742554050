// The control state, printed into a preview image: for tuning and service. On the capture thread.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "base/status.h"
#include "platform/paint.h"
#include "platform/rectangle.h"

namespace tavra {

// What is printed. A caller fills in what it will have drawn.
struct ControlState {
    // Weighted means of the frame: R, Gr, Gb, B and luminance.
    std::array<std::uint8_t, 4> means{};
    std::uint8_t luminance = 0;
    std::array<std::uint16_t, 4> whiteBalanceGains{};  // R, Gr, Gb, B
    std::uint32_t shutterLine = 0;
    std::uint32_t shutterClock = 0;
    std::uint16_t gain = 0;
    std::uint16_t digitalGain = 0;
    // Weights of 4 x 4 cells, row by row, and the lines between the cells in ten-thousandths.
    std::array<std::uint8_t, 16> exposureWeights{};
    std::array<std::uint8_t, 16> whiteBalanceWeights{};
    std::array<std::uint16_t, 3> xBoundary{};
    std::array<std::uint16_t, 3> yBoundary{};
};

// Four lines from the left upper corner. A line that fails ends the text.
Status DrawStatisticsText(platform::IPaint& paint, const ControlState& state);

// The weights of each cell and the lines between the cells, in an image of this size. A weight or line
// that cannot be drawn costs nothing else; of several failures the last is told.
// By design: the boundaries count as they were set; one out of range lies outside the image.
Status DrawControlGrid(platform::IPaint& paint, platform::Size image, const ControlState& state);

}  // namespace tavra
