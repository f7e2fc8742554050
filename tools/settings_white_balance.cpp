// Settings of white balance.
#include <array>
#include <cmath>

#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

constexpr double kUnity = 128;  // a gain of 1.0

constexpr NamedCode kModes[] = {{TAVRA_WHITE_BALANCE_OFF, "off"},
                                {TAVRA_WHITE_BALANCE_MANUAL, "manual"},
                                {TAVRA_WHITE_BALANCE_CONTINUOUS, "auto"},
                                {TAVRA_WHITE_BALANCE_ONE_PUSH, "once"}};

void requireWhiteBalance(const Camera& camera) {
    requireColor(camera, "white balance");
}

// The settings of the library's loop mean nothing where the camera balances its frames itself.
void requireLoopOfLibrary(const Camera& camera, const string& name) {
    requireWhiteBalance(camera);
    if (!hasFunction(camera, kFunctionCameraWhiteBalance)) return;
    throw Failure("this camera (" + camera.name() + ") does its white balance itself and has no " + name);
}

string getMode(const Camera& camera) {
    requireWhiteBalance(camera);
    std::uint8_t mode = 0;
    camera.check(Tavra_GetWhiteBalanceMode(camera.handle(), &mode), "cannot read the white balance");
    return nameOf(kModes, mode);
}

void setMode(const Camera& camera, const string& value) {
    requireWhiteBalance(camera);
    const std::uint32_t mode = onlyNamed(kModes, value, "wb");
    std::uint32_t mask = 0;
    camera.check(Tavra_GetEnableWhiteBalanceMode(camera.handle(), &mask), "cannot read the white balance");
    if ((mask >> mode & 1) == 0) {
        string names;
        for (const NamedCode& known : kModes) {
            if ((mask >> known.code & 1) != 0) names += (names.empty() ? "" : ", ") + string(known.name);
        }
        throw Failure("wb cannot be " + value + ": this camera has " + (names.empty() ? "none" : names));
    }
    camera.check(Tavra_SetWhiteBalanceMode(camera.handle(), static_cast<std::uint8_t>(mode)),
                 "cannot set the white balance to " + value);
}

using Gains = std::array<std::uint16_t, 4>;  // R, Gr, Gb, B

string getGains(const Camera& camera) {
    requireWhiteBalance(camera);
    Gains gains{};
    camera.check(Tavra_GetWhiteBalanceGain(camera.handle(), &gains[0], &gains[1], &gains[2], &gains[3]),
                 "cannot read the white balance gains");
    string text;
    for (const std::uint16_t gain : gains) text += (text.empty() ? "" : ",") + realText(gain / kUnity, 3);
    return text;
}

// "R,GR,GB,B", or "R,B" with the green gains at 1.
void setGains(const Camera& camera, const string& value) {
    requireWhiteBalance(camera);
    Gains highest{};
    camera.check(
        Tavra_GetWhiteBalanceMaxGain(camera.handle(), &highest[0], &highest[1], &highest[2], &highest[3]),
        "cannot read the highest white balance gains");
    auto parts = splitText(value, ',');
    if (parts.size() == 2) parts = {parts[0], "1", "1", parts[1]};
    if (parts.size() != 4) {
        throw Failure("wb.gains cannot be '" + value + "': R,GR,GB,B or R,B as factors, such as 1.5,1.2",
                      ExitCode::Usage);
    }
    Gains gains{};
    for (std::size_t i = 0; i < gains.size(); ++i) {
        const double factor = parseReal(parts[i], "wb.gains", {0, highest[i] / kUnity});
        gains[i] = static_cast<std::uint16_t>(std::lround(factor * kUnity));
    }
    camera.check(Tavra_SetWhiteBalanceGain(camera.handle(), gains[0], gains[1], gains[2], gains[3]),
                 "cannot set the white balance gains to " + value);
}

string getTarget(const Camera& camera) {
    requireWhiteBalance(camera);
    std::uint16_t r = 0, b = 0;
    camera.check(Tavra_GetWhiteBalanceTarget(camera.handle(), &r, &b), "cannot read wb.target");
    return std::to_string(r) + "," + std::to_string(b);
}

void setTarget(const Camera& camera, const string& value) {
    requireLoopOfLibrary(camera, "target");
    const auto parts = splitText(value, ',');
    if (parts.size() != 2) {
        throw Failure("wb.target cannot be '" + value + "': R,B in percent of green, such as 100,100",
                      ExitCode::Usage);
    }
    const auto r = static_cast<std::uint16_t>(parseWhole(parts[0], "wb.target", {0, 65535}));
    const auto b = static_cast<std::uint16_t>(parseWhole(parts[1], "wb.target", {0, 65535}));
    camera.check(Tavra_SetWhiteBalanceTarget(camera.handle(), r, b), "cannot set wb.target to " + value);
}

struct Limit {
    std::uint16_t tolerance = 0, threshold = 0;
};

Limit readLimit(const Camera& camera) {
    requireWhiteBalance(camera);
    Limit limit;
    camera.check(Tavra_GetWhiteBalanceToleranceThreshold(camera.handle(), &limit.tolerance, &limit.threshold),
                 "cannot read wb.threshold");
    return limit;
}

string getThreshold(const Camera& camera) {
    return realText(readLimit(camera).threshold / 10.0, 1);
}

void setThreshold(const Camera& camera, const string& value) {
    requireLoopOfLibrary(camera, "threshold");
    const double levels = parseReal(value, "wb.threshold", {0, 6553.5});
    camera.check(
        Tavra_SetWhiteBalanceToleranceThreshold(camera.handle(), readLimit(camera).tolerance,
                                                static_cast<std::uint16_t>(std::lround(levels * 10))),
        "cannot set wb.threshold to " + value);
}

string getWeights(const Camera& camera) {
    requireWhiteBalance(camera);
    Weights weights{};
    camera.check(Tavra_GetAWBWeight(camera.handle(), weights.data()), "cannot read wb.weights");
    return weightsText(weights);
}

void setWeights(const Camera& camera, const string& value) {
    requireLoopOfLibrary(camera, "weights");
    const Weights weights = parseWeights(value, "wb.weights");
    camera.check(Tavra_SetAWBWeight(camera.handle(), weights.data()), "cannot set wb.weights");
}

constexpr Setting kSettings[] = {
    {"wb", "white balance: off, manual (the gains as set), auto or once", getMode, setMode, KeptBy::Library},
    {"wb.gains", "its gains as factors: R,GR,GB,B or R,B", getGains, setGains, KeptBy::Library},
    {"wb.target", "what R and B are to be in percent of G: 100,100", getTarget, setTarget, KeptBy::Library},
    {"wb.threshold", "distance in levels below which it rests; it starts again at twice that", getThreshold,
     setThreshold, KeptBy::Library},
    {"wb.weights", "16 weights of the grid's cells, row after row, or one for all", getWeights, setWeights,
     KeptBy::Library},
};

}  // namespace

std::span<const Setting> whiteBalanceSettings() {
    return kSettings;
}

}  // namespace tavra::tool
