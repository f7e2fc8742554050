#include "control/gain_scale.h"

#include <algorithm>
#include <cmath>

namespace tavra {
namespace {

constexpr double kStep0 = 0.132;  // decibels a value
constexpr double kOffset0 = 2.36;
constexpr double kStep1 = 0.07038;
constexpr double kStart1 = 128;
constexpr double kOffset1 = 2.0;
constexpr double kStep4 = 0.1;
constexpr double kStep5 = 0.0351;
constexpr double kBackStep5 = 0.351;

constexpr double kUnit = 64;  // the factor 1 in the fractions of class 2
constexpr unsigned kOctave = 64;
constexpr double kOctaveStep = 0.015625;

double toDecibels(double factor) {
    return 20 * std::log10(factor);
}
double toFactor(double decibels) {
    return std::pow(10.0, decibels / 20);
}

double factorOfClass2(unsigned value) {
    return value < 21 ? (value + 8.0) * 8 / kUnit : (value - 12.0) * 28 / kUnit;
}

// By design: the coarse slope begins at another place than in the other direction.
double valueOfClass2(double decibels) {
    const double fraction = std::trunc(toFactor(decibels) * kUnit);
    return fraction <= 160 ? fraction * 0.125 - 8 : fraction / 28 + 12;
}

double factorOfClass3(unsigned value) {
    return std::ldexp((value & (kOctave - 1)) * kOctaveStep + 1, static_cast<int>(value >> 6 & 3));
}

// By design: whole octaves only. The fraction would be scaled down where it must be scaled up, and is 0.
double valueOfClass3(double decibels, double maximum) {
    double value = 0;
    for (double factor = toFactor(decibels); factor >= 2 && value < maximum; factor /= 2) value += kOctave;
    return value;
}

}  // namespace

GainScale GainScale::of(const CapabilityWords& words) {
    return GainScale((words.bit(1, 0) ? 1u : 0u) + (words.bit(3, 1) ? 2u : 0u) + (words.bit(3, 2) ? 4u : 0u));
}

float GainScale::decibels(std::uint16_t value) const {
    double result = 0;
    switch (class_) {
        case 1: result = kStep1 * (value + kStart1) + kOffset1; break;
        case 2: result = toDecibels(factorOfClass2(value)); break;
        case 3: result = toDecibels(factorOfClass3(value)); break;
        case 4: result = kStep4 * value; break;
        case 5: result = kStep5 * value; break;
        default: result = kStep0 * value - kOffset0; break;
    }
    return static_cast<float>(result);
}

std::uint32_t GainScale::settingValue(float decibels, std::uint16_t maximum) const {
    const double d = decibels;
    double value = 0;
    switch (class_) {
        case 1: value = (d - kOffset1) / kStep1 - kStart1; break;
        case 2: value = valueOfClass2(d); break;
        case 3: value = valueOfClass3(d, maximum); break;
        case 5: value = d / kBackStep5 + 0.5; break;  // By design: ten times the step of the other direction.
        default: value = (d + kOffset0) / kStep0; break;  // By design: class 4 as well.
    }
    if (!(value > 0)) return 0;
    return static_cast<std::uint32_t>(std::min<double>(value, maximum));
}

}  // namespace tavra
