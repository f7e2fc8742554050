// CameraState: the exposure control and the white balance of the camera itself.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "camera_state.h"

namespace tavra::usbd {
namespace {

constexpr std::size_t kCameraWord = 1;
constexpr int kGainControl = 9, kShutterControl = 10;

// Modes of the white balance that find the gains.
constexpr std::uint16_t kContinuous = 2, kOnce = 3;
constexpr std::uint16_t kUnityGain = 128;

}  // namespace

bool CameraState::control(double brightness) {
    const AutoExposure exposure = autoExposure();
    const bool exposed =
        exposure.isOn() && adjustExposure(model_, exposure, timing().scan(), brightness, exposure_);
    return followWhiteBalance() || exposed;
}

AutoExposure CameraState::autoExposure() const {
    const std::uint16_t mode = status_.word(status::kAutoExposure);
    AutoExposure control;
    control.shutter = (mode & 1) != 0 && model_.has(kCameraWord, kShutterControl);
    control.gain = (mode & 2) != 0 && model_.has(kCameraWord, kGainControl);
    control.target = static_cast<std::uint8_t>(status_.word(status::kTargetBrightness));
    control.shortestLines = status_.pair(status::kShortestLines);
    control.longestLines = status_.pair(status::kLongestLines);
    control.lowestGain = status_.word(status::kLowestGain);
    control.highestGain = status_.word(status::kHighestGain);
    return control;
}

// Gains that make grey grey in the light there is.
std::array<std::uint16_t, 4> CameraState::balancedGains() const {
    constexpr double kMaximumGain = 511;
    constexpr std::size_t kPageWord = 18;
    constexpr int kMaximumTold = 10;
    const auto& response = model_.sensor.response;
    std::array<std::uint16_t, 4> gains{};
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t c = i == 0 ? 0 : i == 3 ? 2 : 1;
        const double gain = kUnityGain * response[1] * light_.color[1] / (response[c] * light_.color[c]);
        const bool told = hasPages() && model_.has(kPageWord, kMaximumTold);
        const double most = told ? pages_.value(page::kSensor, page::kMaximumColorGains[i]) : kMaximumGain;
        gains[i] = static_cast<std::uint16_t>(std::lround(std::min({gain, most, 65535.0})));
    }
    return gains;
}

// A mode that finds the gains has been written.
void CameraState::updateWhiteBalance() {
    constexpr std::uint16_t kManual = 1;
    const std::uint16_t mode = status_.word(status::kWhiteBalanceMode);
    if (!balances() || (mode != kContinuous && mode != kOnce)) return;
    const std::array<std::uint16_t, 4> gains = balancedGains();
    for (std::uint16_t i = 0; i < 4; ++i)
        status_.setWord(static_cast<std::uint16_t>(status::kWhiteBalanceGains + i), gains[i]);
    if (mode == kOnce) status_.setWord(status::kWhiteBalanceMode, kManual);
}

// In the continuous mode the gains go after the light, a quarter of the way with each frame.
bool CameraState::followWhiteBalance() {
    if (!balances() || status_.word(status::kWhiteBalanceMode) != kContinuous) return false;
    const std::array<std::uint16_t, 4> wanted = balancedGains();
    bool moved = false;
    for (std::uint16_t i = 0; i < 4; ++i) {
        const auto address = static_cast<std::uint16_t>(status::kWhiteBalanceGains + i);
        const int now = status_.word(address), way = wanted[i] - now;
        if (way == 0) continue;
        const int step = std::abs(way) < 4 ? way : way / 4;
        status_.setWord(address, static_cast<std::uint16_t>(now + step));
        moved = true;
    }
    return moved;
}

}  // namespace tavra::usbd
