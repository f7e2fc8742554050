#include <algorithm>
#include <array>

#include "settings/walk.h"
#include "settings/walk_access.h"
#include "tavra/tavra_api.h"

namespace tavra {
namespace {

using enum Form;
using enum Naming;

constexpr const char* kPixels = "pixels";
constexpr const char* kGain128 = "128 is 1.0";
constexpr const char* kByteRange = "0 to 255";

// --- movies and clock ---

constexpr Key kQualityKeys[] = {
    {"Quality", Number, Plain, "quality of compressed movies", "percent, 0 to 100"}};
constexpr Key kClockKeys[] = {
    {"ClockMode", Number, Plain, "clock mode", "0: default; else a bit of the camera's mask", "clock"},
    {"Clock", Number, Plain, "sensor clock", "Hz", "clock"}};

// --- sizes ---

constexpr Key kScanKeys[] = {
    {"ScanMode", UnsignedWord, Plain, "scan mode", "a code of the camera", "scan-mode"}};
constexpr Key kRegionKeys[] = {{"RegionMode", Unsigned, Region, "the region is sent", "0 or 1", "size"},
                               {"OffsetX", Unsigned, Region, "left edge of the region", kPixels, "size"},
                               {"OffsetY", Unsigned, Region, "upper edge of the region", kPixels, "size"},
                               {"Width", Unsigned, Region, "width of the region", kPixels, "size"},
                               {"Height", Unsigned, Region, "height of the region", kPixels, "size"}};
constexpr Key kFactorKeys[] = {
    {"HSkipping", UnsignedByte, Plain, "horizontal skipping", "a code of the camera, 0 to 15"},
    {"VSkipping", UnsignedByte, Plain, "vertical skipping", "a code of the camera, 0 to 15"},
    {"HBinning", UnsignedByte, Plain, "horizontal binning", "a code of the camera, 0 to 15"},
    {"VBinning", UnsignedByte, Plain, "vertical binning", "a code of the camera, 0 to 15"}};
constexpr Key kSumKeys[] = {
    {"BinningSumMode", UnsignedWord, Plain, "how binned pixels are summed", "a code of the camera"}};
constexpr Key kWindowKeys[] = {
    {"Width", Number, Plain, "width of the preview window's client area", kPixels},
    {"Height", Number, Plain, "height of the preview window's client area", kPixels},
    {"PositionX", Position, Plain, "left edge of the preview window", "pixels, may be negative"},
    {"PositionY", Position, Plain, "upper edge of the preview window", "pixels, may be negative"}};
constexpr Key kMaskKeys[] = {
    {"Width", Number, Plain, "width of the part of the image that is shown", kPixels},
    {"Height", Number, Plain, "height of the part of the image that is shown", kPixels},
    {"OffsetX", Position, Plain, "left edge of the part of the image that is shown", kPixels},
    {"OffsetY", Position, Plain, "upper edge of the part of the image that is shown", kPixels}};
constexpr Key kDestKeys[] = {
    {"Width", Number, Plain, "width of the image in the window", kPixels},
    {"Height", Number, Plain, "height of the image in the window", kPixels},
    {"OffsetX", Position, Plain, "left edge of the image in the window", "pixels, may be negative"},
    {"OffsetY", Position, Plain, "upper edge of the image in the window", "pixels, may be negative"}};

constexpr Block kQualityBlocks[] = {{kQualityKeys}};
constexpr Block kClockBlocks[] = {{kClockKeys}};
constexpr Block kImageSizeBlocks[] = {
    {kScanKeys}, {kRegionKeys, Times::Regions}, {kFactorKeys, Times::IfSkipping}, {kSumKeys, Times::IfSum}};
constexpr Block kWindowBlocks[] = {{kWindowKeys}};
constexpr Block kMaskBlocks[] = {{kMaskKeys}};
constexpr Block kDestBlocks[] = {{kDestKeys}};

// --- exposure ---

constexpr Key kAlcModeKeys[] = {
    {"ALCMode", Byte, Plain, "automatic exposure", "0 to 6; 16, 32, 48 where the camera controls", "alc"}};
constexpr Key kBrightnessKeys[] = {
    {"BrightnessTarget", Byte, Plain, "mean that automatic exposure holds", "levels, 0 to 255", "alc.target"},
    {"BrightnessTolerance", Byte, Plain, "how far from the target it comes to rest", "levels, 0 to 255",
     "alc.tolerance"},
    {"BrightnessThreshold", Byte, Plain, "how far from the target it wakes up", "levels, 0 to 255",
     "alc.threshold"}};
constexpr Key kDigitalGainKeys[] = {{"CurrentDigitalGain", Word, Plain, "digital gain",
                                     "the camera's unit, 0 to its maximum", "digital-gain"}};
constexpr Key kGainKeys[] = {
    {"CurrentGain", Word, Plain, "analogue gain", "the camera's unit, 0 to its maximum", "gain"}};
constexpr Key kShutterKeys[] = {
    {"CurrentShutterLine", Word, Plain, "exposure; read only without ExposureClock",
     "lines; 0 and 0 clocks: free-running", "exposure"},
    {"CurrentShutterClock", Word, Plain, "exposure; read only without ExposureClock", "clocks of a line",
     "exposure"},
    {"ExposureClock", Unsigned, Plain, "exposure as one number", "clocks; 4294967295 counts as a missing key",
     "exposure"}};
constexpr Key kShutterRangeKeys[] = {
    {"ALCMaxShutterLine", Word, Plain, "longest exposure of automatic exposure", "lines", "alc.exposure"},
    {"ALCMaxShutterClock", Word, Plain, "longest exposure of automatic exposure", "clocks of a line",
     "alc.exposure"},
    {"ALCMinShutterLine", Word, Plain, "shortest exposure of automatic exposure", "lines", "alc.exposure"},
    {"ALCMinShutterClock", Word, Plain, "shortest exposure of automatic exposure", "clocks of a line",
     "alc.exposure"}};
constexpr Key kGainRangeKeys[] = {
    {"AGCMinGain", Word, Plain, "lowest gain of automatic exposure", "the camera's unit", "alc.gain"},
    {"AGCMaxGain", Word, Plain, "highest gain of automatic exposure", "the camera's unit", "alc.gain"}};
// The names are those that files have.
constexpr Key kAreaKeys[] = {{"SepalateX", Word, Underscore, "inner vertical line of the grid of cells",
                              "ten-thousandths of the width, 0 to 10000", "control-area"},
                             {"SepalateY", Word, Underscore, "inner horizontal line of the grid of cells",
                              "ten-thousandths of the height, 0 to 10000", "control-area"}};
constexpr Key kAlcWeightKeys[] = {{"ALCWeight", Byte, Underscore,
                                   "weight of a cell in automatic exposure, row by row", kByteRange,
                                   "alc.weights"}};
constexpr Key kSpeedKeys[] = {
    {"ShutterCtrlSpeedLimit", Byte, Plain, "limit of the shutter's steps", kByteRange, "alc.speed"},
    {"GainCtrlSpeedLimit", Byte, Plain, "limit of the gain's steps", kByteRange, "alc.speed"},
    {"SkipFrameCount", Byte, Plain, "frames left out after a step", "frames, 0 to 255", "alc.speed"},
    {"AverageFrameCount", Byte, Plain, "frames of one measurement", "frames, 0 to 255", "alc.speed"}};

constexpr Block kAlcModeBlocks[] = {{kAlcModeKeys}};
constexpr Block kBrightnessBlocks[] = {{kBrightnessKeys}};
constexpr Block kDigitalGainBlocks[] = {{kDigitalGainKeys}};
constexpr Block kGainBlocks[] = {{kGainKeys}};
constexpr Block kShutterBlocks[] = {{kShutterKeys}};
constexpr Block kShutterRangeBlocks[] = {{kShutterRangeKeys}};
constexpr Block kGainRangeBlocks[] = {{kGainRangeKeys}};
constexpr Block kAreaBlocks[] = {{kAreaKeys, Times::Three}};
constexpr Block kAlcWeightBlocks[] = {{kAlcWeightKeys, Times::Sixteen}};
constexpr Block kSpeedBlocks[] = {{kSpeedKeys}};

// --- image and display ---

constexpr Key kMirrorKeys[] = {
    {"MirrorMode", Byte, Plain, "mirror", "sum of 1 (h), 2 (v), 16 and 32 (the camera's)", "mirror"}};
constexpr Key kMagnificationKeys[] = {
    {"MagnificationMode", Byte, Plain, "the mouse zooms in the preview window", "0: it does not"}};
constexpr Key kAspectKeys[] = {
    {"AspectMode", Byte, Plain, "how the image fits the preview window", "0 to 3, 254, 255"}};
constexpr Key kRotationKeys[] = {
    {"RotationMode", Byte, Plain, "rotation", "0: off; 1: clockwise; 2: anticlockwise", "rotate"}};
constexpr Key kDisplayKeys[] = {{"DisplayMode", UnsignedByte, Plain,
                                 "how the preview is drawn; set only while there is no window",
                                 "a code; missing: 0"}};
constexpr Key kColorKeyKeys[] = {
    {"ColorKey", Unsigned, Plain, "colour that the overlay shows through", "red in the low byte"}};
constexpr Key kAlphaKeys[] = {
    {"AlphaChannel", UnsignedByte, Plain, "opacity of what is drawn on the preview", kByteRange}};
constexpr Key kFormatKeys[] = {
    {"PreviewPixelFormat", Unsigned, Plain, "preview image", "1: mono8; 4: bgr24; 8: bgr32", "pixel-format"}};
constexpr Key kSharpnessKeys[] = {
    {"SharpnessMode", Byte, Plain, "sharpening", "0: off; 1: on", "sharpness"},
    {"SharpnessGain", Word, Plain, "strength of sharpening", "0 to 65535", "sharpness"},
    {"SharpnessCoring", Byte, Plain, "differences left as they are", "levels, 0 to 255", "sharpness.coring"}};
constexpr Key kGammaKeys[] = {
    {"GammaMode", UnsignedByte, Plain, "tone curve", "0: off; 1: power; 2: reversed; 255: table", "gamma.*"},
    {"Gamma", UnsignedWord, Plain, "power of the curve", "hundredths, 1 to 65535", "gamma.*"},
    {"Brightness", Signed16, Plain, "added to the curve", "-32768 to 32767", "gamma.*"},
    {"Contrast", UnsignedByte, Plain, "contrast of the curve", kByteRange, "gamma.*"}};
constexpr Key kTableKeys[] = {{"GammaTable", UnsignedByte, Underscore,
                               "the curve, level by level; read with GammaMode 255", kByteRange}};

constexpr Block kMirrorBlocks[] = {{kMirrorKeys}};
constexpr Block kMagnificationBlocks[] = {{kMagnificationKeys}};
constexpr Block kAspectBlocks[] = {{kAspectKeys}};
constexpr Block kRotationBlocks[] = {{kRotationKeys}};
constexpr Block kDisplayBlocks[] = {{kDisplayKeys}};
constexpr Block kColorKeyBlocks[] = {{kColorKeyKeys}};
constexpr Block kAlphaBlocks[] = {{kAlphaKeys}};
constexpr Block kFormatBlocks[] = {{kFormatKeys}};
constexpr Block kSharpnessBlocks[] = {{kSharpnessKeys}};
constexpr Block kGammaBlocks[] = {{kGammaKeys}, {kTableKeys, Times::TableSize}};

// --- colour ---

constexpr Key kWhiteBalanceKeys[] = {
    {"WhiteBalanceMode", Byte, Plain, "white balance", "0: off; 1: gains; 2: one push; 3: automatic", "wb"}};
constexpr Key kTargetKeys[] = {
    {"AWBTargetR", Word, Plain, "red that automatic white balance holds", "percent of green", "wb.target"},
    {"AWBTargetB", Word, Plain, "blue that automatic white balance holds", "percent of green", "wb.target"}};
constexpr Key kWhiteGainKeys[] = {
    {"WBGainR", Word, Plain, "gain of red", kGain128, "wb.gains"},
    {"WBGainGr", Word, Plain, "gain of green in the rows of red", kGain128, "wb.gains"},
    {"WBGainGb", Word, Plain, "gain of green in the rows of blue", kGain128, "wb.gains"},
    {"WBGainB", Word, Plain, "gain of blue", kGain128, "wb.gains"}};
constexpr Key kBandKeys[] = {
    {"AWBThreshold", Word, Plain, "how far off white balance moves", "tenths of a level", "wb.threshold"},
    {"AWBTolerance", Word, Plain, "kept for applications", "no effect"}};
constexpr Key kAwbWeightKeys[] = {{"AWBWeight", Byte, Behind,
                                   "weight of a cell in automatic white balance, row by row", kByteRange,
                                   "wb.weights"}};
constexpr Key kInterpolationKeys[] = {
    {"ColorInterpolationMethod", Byte, Plain, "colour interpolation", "0 to 5", "interpolation"}};
constexpr Key kHueKeys[] = {
    {"HueSaturationMode", Byte, Plain, "hue and saturation", "0: off; 1: on", "hue"},
    {"Hue", Signed16, Plain, "hue", "tenths of a degree, may be negative", "hue"},
    {"Saturation", Word, Plain, "saturation", "hundredths, 100: unchanged", "saturation"}};
constexpr Key kMatrixModeKeys[] = {
    {"ColorMatrixMode", Byte, Plain, "colour matrix", "0: off; 255: on", "matrix"}};
constexpr Key kMatrixKeys[] = {{"ColorMatrix", Signed16, Underscore,
                                "three rows of red, green, blue and offset", "hundredths", "matrix"}};
constexpr Key kHighChromaKeys[] = {
    {"StartLevel", Word, Plain, "level above which colour fades", "levels, 0 to 255", "chroma.high"},
    {"Suppression", Word, Plain, "how much colour fades above it", "0 to 255", "chroma.high"}};
constexpr Key kLowChromaKeys[] = {
    {"LowStartLevel", Word, Plain, "level below which colour fades", "levels, 0 to 255", "chroma.low"},
    {"LowSuppression", Word, Plain, "how much colour fades below it", "0 to 255", "chroma.low"}};

constexpr Block kWhiteBalanceBlocks[] = {{kWhiteBalanceKeys}};
constexpr Block kTargetBlocks[] = {{kTargetKeys}};
constexpr Block kWhiteGainBlocks[] = {{kWhiteGainKeys}};
constexpr Block kBandBlocks[] = {{kBandKeys}};
constexpr Block kAwbWeightBlocks[] = {{kAwbWeightKeys, Times::Sixteen}};
constexpr Block kInterpolationBlocks[] = {{kInterpolationKeys}};
constexpr Block kHueBlocks[] = {{kHueKeys}};
constexpr Block kMatrixBlocks[] = {{kMatrixModeKeys}, {kMatrixKeys, Times::Twelve}};
constexpr Block kHighChromaBlocks[] = {{kHighChromaKeys}};
constexpr Block kLowChromaBlocks[] = {{kLowChromaKeys}};

// --- what some cameras have ---

constexpr Key kCameraGammaKeys[] = {
    {"Raw", ProfileWord, Plain, "gamma of the camera itself", "a code of the camera", "gamma.camera"}};
constexpr Key kVBlankKeys[] = {
    {"VBlankForFPS", ProfileNumber, Plain, "lines added between frames", "lines", "vblank"}};
constexpr Key kDefectKeys[] = {
    {"DefectPixelCorrectionMode", ProfileWord, Plain, "defect pixel correction", "0: off; 1: on", "defects"}};
constexpr Key kClampKeys[] = {{"DigitalClamp", ProfileWord, Plain, "level that black is held at",
                               "the camera's unit, 0 to its maximum"}};
constexpr Key kBlackKeys[] = {{"AnalogBlackLevel", ProfileWord, Plain, "black level ahead of the converter",
                               "the camera's unit, 0 to its maximum"}};
constexpr Key kAdjustmentKeys[] = {
    {"AdjustmentMode", ProfileNumber, Plain, "sensor adjustment", "a code of the camera"}};
constexpr Key kHdrKeys[] = {
    {"HDRParameter", ProfileNumber, Underscore, "parameter of the HDR mode", "the camera's unit"}};

constexpr Block kCameraGammaBlocks[] = {{kCameraGammaKeys}};
constexpr Block kVBlankBlocks[] = {{kVBlankKeys}};
constexpr Block kDefectBlocks[] = {{kDefectKeys}};
constexpr Block kClampBlocks[] = {{kClampKeys}};
constexpr Block kBlackBlocks[] = {{kBlackKeys}};
constexpr Block kAdjustmentBlocks[] = {{kAdjustmentKeys}};
constexpr Block kHdrBlocks[] = {{kHdrKeys, Times::HdrSettings}};

// --- access through plain pairs of functions ---

constexpr Access kClock = direct<Tavra_GetClock, Tavra_SetClock>();
constexpr Access kAlcMode = direct<Tavra_GetALCMode, Tavra_SetALCMode>();
constexpr Access kBrightness = direct<Tavra_GetTargetBrightness, Tavra_SetTargetBrightness>();
constexpr Access kDigitalGain = direct<Tavra_GetDigitalGain, Tavra_SetDigitalGain>();
constexpr Access kGain = direct<Tavra_GetGain, Tavra_SetGain>();
constexpr Access kGainRange = direct<Tavra_GetGainControlRange, Tavra_SetGainControlRange>();
constexpr Access kSpeed = direct<Tavra_GetALCControlSpeed, Tavra_SetALCControlSpeed>();
constexpr Access kMirror = direct<Tavra_GetMirrorMode, Tavra_SetMirrorMode>();
constexpr Access kFormat = direct<Tavra_GetPreviewPixelFormat, Tavra_SetPreviewPixelFormat>();
constexpr Access kSharpness = direct<Tavra_GetSharpnessMode, Tavra_SetSharpnessMode>();
constexpr Access kWhiteBalance = direct<Tavra_GetWhiteBalanceMode, Tavra_SetWhiteBalanceMode>();
constexpr Access kTarget = direct<Tavra_GetWhiteBalanceTarget, Tavra_SetWhiteBalanceTarget>();
constexpr Access kWhiteGain = direct<Tavra_GetWhiteBalanceGain, Tavra_SetWhiteBalanceGain>();
constexpr Access kInterpolation =
    direct<Tavra_GetColorInterpolationMethod, Tavra_SetColorInterpolationMethod>();
constexpr Access kHighChroma = direct<Tavra_GetHighChromaSuppression, Tavra_SetHighChromaSuppression>();
constexpr Access kLowChroma = direct<Tavra_GetLowChromaSuppression, Tavra_SetLowChromaSuppression>();
constexpr Access kCameraGamma = direct<Tavra_GetCameraGammaValue, Tavra_SetCameraGammaValue>();
constexpr Access kVBlank = direct<Tavra_GetVBlankForFPS, Tavra_SetVBlankForFPS>();
constexpr Access kDefects = direct<Tavra_GetDefectPixelCorrectionMode, Tavra_SetDefectPixelCorrectionMode>();
constexpr Access kClamp = direct<Tavra_GetDigitalClamp, Tavra_SetDigitalClamp>();
constexpr Access kBlack = direct<Tavra_GetAnalogBlackLevel, Tavra_SetAnalogBlackLevel>();
constexpr Access kAdjustment = direct<Tavra_GetAdjustmentMode, Tavra_SetAdjustmentMode>();

// --- defaults of a load that are not the present value ---

void noExposure(std::span<std::uint32_t> values) {
    std::ranges::fill(values, kNoValue);
}
void displayModeOff(std::span<std::uint32_t> values) {
    values[0] = 0;
}

using enum Condition;

constexpr Group kWalk[] = {
    {"AVI", kQualityBlocks, Always, access::kMovieQuality},
    {"Clock", kClockBlocks, Always, kClock},
    {"ImageSize", kImageSizeBlocks, Geometry, access::kImageSize},
    {"PreviewWindowSize", kWindowBlocks, PreviewWindow, access::kPreviewWindowSize},
    {"PreviewMaskSize", kMaskBlocks, Geometry, access::kPreviewMaskSize},
    {"PreviewDestSize", kDestBlocks, Geometry, access::kPreviewDestSize},
    {"GainShutter", kAlcModeBlocks, Always, kAlcMode},
    {"GainShutter", kBrightnessBlocks, Always, kBrightness},
    {"GainShutter", kDigitalGainBlocks, NotLegacy, kDigitalGain},
    {"GainShutter", kGainBlocks, GainByItself, kGain},
    {"GainShutter", kShutterBlocks, Always, access::kShutter, noExposure},
    {"GainShutter", kShutterRangeBlocks, Always, access::kShutterControlRange},
    {"GainShutter", kGainRangeBlocks, Always, kGainRange},
    {"GainShutter", kAreaBlocks, Always, access::kControlArea},
    {"GainShutter", kAlcWeightBlocks, Always, access::kAlcWeight},
    {"GainShutter", kSpeedBlocks, Always, kSpeed},
    {"Other", kMirrorBlocks, Always, kMirror},
    {"Other", kMagnificationBlocks, Geometry, access::kMagnificationMode},
    {"Other", kAspectBlocks, Geometry, access::kAspectMode},
    {"Other", kRotationBlocks, Rotation, access::kRotation},
    {"Other", kDisplayBlocks, Always, access::kDisplayMode, displayModeOff},
    {"Other", kColorKeyBlocks, Always, access::kColorKey},
    {"Other", kAlphaBlocks, Always, access::kAlphaChannel},
    {"Other", kFormatBlocks, Always, kFormat},
    {"Sharpness", kSharpnessBlocks, Always, kSharpness},
    {"GammaY", kGammaBlocks, Always, access::kGamma[0]},
    {"WhiteBalance", kWhiteBalanceBlocks, Color, kWhiteBalance},
    {"WhiteBalance", kTargetBlocks, OwnWhiteBalance, kTarget},
    {"WhiteBalance", kWhiteGainBlocks, Color, kWhiteGain},
    {"WhiteBalance", kBandBlocks, OwnWhiteBalance, access::kWhiteBalanceBand},
    {"WhiteBalance", kAwbWeightBlocks, OwnWhiteBalance, access::kAwbWeight},
    {"Other", kInterpolationBlocks, Color, kInterpolation},
    {"HueSaturation", kHueBlocks, Color, access::kHue},
    {"ColorMatrix", kMatrixBlocks, Color, access::kColorMatrix},
    {"ChromaSuppression", kHighChromaBlocks, Color, kHighChroma},
    {"ChromaSuppression", kLowChromaBlocks, Color, kLowChroma},
    {"GammaR", kGammaBlocks, Color, access::kGamma[1]},
    {"GammaGR", kGammaBlocks, Color, access::kGamma[2]},
    {"GammaGB", kGammaBlocks, Color, access::kGamma[3]},
    {"GammaB", kGammaBlocks, Color, access::kGamma[4]},
    {"CameraGamma", kCameraGammaBlocks, CameraGamma, kCameraGamma},
    // By design: some files have the V-blank in a section whose name begins with a bracket of its own.
    {"Clock", kVBlankBlocks, VBlank, kVBlank, nullptr, "[Clock"},
    {"DefectPixelCorrection", kDefectBlocks, DefectPixels, kDefects},
    {"Clamp", kClampBlocks, Clamp, kClamp},
    {"AnalogBlackLevel", kBlackBlocks, AnalogBlackLevel, kBlack},
    {"Adjustment", kAdjustmentBlocks, AdjustmentMode, kAdjustment},
    {"HDR", kHdrBlocks, Hdr, access::kHdr},
};

}  // namespace

std::span<const Group> settingWalk() {
    return kWalk;
}

}  // namespace tavra
