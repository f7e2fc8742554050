// Snapshots: a caller waits until a number of frames has been copied into its buffer.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "capture/snapshot_request.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

struct SnapshotOrder {
    void* buffer = nullptr;
    std::uint32_t size = 0;                 // bytes; takes as many whole frames as fit
    std::uint32_t* frameNumbers = nullptr;  // of as many frames; may be null
    std::uint32_t timeoutMs = 0;            // 0: without limit
};

// Waits for frames as they came, or for finished preview images. A stream that does not run is started for it
// and ended behind it. The buffer is not touched any more after the return, whatever the result. 87: not even
// one frame fits; 258: the time ran out, or the stream ended first; else why no stream could be started.
// Application threads, one of each kind at a time, not in a callback.
Status takeRawSnapshot(TAVRA_COMMON_PARAM& camera, const SnapshotOrder& order, std::uint32_t& bytesWritten);
Status takePreviewSnapshot(TAVRA_COMMON_PARAM& camera, const SnapshotOrder& order,
                           std::uint32_t& bytesWritten);

// The capture thread's side: gives a frame to the request if it is active. False: it is, and has had all its
// frames.
bool serveSnapshot(SnapshotRequest& request, const std::uint8_t* data, std::uint32_t size,
                   std::uint32_t frameNumber);

// The stream has ended: so does the wait of a request that expected frames of it, with 258, also if another
// stream follows before the waiting thread gets to look. A request that has yet to start its own is left
// alone.
void abandonSnapshot(SnapshotRequest& request);
void expectStream(SnapshotRequest& request);

}  // namespace tavra
