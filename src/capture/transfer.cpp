#include "capture/transfer.h"

#include <mutex>

#include "camera/common_param.h"
#include "capture/capture_thread.h"
#include "capture/snapshot.h"

namespace tavra {
namespace {

// With the transfer mutex held, so that the thread waited for is not replaced by another. The capture thread
// mutex is not held meanwhile: a callback under way may ask whether the stream runs.
void endCaptureThread(TAVRA_COMMON_PARAM& camera) {
    camera.stopEvent.set();
    if (camera.transferRunning()) camera.captureThread.ended().wait(platform::kWaitForever);
    const std::lock_guard lock(camera.captureThreadMutex);
    camera.captureThread.join();
}

Status beginStream(TAVRA_COMMON_PARAM& camera, bool wanted) {
    camera.transferWanted = wanted;
    camera.stopEvent.reset();
    camera.recording.streamClosed = false;  // the thread that set it is gone
    const std::lock_guard lock(camera.captureThreadMutex);
    return camera.captureThread.start("tavra-capture", platform::ThreadPriority::Normal,
                                      [&camera] { CaptureThread(camera).run(); });
}

void waitUntilUnused(SnapshotRequest& request) {
    std::unique_lock lock(request.mutex);
    request.callsEnded.wait(lock, [&] { return request.calls == 0; });
}

}  // namespace

// Snapshots wait for the end of the capture thread. Its event alone would not do: the next start resets it,
// perhaps before they have looked.
void endStream(TAVRA_COMMON_PARAM& camera) {
    endCaptureThread(camera);
    abandonSnapshot(camera.rawSnapshot);
    abandonSnapshot(camera.previewSnapshot);
}

Status startTransfer(TAVRA_COMMON_PARAM& camera, bool wanted, SnapshotRequest* starter) {
    const std::lock_guard operation(camera.transferMutex);
    endStream(camera);
    if (starter != nullptr) expectStream(*starter);
    return beginStream(camera, wanted);
}

Status restartStream(TAVRA_COMMON_PARAM& camera) {
    endStream(camera);
    return beginStream(camera, false);
}

Status stopTransfer(TAVRA_COMMON_PARAM& camera) {
    const std::lock_guard operation(camera.transferMutex);
    endStream(camera);
    return Status();
}

void closeTransfer(TAVRA_COMMON_PARAM& camera) {
    {
        const std::lock_guard operation(camera.transferMutex);
        endStream(camera);
    }
    waitUntilUnused(camera.rawSnapshot);
    waitUntilUnused(camera.previewSnapshot);
}

}  // namespace tavra
