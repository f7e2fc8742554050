// The indices of an AVI 2.0 file, in memory as they stand in the file. A writer owns them and makes them
// once; its thread fills them.
//
//     super index       "indx", in the headers: where each segment's standard index is
//     standard index    "ix00", at the end of each segment: where its frames are
//     old index         "idx1", behind the first segment, for players that know AVI 1.0 alone
#pragma once

#include <cstdint>
#include <span>

#include "base/status.h"
#include "platform/page_memory.h"

namespace tavra::movie {

// Everything past the headers is written in multiples of this, at multiples of this.
inline constexpr std::uint32_t kAviSector = 2048;

// Bytes of a JUNK chunk that fills a sector from `end` on; 0 where nothing is to be filled. A rest that is
// too short for a chunk's header takes another sector.
std::uint32_t junkBytesBehind(std::uint64_t end);

// Puts a chunk of so many bytes in all there, its content zero. 0: nothing.
void putJunk(std::uint8_t* at, std::uint32_t bytes);

class AviStandardIndex {
  public:
    static constexpr std::uint32_t kMostEntries = 4028;
    static constexpr std::uint32_t kSkipped = 0x80000000;  // the size of a frame that is not there

    struct Entry {
        std::uint32_t offset;  // of the data, from the base
        std::uint32_t size;    // with the top bit for one that is no key frame
    };

    Status allocate();  // 8: out of memory

    // Empty, for a segment whose offsets count from `base`.
    void begin(std::uint64_t base);
    void add(Entry entry);
    std::uint32_t count() const { return count_; }
    std::uint64_t base() const { return base_; }
    Entry entry(std::uint32_t i) const;

    std::uint32_t chunkBytes() const;
    // The whole chunk and the JUNK behind it. Stays in place: it can be written from here.
    std::span<const std::uint8_t> finish(std::uint32_t chunkId);

  private:
    platform::PageBlock block_;
    std::uint64_t base_ = 0;
    std::uint32_t count_ = 0;
};

// Bytes of the old index of a first segment with frames up to this one.
std::uint64_t oldIndexBytes(std::uint64_t lastFrame);

// The old index in a block of oldIndexBytes(); all of them are written.
void putOldIndex(std::span<std::uint8_t> block, const AviStandardIndex& index, std::uint32_t chunkId);

// On memory that belongs to somebody else: the chunk's bytes in the head of the file.
class AviSuperIndex {
  public:
    static constexpr std::uint32_t kMostEntries = 65536;
    static constexpr std::uint32_t kBytes = 0x100020;

    AviSuperIndex() = default;
    AviSuperIndex(std::uint8_t* chunk, std::uint32_t chunkId);  // the memory is zero

    void add(std::uint64_t offset, std::uint32_t bytes, std::uint32_t frames);  // of a standard index
    void clear();
    std::uint32_t count() const { return count_; }

  private:
    std::uint8_t* chunk_ = nullptr;
    std::uint32_t count_ = 0;
};

}  // namespace tavra::movie
