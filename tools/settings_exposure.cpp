// Settings of exposure, gain and the control loop that moves them.
#include <array>
#include <cmath>
#include <cstdio>

#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

constexpr std::uint32_t kFunctionCameraGain = 25;     // capability word 1 bit 9
constexpr std::uint32_t kFunctionCameraShutter = 26;  // and bit 10
constexpr Limits kByte{0, 255};

constexpr NamedCode kAlcModes[] = {{TAVRA_ALC_OFF, "off"},
                                   {TAVRA_ALC_SHUTTER_AND_GAIN, "on"},
                                   {TAVRA_ALC_SHUTTER, "shutter"},
                                   {TAVRA_ALC_GAIN, "gain"},
                                   {TAVRA_ALC_SHUTTER_AND_GAIN_ONCE, "once"},
                                   {TAVRA_ALC_SHUTTER_ONCE, "shutter-once"},
                                   {TAVRA_ALC_GAIN_ONCE, "gain-once"},
                                   {TAVRA_ALC_CAMERA_SHUTTER, "camera-shutter"},
                                   {TAVRA_ALC_CAMERA_GAIN, "camera-gain"},
                                   {TAVRA_ALC_CAMERA_SHUTTER_AND_GAIN, "camera"}};

// --- exposure ---

constexpr const char* kLongestInFrame = "frame";  // in place of a time: the longest that fits a frame

string exposureText(const Camera& camera, std::uint32_t clock) {
    float seconds = 0;
    camera.check(Tavra_GetExposureTimeFromClock(camera.handle(), clock, &seconds),
                 "cannot read the exposure time");
    return timeText(static_cast<double>(seconds));
}

// A time, or "frame". One beyond the camera's longest is refused, not shortened.
std::uint32_t exposureClock(const Camera& camera, const string& value, const string& what) {
    if (value == kLongestInFrame) return 0;
    const double seconds = parseTime(value, what);
    std::uint32_t longest = 0, clock = 0;
    float longestSeconds = 0;
    camera.check(Tavra_GetMaxLongExposureClock(camera.handle(), &longest),
                 "cannot read the longest exposure");
    camera.check(Tavra_GetExposureTimeFromClock(camera.handle(), longest, &longestSeconds),
                 "cannot read the longest exposure");
    if (seconds > static_cast<double>(longestSeconds) * 1.0001) {  // what `get` prints is rounded
        throw Failure(what + " cannot be " + value + ": this camera exposes for " +
                      timeText(static_cast<double>(longestSeconds)) + " at most");
    }
    camera.check(Tavra_GetExposureClockFromTime(camera.handle(), static_cast<float>(seconds), &clock),
                 "cannot convert the exposure time");
    return clock;
}

string getExposure(const Camera& camera) {
    std::uint32_t clock = 0;
    camera.check(Tavra_GetExposureClock(camera.handle(), &clock), "cannot read the exposure");
    return exposureText(camera, clock);
}

void setExposure(const Camera& camera, const string& value) {
    camera.check(Tavra_SetExposureClock(camera.handle(), exposureClock(camera, value, "exposure")),
                 "cannot set the exposure to " + value);
}

string getExposureClocks(const Camera& camera) {
    std::uint32_t clock = 0;
    camera.check(Tavra_GetExposureClock(camera.handle(), &clock), "cannot read the exposure");
    return std::to_string(clock);
}

void setExposureClocks(const Camera& camera, const string& value) {
    std::uint32_t longest = 0;
    camera.check(Tavra_GetMaxLongExposureClock(camera.handle(), &longest),
                 "cannot read the longest exposure");
    const auto clock = parseWhole(value, "exposure.clocks", {0, static_cast<double>(longest)});
    camera.check(Tavra_SetExposureClock(camera.handle(), clock), "cannot set the exposure to " + value);
}

string getLongestExposure(const Camera& camera) {
    std::uint32_t clock = 0;
    camera.check(Tavra_GetMaxLongExposureClock(camera.handle(), &clock), "cannot read the longest exposure");
    return exposureText(camera, clock);
}

string getFrameExposure(const Camera& camera) {
    return exposureText(camera, 0);
}

// --- gain ---

double decibels(const Camera& camera, std::uint16_t value) {
    float result = 0;
    camera.check(Tavra_GetGainDBFromSettingValue(camera.handle(), value, &result), "cannot convert the gain");
    return static_cast<double>(result);
}

// As `get` prints it, so that what is printed can be set.
double printed(double value, double steps) {
    return std::round(value * steps) / steps;
}

string gainText(const Camera& camera, std::uint16_t value) {
    return realText(decibels(camera, value), 2) + "dB";
}

std::uint16_t maximumGain(const Camera& camera) {
    std::uint16_t maximum = 0;
    camera.check(Tavra_GetMaxGain(camera.handle(), &maximum), "cannot read the highest gain");
    return maximum;
}

// The setting value nearest to so many decibels. The scale is the camera's own, so all values are tried.
std::uint16_t gainValue(const Camera& camera, const string& value, const string& what) {
    const std::uint32_t maximum = maximumGain(camera);
    const double lowest = decibels(camera, 0);
    const double highest = decibels(camera, static_cast<std::uint16_t>(maximum));
    const double wanted = parseReal(value, what, {printed(lowest, 100), printed(highest, 100)}, "dB");
    std::uint16_t best = 0;
    double bestDistance = std::abs(wanted - lowest);
    for (std::uint32_t candidate = 1; candidate <= maximum; ++candidate) {
        const double distance = std::abs(wanted - decibels(camera, static_cast<std::uint16_t>(candidate)));
        if (distance >= bestDistance) continue;
        best = static_cast<std::uint16_t>(candidate);
        bestDistance = distance;
    }
    return best;
}

std::uint16_t gainInForce(const Camera& camera) {
    std::uint16_t value = 0;
    camera.check(Tavra_GetGain(camera.handle(), &value), "cannot read the gain");
    return value;
}

string getGain(const Camera& camera) {
    return gainText(camera, gainInForce(camera));
}

void setGain(const Camera& camera, const string& value) {
    camera.check(Tavra_SetGain(camera.handle(), gainValue(camera, value, "gain")),
                 "cannot set the gain to " + value);
}

string getGainValue(const Camera& camera) {
    return std::to_string(gainInForce(camera));
}

void setGainValue(const Camera& camera, const string& value) {
    const auto gain = parseWhole(value, "gain.value", {0, static_cast<double>(maximumGain(camera))});
    camera.check(Tavra_SetGain(camera.handle(), static_cast<std::uint16_t>(gain)),
                 "cannot set the gain to " + value);
}

void requireDigitalGain(const Camera& camera) {
    if (hasFunction(camera, TAVRA_FUNCTION_DIGITAL_GAIN)) return;
    throw Failure("this camera (" + camera.name() + ") has no digital gain");
}

double digitalFactor(const Camera& camera, std::uint16_t value) {
    float times = 0;
    camera.check(Tavra_GetDigitalGainTimesFromSettingValue(camera.handle(), value, &times),
                 "cannot convert the digital gain");
    return static_cast<double>(times);
}

string getDigitalGain(const Camera& camera) {
    requireDigitalGain(camera);
    std::uint16_t value = 0;
    camera.check(Tavra_GetDigitalGain(camera.handle(), &value), "cannot read the digital gain");
    return realText(digitalFactor(camera, value), 3) + "x";
}

// The nearest of all values: the library's own conversion from a factor is not the inverse on all cameras.
void setDigitalGain(const Camera& camera, const string& value) {
    requireDigitalGain(camera);
    std::uint16_t maximum = 0;
    camera.check(Tavra_GetMaxDigitalGain(camera.handle(), &maximum), "cannot read the highest digital gain");
    const double lowest = digitalFactor(camera, 0), highest = digitalFactor(camera, maximum);
    const double wanted =
        parseReal(value, "digital-gain", {printed(lowest, 1000), printed(highest, 1000)}, "x");
    std::uint16_t best = 0;
    for (std::uint32_t candidate = 1; candidate <= maximum; ++candidate) {
        const auto next = static_cast<std::uint16_t>(candidate);
        if (std::abs(wanted - digitalFactor(camera, next)) < std::abs(wanted - digitalFactor(camera, best))) {
            best = next;
        }
    }
    camera.check(Tavra_SetDigitalGain(camera.handle(), best), "cannot set the digital gain to " + value);
}

// --- automatic control ---

string getAlc(const Camera& camera) {
    std::uint8_t mode = 0;
    camera.check(Tavra_GetALCMode(camera.handle(), &mode), "cannot read the exposure control");
    return nameOf(kAlcModes, mode);
}

void setAlc(const Camera& camera, const string& value) {
    const std::uint32_t mode = onlyNamed(kAlcModes, value, "alc");
    if (((mode & TAVRA_ALC_CAMERA_SHUTTER) != 0 && !hasFunction(camera, kFunctionCameraShutter)) ||
        ((mode & TAVRA_ALC_CAMERA_GAIN) != 0 && !hasFunction(camera, kFunctionCameraGain))) {
        throw Failure("alc cannot be " + value + ": this camera (" + camera.name() +
                      ") does not do that itself; the library can: on, shutter, gain");
    }
    camera.check(Tavra_SetALCMode(camera.handle(), static_cast<std::uint8_t>(mode)),
                 "cannot set the exposure control to " + value);
}

// The three numbers of the aim live in one call; a setting changes one of them.
using Aim = std::array<std::uint8_t, 3>;  // target, tolerance, threshold

Aim readAim(const Camera& camera) {
    Aim aim{};
    camera.check(Tavra_GetTargetBrightness(camera.handle(), &aim[0], &aim[1], &aim[2]),
                 "cannot read the aim of the exposure control");
    return aim;
}

constexpr const char* kAimNames[] = {"alc.target", "alc.tolerance", "alc.threshold"};

template <std::size_t kPlace>
string getAim(const Camera& camera) {
    return std::to_string(readAim(camera)[kPlace]);
}

template <std::size_t kPlace>
void setAim(const Camera& camera, const string& value) {
    const auto number = static_cast<std::uint8_t>(parseWhole(value, kAimNames[kPlace], kByte));
    Aim aim = readAim(camera);
    aim[kPlace] = number;
    camera.check(Tavra_SetTargetBrightness(camera.handle(), aim[0], aim[1], aim[2]),
                 string("cannot set ") + kAimNames[kPlace] + " to " + value);
}

using Speed = std::array<std::uint8_t, 4>;  // shutter, gain, frames left out, frames averaged

string getSpeed(const Camera& camera) {
    Speed speed{};
    camera.check(Tavra_GetALCControlSpeed(camera.handle(), &speed[0], &speed[1], &speed[2], &speed[3]),
                 "cannot read the speed of the exposure control");
    string text;
    for (const std::uint8_t number : speed) text += (text.empty() ? "" : ",") + std::to_string(number);
    return text;
}

void setSpeed(const Camera& camera, const string& value) {
    const auto parts = splitText(value, ',');
    if (parts.size() != 4) {
        throw Failure("alc.speed cannot be '" + value +
                          "': SHUTTER,GAIN,LEFT-OUT,AVERAGED, four whole numbers from 0 to 255",
                      ExitCode::Usage);
    }
    Speed speed{};
    for (std::size_t i = 0; i < speed.size(); ++i) {
        speed[i] = static_cast<std::uint8_t>(parseWhole(parts[i], "alc.speed", kByte));
    }
    camera.check(Tavra_SetALCControlSpeed(camera.handle(), speed[0], speed[1], speed[2], speed[3]),
                 "cannot set the speed of the exposure control");
}

string getExposureRange(const Camera& camera) {
    std::uint32_t lowest = 0, highest = 0;
    camera.check(Tavra_GetAEMinExposureClock(camera.handle(), &lowest), "cannot read alc.exposure");
    camera.check(Tavra_GetAEMaxExposureClock(camera.handle(), &highest), "cannot read alc.exposure");
    const auto text = [&](std::uint32_t clock) {
        return clock == 0 ? string(kLongestInFrame) : exposureText(camera, clock);
    };
    return text(lowest) + ".." + text(highest);
}

void setExposureRange(const Camera& camera, const string& value) {
    const TextRange range = parseRange(value, "alc.exposure", "100us..20ms or 100us..frame");
    const std::uint32_t lowest = exposureClock(camera, range.lowest, "alc.exposure");
    const std::uint32_t highest = exposureClock(camera, range.highest, "alc.exposure");
    std::uint32_t inFrame = 0;
    camera.check(Tavra_GetMaxShortExposureClock(camera.handle(), &inFrame),
                 "cannot read the frame's exposure");
    if ((lowest == 0 ? inFrame : lowest) > (highest == 0 ? inFrame : highest)) {
        throw Failure("alc.exposure cannot be " + value + ": the lowest is above the highest",
                      ExitCode::Usage);
    }
    // The end that is set second stands; the first may drag it along.
    camera.check(Tavra_SetAEMinExposureClock(camera.handle(), lowest), "cannot set alc.exposure to " + value);
    camera.check(Tavra_SetAEMaxExposureClock(camera.handle(), highest),
                 "cannot set alc.exposure to " + value);
}

string getGainRange(const Camera& camera) {
    std::uint16_t lowest = 0, highest = 0;
    camera.check(Tavra_GetGainControlRange(camera.handle(), &lowest, &highest), "cannot read alc.gain");
    return gainText(camera, lowest) + ".." + gainText(camera, highest);
}

void setGainRange(const Camera& camera, const string& value) {
    const TextRange range = parseRange(value, "alc.gain", "0dB..12dB");
    const std::uint16_t lowest = gainValue(camera, range.lowest, "alc.gain");
    const std::uint16_t highest = gainValue(camera, range.highest, "alc.gain");
    if (lowest > highest) {
        throw Failure("alc.gain cannot be " + value + ": the lowest is above the highest", ExitCode::Usage);
    }
    camera.check(Tavra_SetGainControlRange(camera.handle(), lowest, highest),
                 "cannot set alc.gain to " + value);
}

string getWeights(const Camera& camera) {
    Weights weights{};
    camera.check(Tavra_GetALCWeight(camera.handle(), weights.data()), "cannot read alc.weights");
    return weightsText(weights);
}

void setWeights(const Camera& camera, const string& value) {
    const Weights weights = parseWeights(value, "alc.weights");
    camera.check(Tavra_SetALCWeight(camera.handle(), weights.data()), "cannot set alc.weights");
}

// --- the grid of both controls ---

constexpr double kHundredths = 100;  // of a percent: ten-thousandths of a side

string getArea(const Camera& camera) {
    std::array<std::uint16_t, 3> x{}, y{};
    camera.check(Tavra_GetControlArea(camera.handle(), x.data(), y.data()), "cannot read the control area");
    string text;
    for (const auto& axis : {x, y}) {
        if (!text.empty()) text += ';';
        for (std::size_t i = 0; i < axis.size(); ++i) {
            text += (i == 0 ? "" : ",") + realText(axis[i] / kHundredths, 2);
        }
    }
    return text;
}

void setArea(const Camera& camera, const string& value) {
    const auto axes = splitText(value, ';');
    if (axes.size() != 2) {
        throw Failure("control-area cannot be '" + value +
                          "': X1,X2,X3;Y1,Y2,Y3, the inner lines of the grid in percent",
                      ExitCode::Usage);
    }
    std::array<std::array<std::uint16_t, 3>, 2> lines{};
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const auto percents = parseReals(axes[axis], 3, "control-area", {0, 100});
        for (std::size_t i = 0; i < 3; ++i) {
            lines[axis][i] = static_cast<std::uint16_t>(std::lround(percents[i] * kHundredths));
            if (i > 0 && percents[i] < percents[i - 1]) {
                throw Failure("control-area cannot be '" + value + "': the lines of an axis ascend",
                              ExitCode::Usage);
            }
        }
    }
    camera.check(Tavra_SetControlArea(camera.handle(), lines[0].data(), lines[1].data()),
                 "cannot set the control area");
}

constexpr Setting kSettings[] = {
    {"exposure", "exposure time: 8ms, 500us, 1/100s; frame: the longest that fits a frame", getExposure,
     setExposure},
    {"exposure.clocks", "the same in the camera's clocks; 0: the longest that fits a frame",
     getExposureClocks, setExposureClocks},
    {"exposure.frame", "longest exposure that fits a frame", getFrameExposure, nullptr},
    {"exposure.longest", "longest exposure of all, at fewer frames a second", getLongestExposure, nullptr},
    {"gain", "analogue gain: 6dB", getGain, setGain},
    {"gain.value", "the same as a setting value of the camera", getGainValue, setGainValue},
    {"digital-gain", "digital gain as a factor: 1.5x", getDigitalGain, setDigitalGain},
    {"alc", "exposure control: off, on, shutter, gain, once, camera, ...", getAlc, setAlc, KeptBy::Library},
    {"alc.target", "mean luminance that it aims at, 0 to 255", getAim<0>, setAim<0>, KeptBy::Library},
    {"alc.tolerance", "difference at which it comes to rest, 0 to 255", getAim<1>, setAim<1>,
     KeptBy::Library},
    {"alc.threshold", "added to the tolerance for it to start again, 0 to 255", getAim<2>, setAim<2>,
     KeptBy::Library},
    {"alc.speed", "SHUTTER,GAIN,LEFT-OUT,AVERAGED: a step is at most 1/(n+1); frames left out and averaged",
     getSpeed, setSpeed, KeptBy::Library},
    {"alc.exposure", "exposures that it may use: 100us..20ms; frame as in exposure", getExposureRange,
     setExposureRange, KeptBy::Library},
    {"alc.gain", "gains that it may use: 0dB..12dB", getGainRange, setGainRange, KeptBy::Library},
    {"alc.weights", "16 weights of the grid's cells, row after row, or one for all: 1,1,1,1,...", getWeights,
     setWeights, KeptBy::Library},
    {"control-area", "inner lines of the 4 x 4 grid of both controls, in percent: 25,50,75;25,50,75", getArea,
     setArea, KeptBy::Library},
};

}  // namespace

std::span<const Setting> exposureSettings() {
    return kSettings;
}

}  // namespace tavra::tool
