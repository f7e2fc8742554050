// Settings of detail: sharpness, noise reduction, chroma suppression, shading, defect pixels.
#include <cmath>

#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
#include "shading_map.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

constexpr double kHundredths = 100;

// --- sharpness ---

struct Sharpness {
    std::uint8_t mode = 0;
    std::uint16_t gain = 0;  // hundredths
    std::uint8_t coring = 0;
};

Sharpness readSharpness(const Camera& camera) {
    Sharpness sharpness;
    camera.check(Tavra_GetSharpnessMode(camera.handle(), &sharpness.mode, &sharpness.gain, &sharpness.coring),
                 "cannot read the sharpness");
    return sharpness;
}

void writeSharpness(const Camera& camera, const Sharpness& sharpness, const string& what) {
    camera.check(Tavra_SetSharpnessMode(camera.handle(), sharpness.mode, sharpness.gain, sharpness.coring),
                 "cannot set " + what);
}

string getSharpness(const Camera& camera) {
    const Sharpness sharpness = readSharpness(camera);
    return sharpness.mode == 0 ? "off" : realText(sharpness.gain / kHundredths, 2);
}

void setSharpness(const Camera& camera, const string& value) {
    Sharpness sharpness = readSharpness(camera);
    const double gain = value == "off" ? 0 : parseReal(value, "sharpness", {0, 655.35});
    sharpness.gain = static_cast<std::uint16_t>(std::lround(gain * kHundredths));
    sharpness.mode = sharpness.gain == 0 ? 0 : 1;
    writeSharpness(camera, sharpness, "the sharpness to " + value);
}

string getCoring(const Camera& camera) {
    return std::to_string(readSharpness(camera).coring);
}

void setCoring(const Camera& camera, const string& value) {
    Sharpness sharpness = readSharpness(camera);
    sharpness.coring = static_cast<std::uint8_t>(parseWhole(value, "sharpness.coring", {0, 255}));
    writeSharpness(camera, sharpness, "the coring to " + value);
}

// --- noise ---

constexpr NamedCode kNoiseModes[] = {{TAVRA_NOISE_REDUCTION_OFF, "off"},
                                     {TAVRA_NOISE_REDUCTION_MEDIAN, "median"},
                                     {TAVRA_NOISE_REDUCTION_DARK_FRAME, "dark-frame"},
                                     {TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME, "take-dark-frame"}};

string getNoise(const Camera& camera) {
    std::uint32_t mode = 0;
    camera.check(Tavra_GetNoiseReductionMode(camera.handle(), &mode), "cannot read the noise reduction");
    return nameOf(kNoiseModes, mode);
}

void setNoise(const Camera& camera, const string& value) {
    camera.check(
        Tavra_SetNoiseReductionMode(camera.handle(), onlyNamed(kNoiseModes, value, "noise-reduction")),
        "cannot set the noise reduction to " + value);
}

// --- chroma suppression ---

using ReadChroma = TavraBool (*)(TavraHandle, std::uint16_t*, std::uint16_t*);
using WriteChroma = TavraBool (*)(TavraHandle, std::uint16_t, std::uint16_t);

// One end of the scale: the highlights or the shadows.
struct ChromaEnd {
    const char* name;
    ReadChroma read;
    WriteChroma write;
    std::uint16_t offThreshold;
};

constexpr ChromaEnd kHighlights{"chroma.high", Tavra_GetHighChromaSuppression, Tavra_SetHighChromaSuppression,
                                255};
constexpr ChromaEnd kShadows{"chroma.low", Tavra_GetLowChromaSuppression, Tavra_SetLowChromaSuppression, 0};

template <const ChromaEnd& kEnd>
string getChroma(const Camera& camera) {
    requireColor(camera, "chroma suppression");
    std::uint16_t threshold = 0, strength = 0;
    camera.check(kEnd.read(camera.handle(), &threshold, &strength), string("cannot read ") + kEnd.name);
    if (threshold == kEnd.offThreshold || strength == 0) return "off";
    return std::to_string(threshold) + "," + std::to_string(strength);
}

template <const ChromaEnd& kEnd>
void setChroma(const Camera& camera, const string& value) {
    requireColor(camera, "chroma suppression");
    std::uint16_t threshold = kEnd.offThreshold, strength = 0;
    if (value != "off") {
        const auto parts = splitText(value, ',');
        if (parts.size() != 2) {
            throw Failure(string(kEnd.name) + " cannot be '" + value +
                              "': off, or THRESHOLD,STRENGTH, both from 0 to 255",
                          ExitCode::Usage);
        }
        threshold = static_cast<std::uint16_t>(parseWhole(parts[0], kEnd.name, {0, 255}));
        strength = static_cast<std::uint16_t>(parseWhole(parts[1], kEnd.name, {0, 255}));
    }
    camera.check(kEnd.write(camera.handle(), threshold, strength),
                 string("cannot set ") + kEnd.name + " to " + value);
}

// --- shading ---

constexpr NamedCode kShadingModes[] = {
    {TAVRA_SHADING_OFF, "off"},       {TAVRA_SHADING_CALIBRATE_GAIN, "calibrate-gain"},
    {TAVRA_SHADING_GAIN, "gain"},     {TAVRA_SHADING_CALIBRATE_OFFSET, "calibrate-offset"},
    {TAVRA_SHADING_OFFSET, "offset"}, {TAVRA_SHADING_SHOW_MAP, "show-map"}};

string getShading(const Camera& camera) {
    std::uint32_t mode = 0;
    camera.check(Tavra_GetShadingCorrectionMode(camera.handle(), &mode),
                 "cannot read the shading correction");
    return nameOf(kShadingModes, mode);
}

void setShading(const Camera& camera, const string& value) {
    camera.check(Tavra_SetShadingCorrectionMode(camera.handle(), onlyNamed(kShadingModes, value, "shading")),
                 "cannot set the shading correction to " + value);
}

string getShadingTarget(const Camera& camera) {
    std::uint16_t target = 0;
    camera.check(Tavra_GetShadingCorrectionTarget(camera.handle(), &target), "cannot read shading.target");
    return std::to_string(target);
}

void setShadingTarget(const Camera& camera, const string& value) {
    const auto target = static_cast<std::uint16_t>(parseWhole(value, "shading.target", {0, 255}));
    camera.check(Tavra_SetShadingCorrectionTarget(camera.handle(), target),
                 "cannot set shading.target to " + value);
}

string getShadingMap(const Camera& camera) {
    const ShadingMap map = readShadingMap(camera);
    if (map.width == 0) return "none";
    return std::to_string(map.width) + "x" + std::to_string(map.height);
}

void setShadingMap(const Camera& camera, const string& value) {
    applyShadingMap(camera, loadShadingMap(value));
}

// --- defect pixels ---

std::uint16_t defectCapacity(const Camera& camera) {
    std::uint16_t count = 0;
    camera.check(Tavra_GetEnableDefectPixelCorrectionCount(camera.handle(), &count),
                 "cannot read the length of the defect pixel list");
    if (count == 0) throw Failure("this camera (" + camera.name() + ") has no defect pixel correction");
    return count;
}

string getDefects(const Camera& camera) {
    defectCapacity(camera);
    std::uint16_t mode = 0;
    camera.check(Tavra_GetDefectPixelCorrectionMode(camera.handle(), &mode),
                 "cannot read the defect pixel correction");
    if (mode <= 1) return mode == 0 ? "off" : "on";
    return std::to_string(mode);
}

// "on", "off", or a mode of the camera.
void setDefects(const Camera& camera, const string& value) {
    defectCapacity(camera);
    std::uint32_t mode = 0;
    if (value == "on") {
        mode = 1;
    } else if (value != "off") {
        mode = parseWhole(value, "defects", {0, 65535});
    }
    camera.check(Tavra_SetDefectPixelCorrectionMode(camera.handle(), static_cast<std::uint16_t>(mode)),
                 "cannot set the defect pixel correction to " + value);
}

string getDefectCapacity(const Camera& camera) {
    return std::to_string(defectCapacity(camera));
}

constexpr Setting kSettings[] = {
    {"sharpness", "off, or how much of a pixel's difference from its neighbours is added: 1.0", getSharpness,
     setSharpness, KeptBy::Library},
    {"sharpness.coring", "difference up to which a pixel is left alone, 0 to 255", getCoring, setCoring,
     KeptBy::Library},
    {"noise-reduction", "off, median or dark-frame; in triggered exposure modes only", getNoise, setNoise,
     KeptBy::Library},
    {"chroma.high", "colour taken from highlights: off or THRESHOLD,STRENGTH, 0 to 255 each",
     getChroma<kHighlights>, setChroma<kHighlights>, KeptBy::Library},
    {"chroma.low", "colour taken from shadows, likewise", getChroma<kShadows>, setChroma<kShadows>,
     KeptBy::Library},
    {"shading", "shading correction: off, gain, offset, show-map", getShading, setShading, KeptBy::Library},
    {"shading.target", "level of a flat field after correction, 0: as it is in the middle", getShadingTarget,
     setShadingTarget, KeptBy::Library},
    {"shading.map", "file of `tavra calibrate shading`; switches its correction on", getShadingMap,
     setShadingMap, KeptBy::Library},
    {"defects", "defect pixel correction in the camera: off, on or a mode of the camera", getDefects,
     setDefects},
    {"defects.capacity", "how many defect pixels the camera can list", getDefectCapacity, nullptr},
};

}  // namespace

std::span<const Setting> detailSettings() {
    return kSettings;
}

}  // namespace tavra::tool
