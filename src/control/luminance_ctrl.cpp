#include "control/luminance_ctrl.h"

#include "control/shutter_range.h"

namespace tavra {
namespace {

constexpr std::uint8_t kHostModes = 0x0F;

bool isLegalMode(std::uint8_t mode) {
    return mode <= alc_mode::kGainOnce || mode == alc_mode::kCameraShutter || mode == alc_mode::kCameraGain ||
           mode == alc_mode::kCameraBoth;
}

}  // namespace

void CLuminanceCtrl::restoreDefaults(std::uint16_t maxGain) {
    maxGain_ = maxGain;
    gain_ = defaults_.gain;
    digitalGain_ = defaults_.digitalGain;
    shutter_ = defaults_.shutter;
    alcMode_ = alc_mode::kOff;
    target_ = BrightnessTarget();
    speed_ = ControlSpeed();
    weights_.fill(1);
    gainRange_ = {defaults_.gain, maxGain_};
    const bool inClocks = traits_.clockUnit && GetMaxClock() != 0;
    shutterRange_ = {inClocks ? Shutter{0, 1} : Shutter{1, 0}, Shutter()};
    lastAdjusted_ = false;
    skipCounter_ = 0;
    averageCounter_ = 0;
    brightnessSum_ = 0;
}

ShutterScale CLuminanceCtrl::scale() const {
    ShutterScale limits = readScale();
    limits.clockUnit = traits_.clockUnit;
    return limits;
}

ShutterScale CLuminanceCtrl::shutterScale() const {
    const std::lock_guard lock(controlMutex_);
    return scale();
}

// Mode, speed, target and weights.

Status CLuminanceCtrl::SetALCMode(std::uint8_t mode) {
    alcMode_ = mode & kHostModes;
    return Status();
}

Status CLuminanceCtrl::GetALCMode(std::uint8_t& mode) {
    mode = alcMode_;
    return Status();
}

Status CLuminanceCtrl::SetTargetBrightness(const BrightnessTarget& target) {
    target_ = target;
    return Status();
}

Status CLuminanceCtrl::setMode(std::uint8_t mode) {
    if (!isLegalMode(mode)) return Status(error::kInvalidArgument);
    const std::lock_guard lock(controlMutex_);
    return SetALCMode(mode);
}

Status CLuminanceCtrl::mode(std::uint8_t& mode) {
    const std::lock_guard lock(controlMutex_);
    return GetALCMode(mode);
}

void CLuminanceCtrl::setControlSpeed(const ControlSpeed& speed) {
    const std::lock_guard lock(controlMutex_);
    speed_ = speed;
}

ControlSpeed CLuminanceCtrl::controlSpeed() const {
    const std::lock_guard lock(controlMutex_);
    return speed_;
}

Status CLuminanceCtrl::setBrightnessTarget(const BrightnessTarget& target) {
    const std::lock_guard lock(controlMutex_);
    return SetTargetBrightness(target);
}

BrightnessTarget CLuminanceCtrl::brightnessTarget() const {
    const std::lock_guard lock(controlMutex_);
    return target_;
}

void CLuminanceCtrl::setWeights(const Weights& weights) {
    const std::lock_guard lock(controlMutex_);
    weights_ = weights;
}

CLuminanceCtrl::Weights CLuminanceCtrl::weights() const {
    const std::lock_guard lock(controlMutex_);
    return weights_;
}

// Gain.

Status CLuminanceCtrl::GetGain(std::uint16_t& gain) {
    gain = gain_;
    return Status();
}

Status CLuminanceCtrl::SetGainControlRange(const GainRange& range) {
    gainRange_ = range;
    return Status();
}

Status CLuminanceCtrl::setGain(std::uint16_t gain) {
    const std::lock_guard lock(controlMutex_);
    if (gain > maxGain_) return Status(error::kInvalidArgument);
    gain_ = gain;
    return WriteShutterAndGain();
}

Status CLuminanceCtrl::gain(std::uint16_t& gain) {
    const std::lock_guard lock(controlMutex_);
    return GetGain(gain);
}

std::uint16_t CLuminanceCtrl::maxGain() const {
    const std::lock_guard lock(controlMutex_);
    return maxGain_;
}

Status CLuminanceCtrl::setGainRange(const GainRange& range) {
    const std::lock_guard lock(controlMutex_);
    if (range.max > maxGain_) return Status(error::kInvalidArgument);
    return SetGainControlRange(range);
}

GainRange CLuminanceCtrl::gainRange() const {
    const std::lock_guard lock(controlMutex_);
    return gainRange_;
}

float CLuminanceCtrl::gainDecibels(std::uint16_t gain) const {
    const std::lock_guard lock(controlMutex_);
    return GetGainDBFromSettingValue(gain);
}

Status CLuminanceCtrl::setDigitalGain(std::uint16_t gain) {
    const std::lock_guard lock(controlMutex_);
    digitalGain_ = gain;
    return traits_.digitalGain ? WriteDigitalGain() : Status();
}

std::uint16_t CLuminanceCtrl::digitalGain() const {
    const std::lock_guard lock(controlMutex_);
    return digitalGain_;
}

// Shutter.

Status CLuminanceCtrl::GetShutter(Shutter& shutter) {
    shutter = shutter_;
    return Status();
}

Status CLuminanceCtrl::SetShutterControlRange(const ShutterRange& range) {
    shutterRange_ = range;
    return Status();
}

Status CLuminanceCtrl::changeShutter(const Shutter& shutter, const ShutterScale& limits) {
    // By design: the lines alone are held against the longest exposure.
    if (shutter.line > limits.maxLong.line || shutter.clock > limits.maxClock) {
        return Status(error::kInvalidArgument);
    }
    shutter_ = shutter;
    return WriteShutterAndGain();
}

Status CLuminanceCtrl::shutter(Shutter& shutter) {
    const std::lock_guard lock(controlMutex_);
    return GetShutter(shutter);
}

Status CLuminanceCtrl::limitedShutter(Shutter& shutter) {
    const std::lock_guard lock(controlMutex_);
    TAVRA_RETURN_IF_ERROR(GetShutter(shutter));
    shutter = scale().limited(shutter);
    return Status();
}

Status CLuminanceCtrl::exposureClocks(std::uint32_t& clocks) {
    const std::lock_guard lock(controlMutex_);
    Shutter shutter;
    TAVRA_RETURN_IF_ERROR(GetShutter(shutter));
    const ShutterScale limits = scale();
    clocks = limits.clocks(limits.limited(shutter));
    return Status();
}

Status CLuminanceCtrl::setShutterRange(const ShutterRange& range) {
    const std::lock_guard lock(controlMutex_);
    TAVRA_RETURN_IF_ERROR(checkShutterRange(range, scale()));
    return SetShutterControlRange(range);
}

ShutterRange CLuminanceCtrl::shutterRange() const {
    const std::lock_guard lock(controlMutex_);
    return shutterRange_;
}

Status CLuminanceCtrl::setShutterRangeTop(std::uint32_t clocks) {
    const std::lock_guard lock(controlMutex_);
    ShutterRange range = shutterRange_;
    TAVRA_RETURN_IF_ERROR(moveRangeTop(range, clocks, scale()));
    return SetShutterControlRange(range);
}

Status CLuminanceCtrl::setShutterRangeBottom(std::uint32_t clocks) {
    const std::lock_guard lock(controlMutex_);
    ShutterRange range = shutterRange_;
    TAVRA_RETURN_IF_ERROR(moveRangeBottom(range, clocks, scale()));
    return SetShutterControlRange(range);
}

std::uint32_t CLuminanceCtrl::shutterRangeTop() const {
    const std::lock_guard lock(controlMutex_);
    return scale().clocks(shutterRange_.max);
}

std::uint32_t CLuminanceCtrl::shutterRangeBottom() const {
    const std::lock_guard lock(controlMutex_);
    return scale().clocks(shutterRange_.min);
}

}  // namespace tavra
