// Starting and ending the stream of a camera.
//
// Starts and ends of one camera follow one another, whoever asks. None of these may be called in a callback:
// they wait for the thread that runs it.
#pragma once

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;
struct SnapshotRequest;

// Makes the capture thread. A stream that runs is ended first. `wanted`: the stream goes on even if nobody
// wants its frames. `starter`: the snapshot that the stream is for, if it is for one; other snapshots end
// with the old stream. Fails with the system's error.
Status startTransfer(TAVRA_COMMON_PARAM& camera, bool wanted, SnapshotRequest* starter = nullptr);

// Asks the capture thread to end and waits for it without limit. Nothing if there is none.
Status stopTransfer(TAVRA_COMMON_PARAM& camera);

// The same for a camera that is about to be closed: also waits for snapshots on other threads, which end with
// the stream, to let go of the record.
void closeTransfer(TAVRA_COMMON_PARAM& camera);

// For a recording, whose start holds the transfer mutex.
//
// Ends the stream, if there is one, and waits for it. The caller holds nothing that a callback may wait for.
void endStream(TAVRA_COMMON_PARAM& camera);
// The same, and starts a stream that lasts as long as somebody wants its frames.
Status restartStream(TAVRA_COMMON_PARAM& camera);

}  // namespace tavra
