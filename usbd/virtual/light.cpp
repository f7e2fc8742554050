#include "light.h"

#include <cmath>

namespace tavra::usbd {
namespace {

// Planck's law at one wavelength, up to a constant factor. Second radiation constant: 1.438777e-2 m K.
double radiance(double metres, double kelvin) {
    return 1 / (std::pow(metres, 5) * (std::exp(1.438777e-2 / (metres * kelvin)) - 1));
}

// Middles of the red, green and blue pass bands of common sensors.
constexpr double kWavelengths[] = {600e-9, 540e-9, 460e-9};
constexpr double kReference = 5500;

std::chrono::nanoseconds lengthOf(const LightStep& step) {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(step.seconds * 1e9));
}

}  // namespace

std::array<double, 3> lightColor(double kelvin) {
    std::array<double, 3> color{};
    for (std::size_t c = 0; c < 3; ++c) {
        color[c] = radiance(kWavelengths[c], kelvin) / radiance(kWavelengths[c], kReference);
    }
    const double green = color[1];
    for (double& channel : color) channel /= green;
    return color;
}

// One thing changes at a time, so that it can be told which loop answers; six seconds are enough for both.
const std::vector<LightStep>& builtInLightScript() {
    static const std::vector<LightStep> script{{6, 1, 5500}, {6, 0.35, 5500}, {6, 0.35, 3000},
                                               {6, 2, 3000}, {6, 2, 8000},    {6, 1, 8000}};
    return script;
}

std::size_t lightStepAt(const SceneModel& scene, std::chrono::nanoseconds time) {
    if (scene.script.empty()) return 0;
    std::chrono::nanoseconds round{};
    for (const LightStep& step : scene.script) round += lengthOf(step);
    time %= round;
    std::size_t at = 0;
    while (time >= lengthOf(scene.script[at])) time -= lengthOf(scene.script[at++]);
    return at;
}

Illumination illuminationOf(const SceneModel& scene, std::size_t step) {
    const bool scripted = !scene.script.empty();
    Illumination now{scripted ? scene.script[step].light : scene.light,
                     lightColor(scripted ? scene.script[step].kelvin : scene.kelvin)};
    now.color[0] /= scene.tint;
    now.color[2] /= scene.tint;
    return now;
}

}  // namespace tavra::usbd
