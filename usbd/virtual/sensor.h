// The pixel model of a virtual camera: from the scene to sample values. Pure functions of their arguments;
// any thread.
//
// Light falls through the colour sites on the pixels (SignalMap, once for each view), is collected while the
// sensor is exposed, saturates, gets noise, is amplified, and becomes a number (exposeRow).
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "frame_settings.h"
#include "model.h"
#include "scene.h"

namespace tavra::usbd {

enum class Site : std::uint8_t { Red = 0, GreenR = 1, GreenB = 2, Blue = 3 };

// Colour site of a mosaic: codes 2 to 5, 12 to 15 likewise, 16 to 19 in blocks of two by two.
Site siteAt(std::uint16_t colorArray, std::uint32_t x, std::uint32_t y);
// After how many pixels the mosaic repeats.
std::uint32_t mosaicPeriod(std::uint16_t colorArray);

// What a transfer code asks of the sensor.
enum class Samples { Mosaic, Grey, Color };
Samples samplesOf(std::uint32_t transferBits, std::uint16_t colorArray);

// Signal of each sample that is sent, at light 1 of 5500 K, of what saturates at the full scale exposure.
struct SignalMap {
    // One rectangle of the frame: a region, or the grid of all.
    struct Panel {
        std::uint32_t width = 0, height = 0;
        std::vector<std::uint8_t> columnPhase,
            rowPhase;           // place in the mosaic, for the colour of light and camera-side white balance
        std::size_t first = 0;  // its first sample in `signal`
    };
    // A pixel with dark current: sample, signal that a full scale exposure adds.
    struct HotPixel {
        std::size_t sample;
        float strength;
    };

    Samples samples = Samples::Mosaic;
    std::uint16_t colorArray = 1;
    std::vector<Panel> panels;
    std::vector<float> signal;  // Samples::Color: red, green, blue of each pixel
    std::vector<HotPixel> hot;  // ascending by sample

    std::size_t channels() const { return samples == Samples::Color ? 3 : 1; }
};

SignalMap mapSignal(const Model& model, const ViewSettings& view, const Scene& scene);

// Sample values of one row of a panel, of sensor.bits bits, right-aligned. `variant` picks the noise.
void exposeRow(const Model& model, const FrameSettings& settings, const SignalMap& map,
               const SignalMap::Panel& panel, std::uint32_t row, std::uint32_t variant,
               std::span<std::uint16_t> samples);

}  // namespace tavra::usbd
