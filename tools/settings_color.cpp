// Settings of tone and colour: gamma, colour matrix, hue and saturation.
#include <array>
#include <cmath>

#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

constexpr double kHundredths = 100;
constexpr std::uint32_t kFunctionCameraGamma = 57;  // capability word 3 bit 9

// --- gamma ---

constexpr const char* kCurveNames[] = {"gamma.y", "gamma.r", "gamma.gr", "gamma.gb", "gamma.b"};
constexpr const char* kNegative = "negative:";

// The curves of the mosaic positions act on Bayer frames; the luminance curve acts on every image.
void requireCurve(const Camera& camera, std::uint8_t index) {
    if (index != TAVRA_GAMMA_INDEX_Y) requireColor(camera, "mosaic for " + string(kCurveNames[index]));
}

template <std::uint8_t kIndex>
string getCurve(const Camera& camera) {
    requireCurve(camera, kIndex);
    std::uint8_t mode = 0, contrast = 0;
    std::uint16_t gamma = 0, brightness = 0;
    camera.check(
        Tavra_GetGammaModeEx(camera.handle(), kIndex, &mode, &gamma, &brightness, &contrast, nullptr),
        string("cannot read ") + kCurveNames[kIndex]);
    if (mode == TAVRA_GAMMA_OFF) return "off";
    if (mode == TAVRA_GAMMA_TABLE) return "table";
    string text = (mode == TAVRA_GAMMA_REVERSED ? kNegative : "") + realText(gamma / kHundredths, 2);
    const int levels = static_cast<std::int16_t>(brightness);
    if (levels != 0 || contrast != 0) text += "," + std::to_string(levels) + "," + std::to_string(contrast);
    return text;
}

// "off", or "[negative:]GAMMA[,BRIGHTNESS,CONTRAST]".
template <std::uint8_t kIndex>
void setCurve(const Camera& camera, const string& value) {
    const string name = kCurveNames[kIndex];
    requireCurve(camera, kIndex);
    std::uint8_t mode = TAVRA_GAMMA_OFF;
    double gamma = 1, brightness = 0, contrast = 0;
    if (value != "off") {
        const bool negative = value.starts_with(kNegative);
        mode = negative ? TAVRA_GAMMA_REVERSED : TAVRA_GAMMA_ON;
        const string curve = negative ? value.substr(string(kNegative).size()) : value;
        const auto parts = splitText(curve, ',');
        if (parts.size() != 1 && parts.size() != 3) {
            throw Failure(name + " cannot be '" + value +
                              "': off, or [negative:]GAMMA[,BRIGHTNESS,CONTRAST], such as 2.2 or 2.2,10,5",
                          ExitCode::Usage);
        }
        gamma = parseReal(parts[0], name, {0.01, 655.35});
        if (parts.size() == 3) {
            brightness = parseReal(parts[1], name + " brightness", {-32768, 32767});
            contrast = parseReal(parts[2], name + " contrast", {0, 127});
        }
    }
    camera.check(
        Tavra_SetGammaModeEx(camera.handle(), kIndex, mode,
                             static_cast<std::uint16_t>(std::lround(gamma * kHundredths)),
                             static_cast<std::uint16_t>(static_cast<std::int16_t>(std::lround(brightness))),
                             static_cast<std::uint8_t>(std::lround(contrast)), nullptr),
        "cannot set " + name + " to " + value);
}

void requireCameraGamma(const Camera& camera) {
    if (hasFunction(camera, kFunctionCameraGamma)) return;
    throw Failure("this camera (" + camera.name() + ") has no gamma of its own; gamma.y is the library's");
}

string getCameraGamma(const Camera& camera) {
    requireCameraGamma(camera);
    std::uint16_t value = 0;
    camera.check(Tavra_GetCameraGammaValue(camera.handle(), &value), "cannot read the camera's gamma");
    return std::to_string(value);
}

void setCameraGamma(const Camera& camera, const string& value) {
    requireCameraGamma(camera);
    const auto gamma = static_cast<std::uint16_t>(parseWhole(value, "gamma.camera", {0, 65535}));
    camera.check(Tavra_SetCameraGammaValue(camera.handle(), gamma), "cannot set the camera's gamma");
}

// --- colour matrix ---

using Matrix = std::array<std::int16_t, 12>;

string getMatrix(const Camera& camera) {
    requireColor(camera, "colour matrix");
    std::uint8_t mode = 0;
    Matrix matrix{};
    camera.check(Tavra_GetColorMatrix(camera.handle(), &mode, matrix.data()),
                 "cannot read the colour matrix");
    if (mode == TAVRA_COLOR_MATRIX_OFF) return "off";
    string text;
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        if (i > 0) text += i % 4 == 0 ? ";" : ",";
        text += realText(matrix[i] / kHundredths, 2);
    }
    return text;
}

void setMatrix(const Camera& camera, const string& value) {
    requireColor(camera, "colour matrix");
    Matrix matrix{};
    if (value != "off") {
        const auto rows = splitText(value, ';');
        if (rows.size() != 3) {
            throw Failure("matrix cannot be '" + value +
                              "': off, or three rows for R, G and B, each from R, from G, from B, offset in "
                              "levels: 1,0,0,0;0,1,0,0;0,0,1,0",
                          ExitCode::Usage);
        }
        for (std::size_t row = 0; row < 3; ++row) {
            const auto numbers = parseReals(rows[row], 4, "matrix row", {-327.68, 327.67});
            for (std::size_t column = 0; column < 4; ++column) {
                matrix[row * 4 + column] =
                    static_cast<std::int16_t>(std::lround(numbers[column] * kHundredths));
            }
        }
    }
    const std::uint8_t mode = value == "off" ? TAVRA_COLOR_MATRIX_OFF : TAVRA_COLOR_MATRIX_ON;
    camera.check(Tavra_SetColorMatrix(camera.handle(), mode, matrix.data()),
                 "cannot set the colour matrix to " + value);
}

// --- hue and saturation ---

struct HueSaturation {
    std::int16_t hue = 0;            // tenths of a degree
    std::uint16_t saturation = 100;  // hundredths
};

HueSaturation readHueSaturation(const Camera& camera) {
    requireColor(camera, "hue and saturation");
    std::uint8_t mode = 0;
    std::uint16_t hue = 0, saturation = 0;
    camera.check(Tavra_GetHueSaturationMode(camera.handle(), &mode, &hue, &saturation),
                 "cannot read hue and saturation");
    return {static_cast<std::int16_t>(hue), saturation};
}

// Nothing to change is off, which leaves the image untouched.
void writeHueSaturation(const Camera& camera, const HueSaturation& wanted, const string& what) {
    const bool off = wanted.hue == 0 && wanted.saturation == 100;
    camera.check(Tavra_SetHueSaturationMode(camera.handle(), off ? 0 : 1,
                                            static_cast<std::uint16_t>(wanted.hue), wanted.saturation),
                 "cannot set " + what);
}

string getHue(const Camera& camera) {
    return realText(readHueSaturation(camera).hue / 10.0, 1);
}

void setHue(const Camera& camera, const string& value) {
    HueSaturation wanted = readHueSaturation(camera);
    wanted.hue = static_cast<std::int16_t>(std::lround(parseReal(value, "hue", {-360, 360}, "deg") * 10));
    writeHueSaturation(camera, wanted, "hue to " + value);
}

string getSaturation(const Camera& camera) {
    return realText(readHueSaturation(camera).saturation / kHundredths, 2);
}

void setSaturation(const Camera& camera, const string& value) {
    HueSaturation wanted = readHueSaturation(camera);
    const double factor = parseReal(value, "saturation", {0, 655.35});
    wanted.saturation = static_cast<std::uint16_t>(std::lround(factor * kHundredths));
    writeHueSaturation(camera, wanted, "saturation to " + value);
}

constexpr Setting kSettings[] = {
    {"gamma.y", "luminance: off or GAMMA[,BRIGHTNESS,CONTRAST]; above 1 brightens; negative:GAMMA",
     getCurve<TAVRA_GAMMA_INDEX_Y>, setCurve<TAVRA_GAMMA_INDEX_Y>, KeptBy::Library},
    {"gamma.r", "likewise, raw R samples", getCurve<TAVRA_GAMMA_INDEX_R>, setCurve<TAVRA_GAMMA_INDEX_R>,
     KeptBy::Library},
    {"gamma.gr", "likewise, raw G samples on the rows of R", getCurve<TAVRA_GAMMA_INDEX_GR>,
     setCurve<TAVRA_GAMMA_INDEX_GR>, KeptBy::Library},
    {"gamma.gb", "likewise, raw G samples on the rows of B", getCurve<TAVRA_GAMMA_INDEX_GB>,
     setCurve<TAVRA_GAMMA_INDEX_GB>, KeptBy::Library},
    {"gamma.b", "likewise, raw B samples", getCurve<TAVRA_GAMMA_INDEX_B>, setCurve<TAVRA_GAMMA_INDEX_B>,
     KeptBy::Library},
    {"gamma.camera", "the camera's own gamma, a number of the camera", getCameraGamma, setCameraGamma},
    {"matrix", "colour matrix: off or 1,0,0,0;0,1,0,0;0,0,1,0 (rows for R, G, B; offsets in levels)",
     getMatrix, setMatrix, KeptBy::Library},
    {"hue", "turn of the colours in degrees, 0: none", getHue, setHue, KeptBy::Library},
    {"saturation", "1: unchanged, 0: grey", getSaturation, setSaturation, KeptBy::Library},
};

}  // namespace

std::span<const Setting> colorSettings() {
    return kSettings;
}

}  // namespace tavra::tool
