// Who wants frames. Any thread.
#pragma once

#include "camera/common_param.h"

namespace tavra {

inline bool isActive(SnapshotRequest& request) {
    const std::lock_guard lock(request.mutex);
    return request.active;
}

inline bool rawWanted(TAVRA_COMMON_PARAM& camera) {
    return camera.transferWanted || !camera.rawCallbacks.empty() || isActive(camera.rawSnapshot);
}

inline bool previewWanted(TAVRA_COMMON_PARAM& camera) {
    return camera.recording.exists() || isActive(camera.previewSnapshot) ||
           !camera.previewBitmapCallbacks.empty() || !camera.previewGdiCallbacks.empty() ||
           camera.preview.alive();
}

}  // namespace tavra
