// The names of camera models. Pure; any thread.
#pragma once

#include <cstdint>
#include <string>

#include "camera/camera_info.h"

namespace tavra {

// Name of a model, M or C at its end for a mono or a colour sensor; "UNKNOWN" for a type that is not in the
// table. The same-PID word tells variants of one type apart; the oldest types have none.
std::u16string productName(const CameraInfo& info, std::uint16_t samePid);

}  // namespace tavra
