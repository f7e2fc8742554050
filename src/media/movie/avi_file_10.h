// What both AVI 1.0 layouts share: a header of fixed length, one list of frames, and the index behind it.
//
//     | RIFF, header, JUNK, LIST movi | chunk | chunk | ... | idx1 |
//     0                               data offset
//
// The writer's thread makes all but OpenFile. A frame that was skipped is an empty chunk.
#pragma once

#include <cstdint>
#include <vector>

#include "media/movie/avi_file.h"
#include "media/movie/avi_header.h"

namespace tavra::movie {

class AviFile10 : public CAVIFile {
  public:
    Status PrepareHeader() override;
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) final;
    Status CloseFile(FileRecord& record) final;
    // Also where another frame as large as the largest would not go in: a stream may take more than its
    // image.
    bool IsFileFull() const final;

  protected:
    static constexpr std::uint32_t kLargestHeader = 4096;

    AviFile10(MovieFiles& files, AviCodec codec, std::uint32_t chunkId, std::uint32_t dataOffset)
        : CAVIFile(files), codec_(codec), chunkId_(chunkId), dataOffset_(dataOffset) {}

    // Bytes of a file whose chunks end there, so many of them, with its index.
    static std::uint64_t closedSize(std::uint64_t end, std::uint64_t chunks);

    // The chunk ahead of the first frame, where the layout has one.
    virtual Status writeFirstChunk(FileRecord&) { return {}; }
    // What the main header tells of the file's frames.
    virtual std::uint32_t totalFrames() const { return frames_; }

    // Writes the frame behind those that were skipped. `chunk` has 8 bytes of room for its header, then
    // `size` bytes of frame and, if asked for, of padding. 223, and nothing written: the file would pass its
    // limit.
    Status appendFrame(FileRecord& record, std::uint8_t* chunk, std::uint32_t size, std::uint32_t padding,
                       std::uint32_t index);
    // So many empty chunks.
    Status appendEmpty(FileRecord& record, std::uint32_t id, std::uint32_t count);

  private:
    Status beginFile(FileRecord& record);
    // So many chunks with so many bytes of data each.
    Status append(FileRecord& record, const void* chunks, std::size_t bytes, std::size_t count,
                  std::uint32_t size);
    Status remember(std::size_t count, std::uint32_t size);
    std::uint32_t writeIndex(FileRecord& record);
    void writeHeader(FileRecord& record, std::uint32_t listSize);

    const AviCodec codec_;
    const std::uint32_t chunkId_;
    const std::uint32_t dataOffset_;
    AviHeader header_;

    // Of the present file.
    bool begun_ = false;
    std::vector<std::uint32_t> sizes_;  // of each chunk, in order
    std::uint32_t frames_ = 0;          // the last index + 1
    std::uint32_t largest_ = 0;
};

}  // namespace tavra::movie
