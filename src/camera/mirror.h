// Mirror and rotation modes of a camera. The library's mirror bits and the rotation act on the capture
// thread, which reads both modes with each frame; the camera's mirror bits are sent to it. Application
// threads.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "tavra/tavra_types.h"

namespace tavra {

// Whether a rotation mode exchanges the sides.
// By design: other values than 1 and 2 turn nothing, and so count as 0 wherever sides or sets of images are
// chosen: an image that is not turned would be sheared in the set with the sides exchanged.
constexpr bool isQuarterTurn(std::uint8_t rotation) {
    return rotation == TAVRA_ROTATION_CLOCKWISE || rotation == TAVRA_ROTATION_ANTICLOCKWISE;
}

class TAVRA_COMMON_PARAM;

// The mirror mode bits that the camera and the library have together.
std::uint8_t enabledMirrorModes(const TAVRA_COMMON_PARAM& camera);

// 87, and nothing changes, for a bit that is not enabled. 0xE0000005: the camera did not take its bits; the
// mode is stored all the same.
Status setMirrorMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode);

// Any mode is stored. 0xE0000008, and nothing changes, while a recording exists.
Status storeRotationMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode);

// The same. Then the geometry is read again and what follows from the size of the image is made
// anew.
Status setRotationMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode);

}  // namespace tavra
