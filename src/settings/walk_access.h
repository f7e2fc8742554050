// Access to the groups of a setting file that are more than a pair of functions with plain numbers, or that
// others than the table use.
#pragma once

#include "settings/access.h"
#include "tavra/tavra_api.h"

namespace tavra::access {

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

// "ExposureClock" of a file that does not have it.
constexpr std::uint32_t kNoExposureClock = 0xFFFFFFFF;

}  // namespace tavra::access
