#include "media/movie/avi_file_10.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "media/movie/attempt.h"
#include "media/movie/riff.h"

namespace tavra::movie {
namespace {

constexpr std::uint32_t kIndexEntryBytes = 16;
constexpr std::uint32_t kIndexFlags = 16;  // a key frame

// "LIST", its size, "movi": right ahead of the data.
constexpr std::uint32_t kListHeadBytes = 12;

// Entries that are put together to be written at once.
constexpr std::size_t kBatch = 256;

// The list of sizes has room for these from the start; more make it grow, seldom.
constexpr std::uint32_t kReservedFrames = 1 << 20;

}  // namespace

Status AviFile10::PrepareHeader() {
    header_.build(settings, codec_, AviVersion::One);
    return attempt([&] {
        sizes_.reserve(std::min(settings.framesPerFile, kReservedFrames) + 2);
        return Status();
    });
}

Status AviFile10::OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) {
    auto opened = std::make_unique<FileRecord>();
    opened->name = name;
    if (!files_.create(name, opened->file).ok()) return Status(error::kFileStream);
    record = std::move(opened);
    return {};
}

Status AviFile10::beginFile(FileRecord& record) {
    if (std::exchange(begun_, true)) return {};
    position_ = dataOffset_;
    sizes_.clear();
    frames_ = 0;
    largest_ = 0;
    return writeFirstChunk(record);
}

Status AviFile10::appendFrame(FileRecord& record, std::uint8_t* chunk, std::uint32_t size,
                              std::uint32_t padding, std::uint32_t index) {
    TAVRA_RETURN_IF_ERROR(beginFile(record));
    const std::uint64_t bytes = std::uint64_t{kChunkHeaderBytes} + size + padding;
    const std::uint32_t skipped = index > frames_ ? index - frames_ : 0;  // one that does not advance is next
    const std::uint64_t end = position_ + std::uint64_t{skipped} * kChunkHeaderBytes + bytes;
    if (closedSize(end, sizes_.size() + std::uint64_t{skipped} + 1) > GetMaxFileSize()) {
        return record.keep(Status(error::kFileTooLarge));
    }
    TAVRA_RETURN_IF_ERROR(appendEmpty(record, chunkId_, skipped));
    frames_ += skipped;
    putChunkHeader(chunk, chunkId_, size);
    TAVRA_RETURN_IF_ERROR(append(record, chunk, bytes, 1, size));
    ++frames_;
    largest_ = std::max(largest_, size);
    projectedSize_ = closedSize(position_, sizes_.size());
    return {};
}

std::uint64_t AviFile10::closedSize(std::uint64_t end, std::uint64_t chunks) {
    return end + kChunkHeaderBytes + kIndexEntryBytes * chunks;
}

bool AviFile10::IsFileFull() const {
    const std::uint64_t next = std::uint64_t{kChunkHeaderBytes} + largest_ + (largest_ & 1);
    return CAVIFile::IsFileFull() || GetMaxFileSize() < projectedSize_ + next + kIndexEntryBytes;
}

Status AviFile10::appendEmpty(FileRecord& record, std::uint32_t id, std::uint32_t count) {
    std::array<std::uint8_t, kBatch * kChunkHeaderBytes> chunks;
    for (std::size_t i = 0; i < kBatch; ++i) putChunkHeader(&chunks[i * kChunkHeaderBytes], id, 0);
    for (std::size_t left = count; left > 0;) {
        const std::size_t batch = std::min(left, kBatch);
        TAVRA_RETURN_IF_ERROR(append(record, chunks.data(), batch * kChunkHeaderBytes, batch, 0));
        left -= batch;
    }
    return {};
}

// What cannot be remembered is not in the file: the next bytes take its place.
Status AviFile10::append(FileRecord& record, const void* chunks, std::size_t bytes, std::size_t count,
                         std::uint32_t size) {
    TAVRA_RETURN_IF_ERROR(record.keep(record.file->write(position_, chunks, bytes)));
    TAVRA_RETURN_IF_ERROR(record.keep(remember(count, size)));
    position_ += bytes;
    return {};
}

Status AviFile10::remember(std::size_t count, std::uint32_t size) {
    return attempt([&] {
        sizes_.resize(sizes_.size() + count, size);
        return Status();
    });
}

// Every step is tried, also behind a failure: what is whole of the movie may still be saved. The first
// failure is kept in the record.
Status AviFile10::CloseFile(FileRecord& record) {
    (void)beginFile(record);
    begun_ = false;  // for the next file, whatever becomes of this one
    const std::uint32_t listSize = writeIndex(record);
    writeHeader(record, listSize);
    (void)record.keep(record.file->close());
    return record.firstFailure;
}

// Returns the size of the list of frames.
std::uint32_t AviFile10::writeIndex(FileRecord& record) {
    std::array<std::uint8_t, kBatch * kIndexEntryBytes> entries;
    putChunkHeader(entries.data(), fourcc("idx1"),
                   static_cast<std::uint32_t>(kIndexEntryBytes * sizes_.size()));
    std::uint64_t at = position_;
    const auto write = [&](std::size_t bytes) {
        (void)record.keep(record.file->write(at, entries.data(), bytes));
        at += bytes;
    };
    write(kChunkHeaderBytes);

    std::uint32_t offset = 4;  // from "movi" on
    for (std::size_t first = 0; first < sizes_.size(); first += kBatch) {
        const std::size_t batch = std::min(sizes_.size() - first, kBatch);
        for (std::size_t i = 0; i < batch; ++i) {
            const std::uint32_t size = sizes_[first + i];
            std::uint8_t* const entry = &entries[i * kIndexEntryBytes];
            storeLe32(entry, chunkId_);
            storeLe32(entry + 4, kIndexFlags);
            storeLe32(entry + 8, offset);
            storeLe32(entry + 12, size);
            offset += size + (size & 1) + kChunkHeaderBytes;
        }
        write(batch * kIndexEntryBytes);
    }
    return offset;
}

// The file's size and frames are known now.
void AviFile10::writeHeader(FileRecord& record, std::uint32_t listSize) {
    const std::uint64_t fileSize = closedSize(dataOffset_ - 4 + std::uint64_t{listSize}, sizes_.size());
    header_.setRiffSize(static_cast<std::uint32_t>(fileSize - 8));
    header_.setTotalFrames(totalFrames());
    header_.setLength(frames_);
    header_.setSuggestedBuffer(largest_);

    std::array<std::uint8_t, kLargestHeader> block{};
    std::memcpy(block.data(), header_.bytes().data(), header_.size());
    const std::uint32_t list = dataOffset_ - kListHeadBytes;
    putChunkHeader(&block[header_.size()], kJunk, list - header_.size() - kChunkHeaderBytes);
    putChunkHeader(&block[list], kList, listSize);
    storeLe32(&block[list + kChunkHeaderBytes], fourcc("movi"));
    (void)record.keep(record.file->write(0, block.data(), dataOffset_));
}

}  // namespace tavra::movie
