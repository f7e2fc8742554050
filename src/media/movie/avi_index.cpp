#include "media/movie/avi_index.h"

#include <cstring>

#include "media/movie/riff.h"

namespace tavra::movie {
namespace {

// Both new indices open with 32 bytes: the chunk's header, longs an entry, sub type, type, entries in use,
// the frames' code, and what is the index's own.
constexpr std::uint32_t kHeadBytes = 32;
constexpr std::uint32_t kStandardEntryBytes = 8;
constexpr std::uint32_t kSuperEntryBytes = 16;
constexpr std::uint32_t kOldEntryBytes = 16;

constexpr std::uint32_t kEntriesInUseAt = 12;
constexpr std::uint32_t kTypeOfIndices = 0;
constexpr std::uint32_t kTypeOfChunks = 1;

constexpr std::uint32_t kStandardBlockBytes = 16 * kAviSector;
static_assert(kHeadBytes + AviStandardIndex::kMostEntries * kStandardEntryBytes < kStandardBlockBytes);
static_assert(kHeadBytes + AviSuperIndex::kMostEntries * kSuperEntryBytes == AviSuperIndex::kBytes);

// An entry of the old index that stands for nothing.
constexpr std::uint32_t kNoFrame = fourcc("7Fxx");
constexpr std::uint32_t kKeyFrame = 16;

void putIndexHead(std::uint8_t* at, std::uint32_t code, std::uint32_t bytes, std::uint32_t type,
                  std::uint32_t longsPerEntry, std::uint32_t chunkId) {
    putChunkHeader(at, code, bytes - kChunkHeaderBytes);
    storeLe32(at + 8, longsPerEntry | type << 24);
    storeLe32(at + 16, chunkId);
}

void putOldEntry(std::uint8_t* at, std::uint32_t code, std::uint32_t flags, std::uint64_t offset,
                 std::uint32_t size) {
    storeLe32(at, code);
    storeLe32(at + 4, flags);
    storeLe32(at + 8, static_cast<std::uint32_t>(offset));
    storeLe32(at + 12, size);
}

}  // namespace

std::uint32_t junkBytesBehind(std::uint64_t end) {
    const auto used = static_cast<std::uint32_t>(end % kAviSector);
    if (used == 0) return 0;
    const std::uint32_t rest = kAviSector - used;
    return rest < kChunkHeaderBytes ? rest + kAviSector : rest;
}

void putJunk(std::uint8_t* at, std::uint32_t bytes) {
    if (bytes == 0) return;
    putChunkHeader(at, kJunk, bytes - kChunkHeaderBytes);
    std::memset(at + kChunkHeaderBytes, 0, bytes - kChunkHeaderBytes);
}

Status AviStandardIndex::allocate() {
    count_ = 0;
    return block_.allocate(kStandardBlockBytes);
}

void AviStandardIndex::begin(std::uint64_t base) {
    base_ = base;
    count_ = 0;
}

void AviStandardIndex::add(Entry entry) {
    std::uint8_t* const at = block_.data() + kHeadBytes + std::size_t{count_} * kStandardEntryBytes;
    storeLe32(at, entry.offset);
    storeLe32(at + 4, entry.size);
    ++count_;
}

AviStandardIndex::Entry AviStandardIndex::entry(std::uint32_t i) const {
    const std::uint8_t* const at = block_.data() + kHeadBytes + std::size_t{i} * kStandardEntryBytes;
    return {loadLe32(at), loadLe32(at + 4)};
}

std::uint32_t AviStandardIndex::chunkBytes() const {
    return kHeadBytes + count_ * kStandardEntryBytes;
}

std::span<const std::uint8_t> AviStandardIndex::finish(std::uint32_t chunkId) {
    std::uint8_t* const chunk = block_.data();
    putIndexHead(chunk, fourcc("ix00"), chunkBytes(), kTypeOfChunks, kStandardEntryBytes / 4, chunkId);
    storeLe32(chunk + kEntriesInUseAt, count_);
    storeLe64(chunk + 20, base_);
    storeLe32(chunk + 28, 0);
    const std::uint32_t junk = junkBytesBehind(chunkBytes());
    putJunk(chunk + chunkBytes(), junk);
    return {chunk, chunkBytes() + junk};
}

std::uint64_t oldIndexBytes(std::uint64_t lastFrame) {
    const std::uint64_t bytes = lastFrame * kOldEntryBytes + 40;
    return bytes / kAviSector * kAviSector + kAviSector;
}

void putOldIndex(std::span<std::uint8_t> block, const AviStandardIndex& index, std::uint32_t chunkId) {
    // From here the index counts to the chunks' headers.
    const std::uint64_t base = index.base() - kChunkHeaderBytes;
    std::uint8_t* at = block.data();
    std::memset(at, 0, block.size());
    putChunkHeader(at, fourcc("idx1"), static_cast<std::uint32_t>(block.size()) - kChunkHeaderBytes);
    at += kChunkHeaderBytes;
    putOldEntry(at, kNoFrame, 0, 0x8000, 0);

    // By design: offsets are positions in the file, and the first frame's entry stands for the empty chunk
    // that opens the list.
    std::uint64_t lastData = index.base();
    const std::size_t entries = block.size() / kOldEntryBytes - 2;
    for (std::uint32_t i = 0; i < entries; ++i) {
        at += kOldEntryBytes;
        if (i >= index.count()) {
            putOldEntry(at, kNoFrame, 0, 0, 0);
            continue;
        }
        const auto [offset, flaggedSize] = index.entry(i);
        const std::uint32_t size = flaggedSize & ~AviStandardIndex::kSkipped;
        if (size != 0) lastData = index.base() + offset;
        if (i == 0) {
            putOldEntry(at, kCompressedFrame, 0, base, 0);
        } else if (size != 0) {
            putOldEntry(at, chunkId, kKeyFrame, base + offset, size);
        } else {
            putOldEntry(at, kCompressedFrame, 0, lastData, 0);
        }
    }
}

AviSuperIndex::AviSuperIndex(std::uint8_t* chunk, std::uint32_t chunkId) : chunk_(chunk) {
    putIndexHead(chunk, fourcc("indx"), kBytes, kTypeOfIndices, kSuperEntryBytes / 4, chunkId);
}

void AviSuperIndex::add(std::uint64_t offset, std::uint32_t bytes, std::uint32_t frames) {
    std::uint8_t* const at = chunk_ + kHeadBytes + std::size_t{count_} * kSuperEntryBytes;
    storeLe64(at, offset);
    storeLe32(at + 8, bytes);
    storeLe32(at + 12, frames);
    storeLe32(chunk_ + kEntriesInUseAt, ++count_);
}

void AviSuperIndex::clear() {
    std::memset(chunk_ + kHeadBytes, 0, std::size_t{count_} * kSuperEntryBytes);
    storeLe32(chunk_ + kEntriesInUseAt, count_ = 0);
}

}  // namespace tavra::movie
