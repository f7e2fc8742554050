// The recorder as its users know it: the camera handle, which records what the capture thread hands in, and
// the movie converter.
//
// Made by CreateStageObject, with code 144. Calls come one at a time: the camera handle holds its operation
// mutex around them, the converter has a thread of its own. Whoever holds the last reference waits in Release
// until the file is closed.
#pragma once

#include <cstdint>

#include "stages/unknown.h"
#include "tavra/tavra_types.h"

namespace tavra::movie {

// What a recording does with a frame.
namespace recorder_status {
inline constexpr std::uint8_t kIdle = 0;  // no recording, or its writer has ended
inline constexpr std::uint8_t kRecording = 1;
inline constexpr std::uint8_t kPaused = 2;  // frames are counted, not stored
}  // namespace recorder_status

// Each operation gives 0 or an error number: 12 where a recording that is active forbids it, 6 where the file
// format is not yet chosen.
class ISaveAVIFile : public ISUnknown {
  public:
    // Chooses the writer (movie_writer.h); the one before it goes, with its files. compressor: FOURCC, 0 for
    // none. 87: there is no such writer; 8: no memory.
    virtual std::uint32_t SetFileFormat(std::uint16_t format, std::uint32_t compressor) = 0;
    // Movies are 2^shift times smaller than the frames, by leaving out. Not while active.
    virtual std::uint32_t SetFrameSizeShift(std::uint8_t shift) = 0;
    // Frames after which a file is complete; 0 counts as 1. Not while active.
    virtual std::uint32_t SetFramesPerFile(std::uint32_t frames) = 0;
    virtual std::uint32_t GetFramesPerFile(std::uint32_t* frames) = 0;
    // Without effect. Not while active.
    virtual std::uint32_t SetReserved(std::uint32_t value) = 0;
    // 0 to 100, above it 100. Not while active.
    virtual std::uint32_t SetQuality(std::uint32_t quality) = 0;
    // Frames a second are rate / scale. Not while active.
    virtual std::uint32_t SetRate(std::uint32_t rate) = 0;
    virtual std::uint32_t SetScale(std::uint32_t scale) = 0;
    // Frames that may wait for the writer, from the next Start on.
    virtual std::uint32_t SetBufferCount(std::uint32_t count) = 0;
    virtual std::uint32_t GetBufferCount(std::uint32_t* count) = 0;
    // The images that WriteFrame gets, by preview pixel format 1, 4 or 8 (87: another). stride: bytes from
    // row to row, 0 for rows padded to four bytes (of a raw movie: dense); the last row has its padding, too.
    // Not while active, as the buffers have their size.
    virtual std::uint32_t SetImageFormat(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                         std::uint32_t previewFormat) = 0;
    // Opens a file and puts it behind those to be filled; also while active. 0xE0000009: it cannot be opened;
    // others of a codec (platform/codec_movie.h). 87: no name.
    virtual std::uint32_t AddFile(const char16_t* name) = 0;
    // Makes the buffers and starts the writer. 8: not even one buffer, or nothing to wait with; it may be
    // started again then, with the files that it has.
    virtual std::uint32_t Start() = 0;
    // Copies an image and hands it to the writer; waits for a free buffer without limit. frameNumber: as the
    // camera counts, so that lost frames leave a gap. tag: colour array of a raw frame. ended: set to 1 when
    // the writer has ended, the image was not taken then; else 0.
    virtual std::uint32_t WriteFrame(const std::uint8_t* image, std::uint32_t frameNumber, std::uint32_t tag,
                                     std::uint32_t* ended) = 0;
    virtual std::uint32_t GetStatus(std::uint8_t* status) = 0;
    // kIdle stops the writer and waits for it; the result is the writer's. kPaused is taken from kIdle only,
    // kRecording never (12).
    virtual std::uint32_t SetStatus(std::uint8_t status) = 0;
    // Of the last frame: its number less the first's, less those that were paused.
    virtual std::uint32_t GetPosition(std::uint32_t* position) = 0;
    // Receiver of messages 45064 and 45065; null for none. Both carry the parameter first.
    virtual std::uint32_t SetNotifyWindow(TavraWindow window) = 0;
    virtual std::uint32_t SetNotifyParam(std::uint64_t parameter) = 0;
    // The header of an SMF file, 376 bytes (smf_header.h). Other writers have none: 1, and nothing is done.
    virtual std::uint32_t GetMovieHeader(std::uint8_t* block) = 0;
    virtual std::uint32_t SetMovieHeader(const std::uint8_t* block) = 0;
    // SetImageFormat by the code of a pixel format: 0x01080001, 0x01080008 to 0x0108000B, 0x02180014,
    // 0x02180015, 0x02200016 or 0x02200017. 87: another, rows that overlap, a movie without pixels; 8: frames
    // that no memory holds.
    virtual std::uint32_t SetImageFormatEx(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                           std::uint32_t formatCode) = 0;
    // Bytes of a file of so many frames of so many bytes.
    virtual std::uint32_t GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames,
                                              std::uint64_t* size) = 0;

  protected:
    ~ISaveAVIFile() = default;
};

}  // namespace tavra::movie
