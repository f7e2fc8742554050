// Light: its colour, and how it changes while a camera runs. Pure functions; any thread.
#pragma once

#include <array>
#include <chrono>
#include <vector>

#include "model.h"

namespace tavra::usbd {

// Red, green and blue in light of a temperature in kelvin (1700 to 25000), against light of 5500 K, green
// being 1.
std::array<double, 3> lightColor(double kelvin);

// What falls on the scene.
struct Illumination {
    double light = 1;
    std::array<double, 3> color{1, 1, 1};  // as of lightColor, the tint taken in
};

// The names of light: `script` plays builtInLightScript, `dim` is dark and greenish.
inline constexpr double kDimLight = 0.15, kDimTint = 1.4;
const std::vector<LightStep>& builtInLightScript();

// The step of the scene's script that is on after so much frame time; 0 where there is no script.
std::size_t lightStepAt(const SceneModel& scene, std::chrono::nanoseconds time);
Illumination illuminationOf(const SceneModel& scene, std::size_t step);

}  // namespace tavra::usbd
