// The one place where stage objects are made. Any thread.
//
// How a class gets into the factory: it has a row in the table of factory.cpp, which pairs its code with a
// maker, a function that gives a new object with count 0, or null without memory. A class of this room uses
// the ready-made maker. A class of another room (the image file writer, the recorder) defines its maker there
// and is declared by that function's name alone in factory.cpp: the linker joins the two, so this room
// includes nothing of the other, and there is no registration at run time whose order could go wrong.
#pragma once

#include <cstdint>

#include "stages/unknown.h"

namespace tavra {

// Codes of the classes, as the callers of the factory write them.
namespace stage_code {
inline constexpr std::int32_t kSharpness = 16;
inline constexpr std::int32_t kGamma = 32;
inline constexpr std::int32_t kColorMatrix = 48;
inline constexpr std::int32_t kChromaSuppress = 49;
inline constexpr std::int32_t kColorInterpolation = 64;
inline constexpr std::int32_t kFlip = 80;
inline constexpr std::int32_t kWhiteBalance = 96;
inline constexpr std::int32_t kSaveImageFile = 128;
inline constexpr std::int32_t kCreateAvi = 144;
inline constexpr std::int32_t kMultiRoiImage = 160;
inline constexpr std::int32_t kShadingCorrection = 176;
}  // namespace stage_code

// A new object of the class with this code, with count 1, or null for a code without a class and without
// memory. The caller casts it to the interface of that class, and releases it.
ISUnknown* CreateStageObject(std::int32_t code);

}  // namespace tavra
