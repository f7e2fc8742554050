#include "capture/snapshot.h"

#include <cstring>
#include <mutex>

#include "camera/common_param.h"
#include "camera/geometry.h"
#include "capture/transfer.h"

namespace tavra {
namespace {

Status activate(SnapshotRequest& request, const SnapshotOrder& order, std::uint32_t frameSize, bool running) {
    const std::lock_guard lock(request.mutex);
    request.done.reset();
    request.result = 0;
    request.bytesWritten = 0;
    request.destination = static_cast<std::uint8_t*>(order.buffer);
    request.size = order.size;
    request.frameNumbers = order.frameNumbers;
    request.framesLeft = frameSize == 0 ? 0 : order.size / frameSize;
    if (request.framesLeft == 0) return Status(error::kInvalidArgument);
    request.streamExpected = running;
    request.active = true;
    return Status();
}

void deactivate(SnapshotRequest& request) {
    const std::lock_guard lock(request.mutex);
    request.active = false;
}

// True: all frames came. False: the time ran out, or the stream ended.
bool waitForFrames(const TAVRA_COMMON_PARAM& camera, const SnapshotRequest& request,
                   std::uint32_t timeoutMs) {
    const platform::Event* const either[] = {&request.done, &camera.captureThread.ended()};
    return platform::waitAny(either, timeoutMs == 0 ? platform::kWaitForever : timeoutMs) == 0;
}

Status conclude(SnapshotRequest& request, bool done, std::uint32_t& bytesWritten) {
    const std::lock_guard lock(request.mutex);
    request.active = false;
    if (!done) return Status(error::kTimeout);
    if (request.result != 0) return Status(request.result);
    bytesWritten = request.bytesWritten;
    return Status();
}

Status takeSnapshot(TAVRA_COMMON_PARAM& camera, SnapshotRequest& request, std::uint32_t frameSize,
                    const SnapshotOrder& order, std::uint32_t& bytesWritten) {
    const bool running = camera.transferRunning();
    TAVRA_RETURN_IF_ERROR(activate(request, order, frameSize, running));
    if (!running) {
        const Status started = startTransfer(camera, false, &request);
        if (!started.ok()) {
            deactivate(request);
            return started;
        }
    }
    const bool done = waitForFrames(camera, request, order.timeoutMs);
    const Status result = conclude(request, done, bytesWritten);
    if (!running) TAVRA_RETURN_IF_ERROR(stopTransfer(camera));
    return result;
}

}  // namespace

Status takeRawSnapshot(TAVRA_COMMON_PARAM& camera, const SnapshotOrder& order, std::uint32_t& bytesWritten) {
    return takeSnapshot(camera, camera.rawSnapshot, camera.geometry->rawDataSize, order, bytesWritten);
}

Status takePreviewSnapshot(TAVRA_COMMON_PARAM& camera, const SnapshotOrder& order,
                           std::uint32_t& bytesWritten) {
    return takeSnapshot(camera, camera.previewSnapshot, previewSize(camera).total, order, bytesWritten);
}

bool serveSnapshot(SnapshotRequest& request, const std::uint8_t* data, std::uint32_t size,
                   std::uint32_t frameNumber) {
    const std::lock_guard lock(request.mutex);
    if (!request.active) return true;
    if (request.framesLeft == 0) return false;
    if (size > request.size - request.bytesWritten) {
        // The geometry changed between the order and the start of the stream: the frames are not those that
        // the buffer was measured for.
        request.result = error::kInvalidArgument;
        request.framesLeft = 0;
    } else {
        std::memcpy(request.destination, data, size);
        request.destination += size;
        if (request.frameNumbers != nullptr) *request.frameNumbers++ = frameNumber;
        request.bytesWritten += size;
        --request.framesLeft;
    }
    if (request.framesLeft == 0) {
        request.active = false;
        request.done.set();
    }
    return true;
}

void abandonSnapshot(SnapshotRequest& request) {
    const std::lock_guard lock(request.mutex);
    if (!request.active || !request.streamExpected) return;
    request.active = false;
    request.result = error::kTimeout;
    request.done.set();
}

void expectStream(SnapshotRequest& request) {
    const std::lock_guard lock(request.mutex);
    request.streamExpected = true;
}

}  // namespace tavra
