// Everything that the getters of an open camera tell about what a setting file keeps, by a name for messages.
// Read by plain calls, apart from the table that files are written by.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tavra/tavra_api.h"

namespace tavra::test {

using CameraState = std::map<std::string, std::vector<std::uint32_t>>;

inline std::vector<std::uint32_t> curveOf(TavraHandle camera, std::uint8_t index) {
    std::uint8_t mode = 0, contrast = 0;
    std::uint16_t gamma = 0, brightness = 0;
    std::array<std::uint8_t, 256> table{};
    Tavra_GetGammaModeEx(camera, index, &mode, &gamma, &brightness, &contrast, table.data());
    std::vector<std::uint32_t> curve{mode, gamma, brightness, contrast};
    curve.insert(curve.end(), table.begin(), table.end());
    return curve;
}

inline void addImage(TavraHandle camera, CameraState& state) {
    std::uint32_t a = 0, b = 0, c = 0, d = 0, e = 0;
    std::uint16_t word = 0;
    std::array<std::uint8_t, 4> bytes{};
    Tavra_GetClock(camera, &a, &b);
    state["clock"] = {a, b};
    Tavra_GetImageSize(camera, 0, &word, &a, &b, &c, &d);
    state["image size"] = {word, a, b, c, d};
    std::uint32_t regions = 0;
    Tavra_GetMaxROICount(camera, &regions);
    for (std::uint32_t i = 0; i < regions; ++i) {
        Tavra_GetROI(camera, i, &a, &b, &c, &d, &e);
        state["region " + std::to_string(i)] = {a, b, c, d, e};
    }
    Tavra_GetSkippingAndBinning(camera, &bytes[0], &bytes[1], &bytes[2], &bytes[3]);
    state["skipping and binning"] = {bytes.begin(), bytes.end()};
    Tavra_GetBinningSumMode(camera, &word);
    state["binning sum"] = {word};
    Tavra_GetPreviewPixelFormat(camera, &a);
    state["preview format"] = {a};
    Tavra_GetMirrorMode(camera, &bytes[0]);
    Tavra_GetRotationMode(camera, &bytes[1]);
    Tavra_GetColorInterpolationMethod(camera, &bytes[2]);
    state["mirror, rotation, interpolation"] = {bytes[0], bytes[1], bytes[2]};
}

inline void addPreview(TavraHandle camera, CameraState& state) {
    std::uint32_t x = 0, y = 0, width = 0, height = 0, color = 0;
    std::array<std::uint8_t, 4> bytes{};
    Tavra_GetPreviewMaskSize(camera, &x, &y, &width, &height);
    state["preview mask"] = {x, y, width, height};
    Tavra_GetPreviewDestSize(camera, &x, &y, &width, &height);
    state["preview destination"] = {x, y, width, height};
    Tavra_GetMagnificationMode(camera, &bytes[0]);
    Tavra_GetAspectMode(camera, &bytes[1]);
    state["magnification, aspect"] = {bytes[0], bytes[1]};
    Tavra_GetDisplayMode(camera, &bytes[2]);
    state["display mode"] = {bytes[2]};
    Tavra_GetColorKey(camera, &color);
    Tavra_GetAlphaChannel(camera, &bytes[3]);
    state["color key, alpha"] = {color, bytes[3]};
}

inline void addExposure(TavraHandle camera, CameraState& state) {
    std::array<std::uint16_t, 6> words{};
    std::array<std::uint8_t, 16> bytes{};
    std::uint32_t clocks = 0;
    Tavra_GetALCMode(camera, &bytes[0]);
    state["alc mode"] = {bytes[0]};
    Tavra_GetTargetBrightness(camera, &bytes[0], &bytes[1], &bytes[2]);
    state["target brightness"] = {bytes[0], bytes[1], bytes[2]};
    std::uint32_t quality = 0;
    Tavra_GetAVIQuality(camera, &quality);
    state["movie quality"] = {quality};
    Tavra_GetDigitalGain(camera, &words[0]);
    Tavra_GetGain(camera, &words[1]);
    state["gains"] = {words[0], words[1]};
    Tavra_GetShutterSpeed(camera, &words[0], &words[1]);
    Tavra_GetExposureClock(camera, &clocks);
    state["shutter"] = {words[0], words[1], clocks};
    Tavra_GetShutterControlRange(camera, &words[0], &words[1], &words[2], &words[3]);
    state["shutter range"] = {words[0], words[1], words[2], words[3]};
    Tavra_GetGainControlRange(camera, &words[0], &words[1]);
    state["gain range"] = {words[0], words[1]};
    Tavra_GetControlArea(camera, words.data(), words.data() + 3);
    state["control area"] = {words.begin(), words.end()};
    Tavra_GetALCWeight(camera, bytes.data());
    state["alc weights"] = {bytes.begin(), bytes.end()};
    Tavra_GetALCControlSpeed(camera, &bytes[0], &bytes[1], &bytes[2], &bytes[3]);
    state["alc speed"] = {bytes[0], bytes[1], bytes[2], bytes[3]};
}

inline void addColor(TavraHandle camera, CameraState& state) {
    std::uint8_t mode = 0, coring = 0;
    std::array<std::uint16_t, 4> words{};
    Tavra_GetSharpnessMode(camera, &mode, &words[0], &coring);
    state["sharpness"] = {mode, words[0], coring};
    for (std::uint8_t i = 0; i < 5; ++i) state["gamma " + std::to_string(i)] = curveOf(camera, i);
    Tavra_GetWhiteBalanceMode(camera, &mode);
    Tavra_GetWhiteBalanceGain(camera, &words[0], &words[1], &words[2], &words[3]);
    state["white balance"] = {mode, words[0], words[1], words[2], words[3]};
    Tavra_GetWhiteBalanceTarget(camera, &words[0], &words[1]);
    Tavra_GetWhiteBalanceToleranceThreshold(camera, &words[2], &words[3]);
    state["white balance target"] = {words.begin(), words.end()};
    std::array<std::uint8_t, 16> weights{};
    Tavra_GetAWBWeight(camera, weights.data());
    state["white balance weights"] = {weights.begin(), weights.end()};
    Tavra_GetHueSaturationMode(camera, &mode, &words[0], &words[1]);
    state["hue and saturation"] = {mode, words[0], words[1]};
    std::array<std::int16_t, 12> matrix{};
    Tavra_GetColorMatrix(camera, &mode, matrix.data());
    state["matrix"] = {mode};
    for (const std::int16_t value : matrix) state["matrix"].push_back(static_cast<std::uint16_t>(value));
    Tavra_GetHighChromaSuppression(camera, &words[0], &words[1]);
    Tavra_GetLowChromaSuppression(camera, &words[2], &words[3]);
    state["chroma suppression"] = {words.begin(), words.end()};
}

inline void addCameraValues(TavraHandle camera, CameraState& state) {
    std::uint16_t word = 0;
    std::uint32_t number = 0;
    Tavra_GetCameraGammaValue(camera, &word);
    state["camera gamma"] = {word};
    Tavra_GetVBlankForFPS(camera, &number);
    state["v-blank"] = {number};
    Tavra_GetDefectPixelCorrectionMode(camera, &word);
    state["defect pixels"] = {word};
    Tavra_GetDigitalClamp(camera, &word);
    state["clamp"] = {word};
    Tavra_GetAnalogBlackLevel(camera, &word);
    state["black level"] = {word};
    Tavra_GetAdjustmentMode(camera, &number);
    state["adjustment"] = {number};
    std::uint32_t type = 0, size = 0;
    if (Tavra_GetHDRType(camera, &type) != 0 && type != 0 &&
        Tavra_GetHDRParameter(camera, nullptr, &size) != 0) {
        std::vector<std::uint32_t> parameters(size / 4);
        Tavra_GetHDRParameter(camera, parameters.data(), &size);
        state["hdr"] = parameters;
    }
}

inline CameraState stateOf(TavraHandle camera) {
    CameraState state;
    addImage(camera, state);
    addPreview(camera, state);
    addExposure(camera, state);
    addColor(camera, state);
    addCameraValues(camera, state);
    return state;
}

}  // namespace tavra::test
