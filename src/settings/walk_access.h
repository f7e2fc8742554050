// Access to the groups of a setting file that are more than a pair of functions with plain numbers, or that
// others than the table use.
#pragma once

#include "settings/access.h"
#include "tavra/tavra_api.h"

namespace tavra::access {

// Functions that take place ahead of size, for keys in the other order.
template <auto Get, auto Set>
constexpr Access sizeAheadOfPlace() {
    return {[](ISettingCamera& camera, std::span<std::uint32_t> values) {
                return Get(camera.handle(), &values[2], &values[3], &values[0], &values[1]) != 0;
            },
            [](ISettingCamera& camera, std::span<const std::uint32_t> values) {
                return Set(camera.handle(), values[2], values[3], values[0], values[1]) != 0;
            }};
}

inline constexpr Access kPreviewWindowSize =
    sizeAheadOfPlace<Tavra_GetPreviewWindowSize, Tavra_SetPreviewWindowSize>();
inline constexpr Access kPreviewMaskSize =
    sizeAheadOfPlace<Tavra_GetPreviewMaskSize, Tavra_SetPreviewMaskSize>();
inline constexpr Access kPreviewDestSize =
    sizeAheadOfPlace<Tavra_GetPreviewDestSize, Tavra_SetPreviewDestSize>();
inline constexpr Access kMagnificationMode = direct<Tavra_GetMagnificationMode, Tavra_SetMagnificationMode>();
inline constexpr Access kAspectMode = direct<Tavra_GetAspectMode, Tavra_SetAspectMode>();
extern const Access kDisplayMode;  // an open window keeps its own
inline constexpr Access kColorKey = direct<Tavra_GetColorKey, Tavra_SetColorKey>();
inline constexpr Access kAlphaChannel = direct<Tavra_GetAlphaChannel, Tavra_SetAlphaChannel>();
inline constexpr Access kMovieQuality = direct<Tavra_GetAVIQuality, Tavra_SetAVIQuality>();
extern const Access kImageSize;
extern const Access kShutter;  // line, clock, exposure clock; set: see walk_access.cpp
extern const Access kShutterControlRange;
extern const Access kControlArea;
extern const Access kAlcWeight;
extern const Access kRotation;
extern const Access kWhiteBalanceBand;
extern const Access kAwbWeight;
extern const Access kColorMatrix;
inline constexpr Access kHue = direct<Tavra_GetHueSaturationMode, Tavra_SetHueSaturationMode>();
extern const Access kGamma[5];  // by curve
extern const Access kHdr;

// Numbers that a camera's groups have; 0 where the camera lacks them or they cannot be read.
std::uint32_t regionCount(ISettingCamera& camera);
std::uint32_t hdrParameterCount(ISettingCamera& camera);
bool hasHdr(ISettingCamera& camera);
bool hasSkippingAndBinning(ISettingCamera& camera);
bool hasBinningSum(ISettingCamera& camera);
bool hasFunction(ISettingCamera& camera, std::uint32_t function);

// Numbers of functions, see Tavra_HasFunction().
constexpr std::uint32_t kVBlankFunction = 21;       // capability word 1 bit 5
constexpr std::uint32_t kCameraGammaFunction = 57;  // capability word 3 bit 9

}  // namespace tavra::access
