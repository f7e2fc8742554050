// All that the bytes of a virtual camera's frame follow from, at one moment. Two frames with equal settings
// differ only in noise and frame number. Plain data.
#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "geometry.h"

namespace tavra::usbd {

// What reaches the sensor and how it is read out: the part that a picture is drawn from.
struct ViewSettings {
    std::vector<Region> regions;
    bool grid = false;                         // the regions' grid in one piece
    std::vector<std::uint32_t> columns, rows;  // of the grid
    ReadoutFactors factors;
    bool mirrorX = false, mirrorY = false;
    std::uint16_t colorArray = 1;
    std::uint32_t transferBits = 1;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> correctedPixels;  // x, y on the sensor

    friend bool operator==(const ViewSettings&, const ViewSettings&) = default;
};

struct FrameSettings {
    ViewSettings view;
    double exposure = 0;  // of full scale: 1 saturates white at light 1
    double light = 1;
    std::array<double, 3> lightColor{1, 1, 1};       // red, green and blue of white paper, green being 1
    double gain = 1;                                 // analogue times digital
    double black = 0;                                // of full scale
    std::array<double, 4> whiteBalance{1, 1, 1, 1};  // of the sites R, Gr, Gb, B

    friend bool operator==(const FrameSettings&, const FrameSettings&) = default;
};

}  // namespace tavra::usbd
