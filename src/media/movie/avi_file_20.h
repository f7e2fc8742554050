// What both AVI 2.0 layouts share: segments of at most 1 GiB, each with an index of its own, so that a movie
// is as long as the disk is large; written past the system's cache in whole sectors.
//
//     | headers, super index, JUNK | LIST movi: frames, index | idx1 | RIFF AVIX: frames, index | RIFF AVIX
//     ... 0                            data offset - 20
//
// Each chunk is filled up to a sector with JUNK in the spare room of its own buffer, so that a frame is one
// write. Headers of file and segments are written at the end, through a second, ordinary handle.
//
// The writer's thread makes all but OpenFile and PrepareHeader. At most one write is in flight.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "media/movie/avi_file.h"
#include "media/movie/avi_header.h"
#include "media/movie/avi_index.h"
#include "platform/page_memory.h"

namespace tavra::movie {

// When a segment is closed, and when a file is full. Tests lower them.
struct AviLimits {
    std::uint64_t segmentBytes = 0x40000000;
    std::uint32_t segmentEntries = AviStandardIndex::kMostEntries;
    std::uint32_t segments = AviSuperIndex::kMostEntries;
};

class CAVIFile20 : public CAVIFile {
  public:
    static constexpr std::uint32_t kDataOffset = 0x101000;
    // Of a frame's chunk, with all that fills it up: one write, and no more than a segment.
    static constexpr std::uint32_t kLargestChunk = 0x40000000;

    // By design: counts segments by size alone, though a segment of small frames ends by its entries.
    std::uint64_t GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames) const override;
    std::uint64_t GetMaxFileSize() const override { return sizeLimit_; }
    Status PrepareHeader() override;  // 223: the frames are larger than the largest chunk
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) final;
    Status CloseFile(FileRecord& record) final;
    bool IsFileFull() const override;

  protected:
    CAVIFile20(MovieFiles& files, AviCodec codec, std::uint32_t chunkId, AviLimits limits)
        : CAVIFile(files, kLargeSizeLimit), codec_(codec), chunkId_(chunkId), limits_(limits) {}

    // Waits for the write in flight, if there is one.
    static Status waitForWrite(FileRecord& record);

    // `chunk` starts a page: 8 bytes of room, `size` bytes of frame, and the spare room of a frame buffer. It
    // is the caller's again when this returns. The whole chunk is at most kLargestChunk. 223, and nothing
    // written: frames were skipped, and their indices would pass the file's limit.
    Status WriteChunk(FileRecord& record, std::uint8_t* chunk, std::uint32_t size, std::uint32_t index);

  private:
    struct Segment {
        std::uint64_t offset;  // of its head in the file
        std::uint32_t size;    // of its list of frames, less 8
    };

    void beginFile();
    Status openSegment(FileRecord& record);
    Status appendSkipped(FileRecord& record, std::uint32_t index, std::uint32_t frameSize);
    std::uint64_t sizeBehindJump(std::uint64_t skipped, std::uint64_t chunk) const;
    Status openAgain(const std::u16string& name, std::unique_ptr<MovieFile>& file);
    std::uint32_t completeChunk(std::uint8_t* chunk, std::uint32_t size) const;
    void project();
    Status CloseSegment(FileRecord& record);
    Status writeIndices(FileRecord& record);
    Status WriteIdx1(FileRecord& record);
    bool isAnother(const std::u16string& name);
    void PatchHeaders(FileRecord& record);
    void putHead();
    static Status startWrite(FileRecord& record, std::uint64_t position, std::span<const std::uint8_t> bytes);

    bool isFirstSegment() const { return segments_.empty(); }

    const AviCodec codec_;
    const std::uint32_t chunkId_;
    const AviLimits limits_;

    // Made before the start, once.
    AviHeader header_;
    platform::PageBlock head_;      // the file up to its data
    platform::PageBlock oldIndex_;  // of the first segment
    platform::PageBlock scratch_;   // the sector that opens a segment
    AviStandardIndex index_;        // of the present segment
    AviSuperIndex superIndex_;      // in the head

    // Of the present file.
    bool begun_ = false;
    bool segmentOpen_ = false;
    std::vector<Segment> segments_;  // those that are closed
    std::uint32_t frames_ = 0;       // the last index + 1
    std::uint32_t largest_ = 0;
};

}  // namespace tavra::movie
