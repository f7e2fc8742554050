#include "camera/mirror.h"

#include "camera/common_param.h"
#include "camera/geometry.h"
#include "tavra/tavra_types.h"

namespace tavra {
namespace {

constexpr std::uint16_t kMirrorWriteAddress = 0x803F;
constexpr std::uint8_t kLibraryMirrors = TAVRA_MIRROR_HORIZONTAL | TAVRA_MIRROR_VERTICAL;

}  // namespace

std::uint8_t enabledMirrorModes(const TAVRA_COMMON_PARAM& camera) {
    std::uint8_t modes = kLibraryMirrors;
    if (camera.can(1, 6)) modes |= TAVRA_MIRROR_CAMERA_HORIZONTAL;
    if (camera.can(1, 7)) modes |= TAVRA_MIRROR_CAMERA_VERTICAL;
    return modes;
}

Status setMirrorMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode) {
    const std::uint8_t enabled = enabledMirrorModes(camera);
    if ((mode & ~enabled) != 0) return Status(error::kInvalidArgument);
    camera.mirrorMode = mode;
    if (enabled == kLibraryMirrors) return Status();
    return camera.control.writeStatusWord(kMirrorWriteAddress, mode >> 4);
}

Status storeRotationMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode) {
    if (camera.recording.exists()) return Status(error::kRecording);
    camera.rotationMode = mode;
    return Status();
}

Status setRotationMode(TAVRA_COMMON_PARAM& camera, std::uint8_t mode) {
    TAVRA_RETURN_IF_ERROR(storeRotationMode(camera, mode));
    return refreshGeometry(camera, PreviewUpdate::Yes);
}

}  // namespace tavra
