// Recordings of a camera: set up from its settings, fed by the capture thread, ended by either side.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "platform/bitmap.h"

namespace tavra {

class TAVRA_COMMON_PARAM;
struct RecordingSlot;

struct RecordingOrder {
    const char16_t* fileName = nullptr;  // its extension chooses the format; null: 0xE000000F
    std::uint32_t compressor = 0;        // FOURCC, 0 for none
    std::uint32_t framesPerFile = 0;
};

// Starts a recording, and the stream if none runs. Application threads, not in a callback; starts and ends of
// recordings of one camera follow one another. Codes as Tavra_SaveAVIW tells them.
Status startRecording(TAVRA_COMMON_PARAM& camera, const RecordingOrder& order);

// 0 ends the recording and waits until its file is closed; 1 and 2 do nothing to one that runs. 87: another
// value, or there is no recording. Any thread but the capture thread.
Status setRecordingStatus(TAVRA_COMMON_PARAM& camera, std::uint8_t status);

struct RecordingState {
    bool exists = false;
    std::uint8_t status = 0;
    std::uint32_t framesPerFile = 0;
    std::uint32_t position = 0;
};
RecordingState recordingState(TAVRA_COMMON_PARAM& camera);

// ---- the capture thread's side

struct RecordedFrame {
    const std::uint8_t* data = nullptr;
    std::uint32_t number = 0;
    std::uint32_t tag = 0;
    bool raw = false;             // ahead of interpolation; else a finished image
    platform::BitmapShape shape;  // of its preview image
};

// Gives the frame to the recording, if there is one for its kind; waits while the writer lags. False: the
// writer has ended, the recording is closed, and the stream that was there for it is to end.
bool recordFrame(RecordingSlot& slot, const RecordedFrame& frame);

// Ends the recording, if there is one. The operation mutex must be held.
void closeRecording(RecordingSlot& slot);

}  // namespace tavra
