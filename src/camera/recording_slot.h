// The place of a recording in the record behind a camera handle: the recorder while there is one, and the
// settings of the next.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "platform/bitmap.h"

namespace tavra {

namespace movie {
class ISaveAVIFile;
}

// A member of the record. Where both mutexes are held, the operation mutex is taken first; who also holds the
// camera's transfer mutex has taken it before these.
struct RecordingSlot {
    // Held during every call of the recorder, and by whoever changes the pointer; its holder reads the
    // pointer without the other mutex. A frame may hold it for as long as the writer lags.
    std::mutex operationMutex;
    // For a quick look at the pointer without waiting for a frame: held while it changes, and nothing is
    // waited for under it.
    std::mutex pointerMutex;
    movie::ISaveAVIFile* recorder = nullptr;

    bool exists() {
        const std::lock_guard lock(pointerMutex);
        return recorder != nullptr;
    }
    void put(movie::ISaveAVIFile* object) {
        const std::lock_guard lock(pointerMutex);
        recorder = object;
    }

    // Under the operation mutex.
    platform::BitmapShape shape;  // of the preview images when the recording was set up
    bool startedStream = false;   // the stream is there for the recording and ends with it
    bool streamClosed = false;    // the stream is on its way out and takes no recorder any more

    std::atomic<std::uint16_t> format{0};  // of the present recording or the last (movie_format)

    // Settings of the next recording.
    std::atomic<std::uint8_t> frameSize{0};  // shift of width and height: 0, 1 or 2
    std::atomic<std::uint32_t> quality{75};  // 0 to 100
    std::uint32_t bufferCount = 10;
    std::atomic<std::uint32_t> priorityFormat{0};  // 1: AVI 2.0 where there is the choice
};

}  // namespace tavra
