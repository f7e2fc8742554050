#include "control/exposure_timing.h"

#include <algorithm>
#include <cmath>

#include "camera/camera_info.h"

namespace tavra {
namespace {

constexpr double kLineDelay = 1.373e-5;
constexpr double kShortestMicroseconds = 2.2e-5;
constexpr double kShortestBase = 1e-6;
constexpr double kShortestSlowBase = 1.5e-6;
constexpr double kMicrosecondsPerSecond = 1000000;

// Clocks ahead of a line's pixels, by vertical and by horizontal binning.
constexpr unsigned kMostTabledBinning = 2;
constexpr double kLineOverhead[kMostTabledBinning + 1][kMostTabledBinning + 1] = {
    {450, 430, 420}, {796, 776, 766}, {1488, 1468, 1458}};

// Clocks from time t: (F t + offset) / length.
struct SensorTick {
    double length;
    double offset;
};

SensorTick sensorTick(const ExposureTiming& camera) {
    const unsigned h = std::min(camera.horizontalBinning, kMostTabledBinning);
    const unsigned v = std::min(camera.verticalBinning, kMostTabledBinning);
    const double q = v < 2 ? v : 3;
    const double line = kLineOverhead[v][h] + camera.imageWidth / 2;
    return {2 * std::max(line, 346 * q + 486), 416 * q + 426};
}

double shortestOf(const ExposureTiming& camera) {
    return camera.timing == TimingClass::Base ? kShortestBase : kShortestSlowBase;
}

double baseClocks(const ExposureTiming& camera, double seconds) {
    const double t = std::max(seconds, shortestOf(camera));
    const double longestInBase = camera.minimumClocks / camera.baseHz;
    if (t <= longestInBase) return t * camera.baseHz + 0.5;
    const double line = camera.clocksPerLine / camera.clockHz;
    const double lines = std::trunc((t - longestInBase) / line + 0.5);
    if (lines == 0) return camera.minimumClocks;
    return lines * line * camera.baseHz + camera.minimumClocks;
}

double baseSeconds(const ExposureTiming& camera, double clocks) {
    if (clocks <= camera.minimumClocks) return std::max(shortestOf(camera), clocks / camera.baseHz);
    const double line = camera.clocksPerLine / camera.clockHz;
    const double lines = std::ceil((clocks - camera.minimumClocks) / camera.baseHz / line);
    return lines * line + camera.minimumClocks / camera.baseHz;
}

// Not yet truncated, which the limits below do to all of them.
double untruncatedClocks(const ExposureTiming& camera, double t) {
    switch (camera.timing) {
        case TimingClass::SensorTicks: {
            const SensorTick tick = sensorTick(camera);
            return (camera.clockHz * t + tick.offset) / tick.length;
        }
        case TimingClass::Lines: return camera.clockHz * t / camera.clocksPerLine;
        case TimingClass::DelayedLines:
            return t > kLineDelay ? (t - kLineDelay) * camera.clockHz / camera.clocksPerLine : 1;
        case TimingClass::SlowBase:
        case TimingClass::Base: return baseClocks(camera, t);
        case TimingClass::Microseconds: return t * kMicrosecondsPerSecond + 0.5;
        case TimingClass::Clocks: break;
    }
    return camera.clockHz * t;
}

double secondsOf(const ExposureTiming& camera, double n) {
    switch (camera.timing) {
        case TimingClass::SensorTicks: {
            const SensorTick tick = sensorTick(camera);
            return (tick.length * n - tick.offset) / camera.clockHz;
        }
        case TimingClass::Lines: return camera.clocksPerLine * n / camera.clockHz;
        case TimingClass::DelayedLines: return camera.clocksPerLine * n / camera.clockHz + kLineDelay;
        case TimingClass::SlowBase:
        case TimingClass::Base: return baseSeconds(camera, n);
        case TimingClass::Microseconds: return std::max(kShortestMicroseconds, n / kMicrosecondsPerSecond);
        case TimingClass::Clocks: break;
    }
    return n / camera.clockHz;
}

}  // namespace

TimingClass timingClass(std::uint16_t productType, std::uint16_t samePid) {
    if (isWideGainFamily(productType)) return TimingClass::Lines;
    switch (productType) {
        case 273:
        case 529: return TimingClass::SensorTicks;
        case 274:
        case 276:
        case 277:
        case 530:
        case 533:
        case 2069: return TimingClass::Lines;
        case 1811:
        case 2067:
        case 4374:
        case 4630:
        case 4886:
        case 5142:
        case 9494:
        case 9750:
        case 10006:
        case 10262: return TimingClass::DelayedLines;
        case 278:
        case 534:
        case 790:
        case 1046: return TimingClass::SlowBase;
        case 1302:
        case 1558:
        case 1814:
        case 2070:
        case 5398:
        case 5654:
        case 5910:
        case 6166:
        case 6422:
        case 8214:
        case 8470:
        case 8726:
        case 8982:
        case 9238: return TimingClass::Base;
        case 275:
        case 531:
        case 787:
        case 1043:
        case 1299:
        case 1555: return TimingClass::Microseconds;
        case 789:
        case 1045:
        case 1301:
        case 1557:
            return samePid == 4 || samePid == 5 || samePid == 128 ? TimingClass::Base
                                                                  : TimingClass::DelayedLines;
        default: return TimingClass::Clocks;
    }
}

std::uint32_t ExposureTiming::clocks(float seconds, std::uint32_t longest) const {
    const double limited = std::min<double>(untruncatedClocks(*this, seconds), longest);
    return limited >= 2 ? static_cast<std::uint32_t>(limited) : 1;
}

float ExposureTiming::seconds(std::uint32_t clocks) const {
    return static_cast<float>(secondsOf(*this, clocks));
}

}  // namespace tavra
