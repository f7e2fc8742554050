// The loop: which frames it takes, when it decides, and how far it moves.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "control/luminance_ctrl.h"

namespace tavra {
namespace {

bool movesShutter(std::uint8_t mode) {
    return mode == alc_mode::kBoth || mode == alc_mode::kShutter || mode == alc_mode::kBothOnce ||
           mode == alc_mode::kShutterOnce;
}
bool movesGain(std::uint8_t mode) {
    return mode == alc_mode::kBoth || mode == alc_mode::kGain || mode == alc_mode::kBothOnce ||
           mode == alc_mode::kGainOnce;
}
bool isOnce(std::uint8_t mode) {
    return mode >= alc_mode::kBothOnce && mode <= alc_mode::kGainOnce;
}

// Takes ends upside down as they are: the bottom counts first.
std::uint32_t limited(std::uint32_t value, std::uint32_t bottom, std::uint32_t top) {
    if (value < bottom) return bottom;
    return value > top ? top : value;
}

// `value` rounded to a multiple, half up.
std::uint64_t rounded(std::uint64_t value, std::uint32_t multiple) {
    return (value + multiple / 2) / multiple * multiple;
}

constexpr float kSmallestFactor = 0.0001F;

// Single precision, narrowed from double: the functions of single precision differ from system to system in
// their last place, which can decide a gain.
float powerOf10(float exponent) {
    return static_cast<float>(std::pow(10.0, static_cast<double>(exponent)));
}
float logarithm10(float value) {
    return static_cast<float>(std::log10(static_cast<double>(value)));
}

}  // namespace

struct CLuminanceCtrl::Totals {
    ShutterScale scale;
    std::uint32_t bottom;
    std::uint32_t top;
    std::uint32_t current;
};

CLuminanceCtrl::Totals CLuminanceCtrl::totals() const {
    const ShutterScale limits = scale();
    return {limits, limits.ToTotalClocks(shutterRange_.min), limits.ToTotalClocks(shutterRange_.max),
            limits.ToTotalClocks(shutter_)};
}

bool CLuminanceCtrl::due() {
    const std::lock_guard lock(controlMutex_);
    if (alcMode_ != alc_mode::kOff && skipCounter_ == 0) return true;
    if (skipCounter_ != 0) --skipCounter_;
    return false;
}

Status CLuminanceCtrl::step(const CAveragePixelValue& frame) {
    const std::lock_guard lock(controlMutex_);
    if (alcMode_ == alc_mode::kOff) return Status();
    if (skipCounter_ != 0) {
        --skipCounter_;
        return Status();
    }
    std::uint8_t luminance = 0;
    if (frame.GetWeightedLuminance(weights_, luminance) == 0) return Status(error::kDataError);
    brightnessSum_ = luminance + (averageCounter_ == 0 ? 0 : brightnessSum_);
    if (++averageCounter_ < speed_.averageFrames) return Status();
    const auto average = static_cast<std::uint8_t>(brightnessSum_ / averageCounter_);
    averageCounter_ = 0;
    return decide(average);
}

Status CLuminanceCtrl::decide(std::uint8_t average) {
    Status result;
    const Totals at = totals();  // of one moment, and in force until something is adjusted
    lastAdjusted_ = clampToRanges(at) || adjust(at, average);
    if (lastAdjusted_) {
        result = WriteShutterAndGain();
    } else if (isOnce(alcMode_)) {
        alcMode_ = alc_mode::kOff;
    }
    skipCounter_ = speed_.skipFrames;
    return result;
}

bool CLuminanceCtrl::clampToRanges(const Totals& at) {
    const std::uint16_t gainBefore = gain_;
    if (movesGain(alcMode_)) {
        gain_ = static_cast<std::uint16_t>(limited(gain_, gainRange_.min, gainRange_.max));
    }
    std::uint32_t clocks = at.current;
    bool changed = gain_ != gainBefore;
    if (movesShutter(alcMode_) && clampShutter(at, clocks)) changed = true;
    // Gain is for what the shutter cannot give.
    if (movesShutter(alcMode_) && movesGain(alcMode_) && clocks != at.top && gain_ != gainRange_.min) {
        gain_ = gainRange_.min;
        changed = true;
    }
    return changed;
}

// `clocks` becomes the exposure after the clamp.
bool CLuminanceCtrl::clampShutter(const Totals& at, std::uint32_t& clocks) {
    if (!at.scale.clockUnit && shutter_.clock != 0) {
        // By design: a clock part that has no effect takes the lines with it, to the longest exposure that
        // fits a frame.
        clocks = shutter_.line != 0 ? at.scale.maxShortClocks() : at.scale.clocksPerLine();
    }
    if (at.top < at.current) clocks = at.top;
    if (at.current < at.bottom) clocks = at.bottom;
    if (clocks == at.current) return false;
    shutter_ = at.scale.split(clocks);
    if (!at.scale.clockUnit) shutter_.clock = 0;
    return true;
}

bool CLuminanceCtrl::adjust(const Totals& at, std::uint8_t average) {
    const bool tooDark = target_.target > average;
    // Wide enough for a tolerance and a threshold of 255 each.
    const int band = target_.tolerance + (lastAdjusted_ ? 0 : target_.threshold);
    if (std::abs(target_.target - average) <= band) return false;
    return shutterIsFirst(at, tooDark) ? adjustShutter(at, average, tooDark) : adjustGain(average, tooDark);
}

// Brightening begins with the shutter, darkening with the gain.
bool CLuminanceCtrl::shutterIsFirst(const Totals& at, bool tooDark) const {
    if (!movesGain(alcMode_)) return true;
    if (!movesShutter(alcMode_)) return false;
    return tooDark ? at.current != at.top : gain_ == gainRange_.min;
}

bool CLuminanceCtrl::adjustShutter(const Totals& at, std::uint8_t average, bool tooDark) {
    const std::uint32_t unit = at.scale.clockUnit ? 1 : at.scale.clocksPerLine();
    const std::uint32_t divisor = speed_.shutter + 1u;
    std::uint32_t step = at.current / divisor;
    if (unit > 1) step -= step % unit;

    std::uint32_t bottom = at.bottom;
    std::uint32_t top = at.top;
    if (tooDark) {
        top =
            static_cast<std::uint32_t>(std::min<std::uint64_t>(std::uint64_t{step} + unit + at.current, top));
    } else {
        const std::uint32_t moved = at.current - step;
        bottom = std::max(bottom, unit < moved ? moved - unit : unit);
    }

    // By design: 32 bits, which a very long exposure overflows.
    const std::uint32_t ideal = at.current * target_.target / std::max<std::uint32_t>(average, 1);
    // By design: without a clock part to multiples of the divisor, and not of a line.
    const std::uint64_t wanted = at.scale.clockUnit ? ideal : rounded(ideal, divisor);
    const std::uint32_t clocks =
        limited(static_cast<std::uint32_t>(std::min<std::uint64_t>(wanted, 0xFFFFFFFF)), bottom, top);
    if (clocks == at.current) return false;
    // The top of the long range falls back to the free-running exposure.
    shutter_ = clocks < at.scale.maxLongClocks() ? at.scale.split(clocks) : Shutter();
    return true;
}

// In factors, and in single precision.
bool CLuminanceCtrl::adjustGain(std::uint8_t average, bool tooDark) {
    const float factor = powerOf10(GetGainDBFromSettingValue(gain_) / 20.0F);
    const float brightness = static_cast<float>(average);
    const float raw = factor > 0.0F ? std::trunc(brightness / factor) : brightness;  // at a factor of 1
    const float target = static_cast<float>(target_.target);
    float ideal = 1.0F;
    if (raw != 0.0F) {
        ideal = target / raw;
    } else if (target > 0.0F) {
        ideal = target;
    }
    const float step = factor / (static_cast<float>(speed_.gain) + 1.0F);

    float wanted = std::min(factor + step, ideal);
    if (!tooDark) {
        wanted = factor - step;
        if (!(wanted > 0.0F)) wanted = kSmallestFactor;
        wanted = std::max(wanted, ideal);
    }
    std::uint32_t value = GetSettingValueFromGainDB(20.0F * logarithm10(wanted));
    // One value at least.
    if (tooDark) {
        value = std::max(value, gain_ + 1u);
    } else if (value >= gain_) {
        value = gain_ == 0 ? 0 : gain_ - 1u;
    }
    value = limited(value, gainRange_.min, gainRange_.max);
    if (value == gain_) return false;
    gain_ = static_cast<std::uint16_t>(value);
    return true;
}

}  // namespace tavra
