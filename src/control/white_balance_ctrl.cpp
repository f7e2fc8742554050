#include "control/white_balance_ctrl.h"

#include <algorithm>
#include <cmath>

#include "base/color_array.h"
#include "tavra/tavra_types.h"

namespace tavra {
namespace {

constexpr std::uint32_t kAverageFrameCount = 10;  // frames measured for a decision
constexpr std::uint8_t kSkipFrameCount = 10;      // frames left out after it
constexpr std::uint32_t kHighestGain = 1023;
// A decision needs a mean of green strictly between: nothing can be told of a black or of a white frame.
constexpr std::uint32_t kGreenLowerLimit = 10;
constexpr std::uint32_t kGreenUpperLimit = 245;

enum Color : std::size_t { kR, kGr, kGb, kB };

// Which colour stands at each pattern position.
// By design: quad mosaics too are taken in pairs of pixels, and so is whatever else is no mosaic of 3 to 5.
constexpr std::array<Color, 4> colorsByPosition(std::uint16_t colorArray) {
    switch (colorArray) {
        case 3: return {kGr, kR, kB, kGb};
        case 4: return {kGb, kB, kR, kGr};
        case 5: return {kB, kGb, kGr, kR};
        default: return {kR, kGr, kGb, kB};
    }
}

constexpr bool isPairMosaic(std::uint16_t colorArray) {
    return colorArray >= 2 && colorArray <= 5;
}

// The gain that makes the wanted mean of the measured one.
std::uint32_t adjustedGain(std::uint32_t gain, std::uint32_t want, std::uint32_t mean,
                           std::uint32_t greenSum) {
    if (mean != 0) return std::min(gain * want / mean, kHighestGain);
    if (greenSum < 2) return 0;
    return gain == 0 ? 1 : std::min(2 * gain, kHighestGain);
}

std::uint32_t difference(std::uint32_t a, std::uint32_t b) {
    return a > b ? a - b : b - a;
}

}  // namespace

CWhiteBalanceCtrl::CWhiteBalanceCtrl(const WhiteBalanceGains& resetGain, std::uint16_t colorArray,
                                     bool hardwareWhiteBalance)
    : hardwareWhiteBalance_(hardwareWhiteBalance), colorArray_(colorArray), resetGain_(resetGain) {
    resetLocked();
}

CWhiteBalanceCtrl::~CWhiteBalanceCtrl() = default;

bool CWhiteBalanceCtrl::isMosaic() const {
    return !isMonoLike(colorArray_);
}

std::uint8_t CWhiteBalanceCtrl::defaultMode() const {
    return isMosaic() && !hardwareWhiteBalance_ ? TAVRA_WHITE_BALANCE_CONTINUOUS : TAVRA_WHITE_BALANCE_OFF;
}

void CWhiteBalanceCtrl::Reset() {
    const std::lock_guard lock(whiteBalanceMutex_);
    resetLocked();
}

void CWhiteBalanceCtrl::resetLocked() {
    whiteBalanceMode_ = defaultMode();
    band_ = WhiteBalanceBand();
    target_ = WhiteBalanceTarget();
    lastAdjusted_ = false;
    skipCounter_ = 0;
    averageCount_ = 0;
    awbWeight_.fill(1);
    for (std::size_t color = 0; color < resetGain_.size(); ++color) storeGain(color, resetGain_[color]);
}

void CWhiteBalanceCtrl::storeGain(std::size_t color, std::uint32_t gain) {
    gainCurves_[color] = GainCurve(static_cast<std::uint16_t>(gain));
}

Status CWhiteBalanceCtrl::setMode(std::uint8_t mode) {
    if (hardwareWhiteBalance_) return WriteMode(mode);
    const std::lock_guard lock(whiteBalanceMutex_);
    whiteBalanceMode_ = mode;
    return Status();
}

Status CWhiteBalanceCtrl::getMode(std::uint8_t& mode) {
    if (hardwareWhiteBalance_) return ReadMode(mode);
    const std::lock_guard lock(whiteBalanceMutex_);
    mode = whiteBalanceMode_;
    return Status();
}

Status CWhiteBalanceCtrl::setGains(const WhiteBalanceGains& gains) {
    if (hardwareWhiteBalance_) return WriteGain(gains);
    const std::lock_guard lock(whiteBalanceMutex_);
    for (std::size_t color = 0; color < gains.size(); ++color) storeGain(color, gains[color]);
    return Status();
}

Status CWhiteBalanceCtrl::getGains(WhiteBalanceGains& gains) {
    if (hardwareWhiteBalance_) return ReadGain(gains);
    const std::lock_guard lock(whiteBalanceMutex_);
    for (std::size_t color = 0; color < gains.size(); ++color) gains[color] = gainCurves_[color].gain();
    return Status();
}

Status CWhiteBalanceCtrl::setTarget(const WhiteBalanceTarget& target) {
    if (hardwareWhiteBalance_) {
        return target.r == 100 && target.b == 100 ? Status() : Status(error::kInvalidArgument);
    }
    const std::lock_guard lock(whiteBalanceMutex_);
    target_ = target;
    return Status();
}

WhiteBalanceTarget CWhiteBalanceCtrl::target() const {
    const std::lock_guard lock(whiteBalanceMutex_);
    return target_;
}

Status CWhiteBalanceCtrl::setBand(const WhiteBalanceBand& band) {
    if (hardwareWhiteBalance_) return Status(error::kInvalidArgument);
    const std::lock_guard lock(whiteBalanceMutex_);
    band_ = band;
    return Status();
}

WhiteBalanceBand CWhiteBalanceCtrl::band() const {
    if (hardwareWhiteBalance_) return {0, 0};
    const std::lock_guard lock(whiteBalanceMutex_);
    return band_;
}

Status CWhiteBalanceCtrl::setWeights(const CAveragePixelValue::Weights& weights) {
    if (hardwareWhiteBalance_) return Status(error::kInvalidArgument);
    const std::lock_guard lock(whiteBalanceMutex_);
    awbWeight_ = weights;
    return Status();
}

CAveragePixelValue::Weights CWhiteBalanceCtrl::weights() const {
    const std::lock_guard lock(whiteBalanceMutex_);
    return awbWeight_;
}

bool CWhiteBalanceCtrl::frameIsDue() {
    const std::lock_guard lock(whiteBalanceMutex_);
    const bool automatic = whiteBalanceMode_ >= TAVRA_WHITE_BALANCE_CONTINUOUS;
    if (skipCounter_ == 0) return automatic && isMosaic() && !hardwareWhiteBalance_;
    --skipCounter_;
    return false;
}

Status CWhiteBalanceCtrl::ApplyGain(std::uint32_t width, std::uint32_t height, std::uint16_t frameColorArray,
                                    std::uint8_t* image) {
    if (hardwareWhiteBalance_) return Status(error::kInvalidArgument);
    const std::lock_guard lock(whiteBalanceMutex_);
    // By design: one test asks for the frame's colour array, the other for the camera's.
    const bool isPattern = isMonoLike(colorArray_) && colorArray_ != TAVRA_COLOR_ARRAY_MONO;
    if (whiteBalanceMode_ == TAVRA_WHITE_BALANCE_OFF || frameColorArray == TAVRA_COLOR_ARRAY_MONO ||
        isPattern) {
        return Status();
    }
    // By design: with both greens at unity, frames that are no mosaic of 2 to 5 pass unchanged.
    const bool greenAtUnity =
        gainCurves_[kGr].gain() == GainCurve::kUnity && gainCurves_[kGb].gain() == GainCurve::kUnity;
    if (greenAtUnity && !isPairMosaic(frameColorArray)) return Status();
    std::array<GainCurve, 4> byPosition;
    const std::array<Color, 4> colors = colorsByPosition(frameColorArray);
    for (std::size_t p = 0; p < byPosition.size(); ++p) byPosition[p] = gainCurves_[colors[p]];
    applyGains(width, height, byPosition, image);
    return Status();
}

bool CWhiteBalanceCtrl::controlStep(const CAveragePixelValue& statistics) {
    if (hardwareWhiteBalance_) return false;
    const std::lock_guard lock(whiteBalanceMutex_);
    if (whiteBalanceMode_ < TAVRA_WHITE_BALANCE_CONTINUOUS) return true;
    if (skipCounter_ != 0) {
        --skipCounter_;
        return true;
    }
    CAveragePixelValue::Means means{};
    if (statistics.GetWeightedAverage(awbWeight_, means) == 0) return false;
    if (averageCount_ == 0) averageSum_.fill(0);
    for (std::size_t color = 0; color < means.size(); ++color) averageSum_[color] += means[color];
    ++averageCount_;
    if (averageCount_ < kAverageFrameCount) return true;
    for (std::uint32_t& sum : averageSum_) sum /= averageCount_;
    averageCount_ = 0;
    decide({averageSum_[kR], averageSum_[kGr], averageSum_[kGb], averageSum_[kB]});
    skipCounter_ = kSkipFrameCount;
    return true;
}

// Numbers wrap in 32 bits where targets are far out of range.
void CWhiteBalanceCtrl::decide(const FrameMeans& means) {
    const std::uint32_t green = (means.gr + means.gb) >> 1;
    if (green >= kGreenUpperLimit || green <= kGreenLowerLimit) return;
    const std::uint32_t wantR = target_.r * green / 100;
    const std::uint32_t wantB = target_.b * green / 100;
    const std::uint32_t dR = difference(wantR, means.r);
    const std::uint32_t dB = difference(wantB, means.b);
    const double distance = std::sqrt(static_cast<double>(dR * dR + dB * dB));
    // An adjustment starts at twice the distance at which one that runs ends, or it would never rest.
    const std::uint32_t limit = (lastAdjusted_ ? 1u : 2u) * band_.threshold;
    const bool isClose = static_cast<std::uint32_t>(distance * 10) < limit;
    lastAdjusted_ = !isClose && adjustGains(means, wantR, wantB);
    const bool isOnePush = whiteBalanceMode_ == TAVRA_WHITE_BALANCE_ONE_PUSH;
    if (isOnePush && !lastAdjusted_) whiteBalanceMode_ = TAVRA_WHITE_BALANCE_MANUAL;
}

// Whether a gain changed. Green never does: it is what the others are measured against.
bool CWhiteBalanceCtrl::adjustGains(const FrameMeans& means, std::uint32_t wantR, std::uint32_t wantB) {
    const std::uint32_t greenSum = means.gr + means.gb;
    const auto adjust = [&](Color color, std::uint32_t want, std::uint32_t mean) {
        const std::uint32_t gain = gainCurves_[color].gain();
        const std::uint32_t adjusted = adjustedGain(gain, want, mean, greenSum);
        if (adjusted == gain) return false;
        storeGain(color, adjusted);
        return true;
    };
    const bool red = adjust(kR, wantR, means.r);
    const bool blue = adjust(kB, wantB, means.b);
    return red || blue;
}

}  // namespace tavra
