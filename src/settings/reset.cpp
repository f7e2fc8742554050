#include <initializer_list>

#include "settings/setting_file.h"
#include "settings/walk.h"
#include "settings/walk_access.h"
#include "tavra/tavra_api.h"

namespace tavra {
namespace {

constexpr std::uint32_t kMovieQuality = 75;  // percent
constexpr std::uint32_t kFullFrame = 0x80000000;
constexpr std::uint32_t kColorKey = 0xFF00FF;
constexpr std::uint8_t kColorInterpolation = TAVRA_INTERPOLATION_BILINEAR;
constexpr std::uint16_t kPlainGamma = 100;
constexpr std::uint16_t kPlainSaturation = 100;  // percent
constexpr std::uint16_t kHighChromaStart = 255;
constexpr std::uint16_t kShadingTarget = 128;

bool give(ISettingCamera& camera, const Access& access, std::initializer_list<std::uint32_t> values) {
    return access.set(camera, std::span(values.begin(), values.size()));
}

bool noted(ISettingCamera& camera, Status status) {
    camera.noteFailure(status);
    return status.ok();
}

bool resetClock(TavraHandle handle) {
    std::uint32_t mask = 0, clock = 0, least = 0, most = 0;
    return Tavra_GetEnableClock(handle, &mask, &clock, &least, &most) != 0 &&
           Tavra_SetClock(handle, TAVRA_CLOCK_MODE_DEFAULT, clock) != 0;
}

bool resetPreviewSizes(ISettingCamera& camera, std::uint32_t width, std::uint32_t height) {
    if (camera.hasPreviewWindow() && !give(camera, access::kPreviewWindowSize, {width, height, 0, 0}) &&
        camera.hasPreviewWindow()) {
        return false;  // one that was closed meanwhile has no size
    }
    return give(camera, access::kPreviewMaskSize, {width, height, 0, 0}) &&
           give(camera, access::kPreviewDestSize, {width, height, 0, 0});
}

bool resetSizes(ISettingCamera& camera) {
    if (!keepsGeometry(camera.fileMode())) return true;
    const TavraHandle handle = camera.handle();
    // By design: the scan mode has 16 bits, so that the camera gets mode 0 and a size of nothing, which is
    // its whole sensor.
    if (Tavra_SetImageSize(handle, 0, static_cast<std::uint16_t>(kFullFrame), 0, 0, 0, 0) == 0) return false;
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    if (Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height) == 0) return false;
    if (access::hasSkippingAndBinning(camera) && Tavra_SetSkippingAndBinning(handle, 0, 0, 0, 0) == 0) {
        return false;
    }
    if (access::hasBinningSum(camera) && Tavra_SetBinningSumMode(handle, 0) == 0) return false;
    return resetPreviewSizes(camera, width, height);
}

bool resetControls(ISettingCamera& camera) {
    if (!noted(camera, camera.resetExposure())) return false;
    camera.resetStatistics();
    return true;
}

bool resetOrientation(ISettingCamera& camera) {
    const std::uint32_t mode = camera.fileMode();
    if (Tavra_SetMirrorMode(camera.handle(), 0) == 0) return false;
    if (keepsGeometry(mode) &&
        (!give(camera, access::kMagnificationMode, {0}) || !give(camera, access::kAspectMode, {0}))) {
        return false;
    }
    return !keepsRotation(mode) || Tavra_SetRotationMode(camera.handle(), 0) != 0;
}

bool resetDisplay(ISettingCamera& camera) {
    if (!camera.hasPreviewWindow() && !give(camera, access::kDisplayMode, {0})) return false;
    return give(camera, access::kColorKey, {kColorKey});
}

bool resetCurve(TavraHandle handle, std::uint8_t index) {
    return Tavra_SetGammaMode(handle, index, TAVRA_GAMMA_OFF, kPlainGamma, nullptr) != 0;
}

bool resetColor(ISettingCamera& camera) {
    const TavraHandle handle = camera.handle();
    camera.resetWhiteBalance();
    if (Tavra_SetHueSaturationMode(handle, 0, 0, kPlainSaturation) == 0) return false;
    if (Tavra_SetColorMatrix(handle, TAVRA_COLOR_MATRIX_OFF, nullptr) == 0) return false;
    if (Tavra_SetHighChromaSuppression(handle, kHighChromaStart, 0) == 0) return false;
    if (Tavra_SetLowChromaSuppression(handle, 0, 0) == 0) return false;
    for (std::uint8_t index = 1; index < 5; ++index) {
        if (!resetCurve(handle, index)) return false;
    }
    return true;
}

bool resetCameraValues(ISettingCamera& camera) {
    const TavraHandle handle = camera.handle();
    if (access::hasFunction(camera, access::kCameraGammaFunction) &&
        Tavra_SetCameraGammaValue(handle, 0) == 0) {
        return false;
    }
    return !access::hasFunction(camera, access::kVBlankFunction) || Tavra_SetVBlankForFPS(handle, 0) != 0;
}

bool resetShading(TavraHandle handle) {
    return Tavra_SetShadingCorrectionMode(handle, 0) != 0 &&
           Tavra_SetShadingCorrectionTarget(handle, kShadingTarget) != 0;
}

}  // namespace

bool resetSettings(ISettingCamera& camera) {
    const TavraHandle handle = camera.handle();
    const bool color = WalkCamera(camera).isColor();
    return give(camera, access::kMovieQuality, {kMovieQuality}) && resetClock(handle) && resetSizes(camera) &&
           Tavra_SetPreviewPixelFormat(handle, color ? TAVRA_PIXEL_BGR_24 : TAVRA_PIXEL_MONO_8) != 0 &&
           resetControls(camera) &&
           Tavra_SetColorInterpolationMethod(handle, color ? kColorInterpolation : 0) != 0 &&
           resetOrientation(camera) && resetDisplay(camera) && Tavra_SetSharpnessMode(handle, 0, 0, 0) != 0 &&
           resetCurve(handle, 0) && (!color || resetColor(camera)) && resetCameraValues(camera) &&
           resetShading(handle);
}

}  // namespace tavra
