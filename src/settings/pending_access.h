// Groups whose functions the library does not export yet: those of the preview window, its mask and its
// colours. They keep their places in the table; without access they count as not existing, are
// neither written nor read, and a reset passes over them.
//
// The one place to change when the functions come: each then is direct<Get, Set>(), or a pair of its own
// where the keys are in another order than the arguments.
#pragma once

#include "settings/access.h"

namespace tavra::access {

inline constexpr Access kPreviewWindowSize{};  // Tavra_GetPreviewWindowSize; size ahead of place
inline constexpr Access kPreviewMaskSize{};    // Tavra_GetPreviewMaskSize; size ahead of place
inline constexpr Access kPreviewDestSize{};    // Tavra_GetPreviewDestSize; size ahead of place
inline constexpr Access kMagnificationMode{};  // Tavra_GetMagnificationMode
inline constexpr Access kAspectMode{};         // Tavra_GetAspectMode
inline constexpr Access kDisplayMode{};        // Tavra_GetDisplayMode
inline constexpr Access kColorKey{};           // Tavra_GetColorKey
inline constexpr Access kAlphaChannel{};       // Tavra_GetAlphaChannel

}  // namespace tavra::access
