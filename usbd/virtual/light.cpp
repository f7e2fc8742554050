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

}  // namespace tavra::usbd
