#include "media/movie/avi_file_20.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "media/movie/attempt.h"
#include "media/movie/riff.h"

namespace tavra::movie {
namespace {

// "LIST", size, "movi", and the empty chunk that opens each list.
constexpr std::uint32_t kFirstHeadBytes = 20;
// "RIFF", size, "AVIX" in front of it.
constexpr std::uint32_t kNextHeadBytes = 32;

constexpr std::uint64_t roundUp(std::uint64_t bytes) {
    return (bytes + kAviSector - 1) / kAviSector * kAviSector;
}

// A frame's chunk in the file: its header, its pad byte, and JUNK up to a sector.
std::uint64_t chunkBytes(std::uint64_t frameSize) {
    const std::uint64_t end = kChunkHeaderBytes + frameSize + frameSize % 2;
    return end + junkBytesBehind(end);
}

void putFirstHead(std::uint8_t* at, std::uint32_t segmentSize) {
    putChunkHeader(at, kList, segmentSize + 8);
    storeLe32(at + 8, fourcc("movi"));
    putChunkHeader(at + 12, kCompressedFrame, 0);
}

void putNextHead(std::uint8_t* at, std::uint32_t segmentSize) {
    putChunkHeader(at, fourcc("RIFF"), segmentSize + 20);
    storeLe32(at + 8, fourcc("AVIX"));
    putFirstHead(at + 12, segmentSize);
}

}  // namespace

std::uint64_t CAVIFile20::GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames) const {
    constexpr std::uint64_t kHead = 0x100FF4;
    constexpr std::uint64_t kSegmentBytes = 0x40000000;
    if (frames == 0) return kHead;
    const std::uint64_t chunk = roundUp(std::uint64_t{frameBytes} + kChunkHeaderBytes);
    // With a frame come its entries, and at most a segment of its own with head and index.
    constexpr std::uint64_t kMostBesides = std::uint64_t{4} * kAviSector;
    if (frames > (kBeyondAllSizes - 2 * kHead) / (chunk + kMostBesides)) return kBeyondAllSizes;
    const std::uint64_t perSegment = std::max<std::uint64_t>(kSegmentBytes / chunk, 1);
    const auto content = [chunk](std::uint64_t count) { return count * chunk + roundUp(count * 8 + 24); };

    const std::uint64_t first = std::min<std::uint64_t>(frames, perSegment);
    std::uint64_t size = kHead + 12 + roundUp((first + 1) * 16) + content(first);
    // The sizes so far are whole sectors: a head of 12 + 12 bytes takes one.
    const std::uint64_t others = frames - first;
    size += others / perSegment * (kAviSector + content(perSegment));
    if (others % perSegment != 0) size += kAviSector + content(others % perSegment);
    return size;
}

Status CAVIFile20::PrepareHeader() {
    if (codec_ == AviCodec::Uncompressed && chunkBytes(settings.imageBytes) > kLargestChunk) {
        return Status(error::kFileTooLarge);
    }
    header_.build(settings, codec_, AviVersion::Two);
    TAVRA_RETURN_IF_ERROR(head_.allocate(kDataOffset));
    TAVRA_RETURN_IF_ERROR(oldIndex_.allocate(oldIndexBytes(AviStandardIndex::kMostEntries - 1)));
    TAVRA_RETURN_IF_ERROR(scratch_.allocate(kAviSector));
    TAVRA_RETURN_IF_ERROR(index_.allocate());
    superIndex_ = AviSuperIndex(head_.data() + header_.size(), chunkId_);
    return attempt([&] {
        segments_.reserve(limits_.segments);
        return Status();
    });
}

Status CAVIFile20::OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) {
    auto opened = std::make_unique<FileRecord>();
    opened->name = files_.lastingName(name);  // it is opened again
    if (!files_.createUnbuffered(name, opened->unbuffered).ok()) return Status(error::kFileStream);
    // By design: behind the making of the file, which is empty now and gives no room back.
    limitSizeByVolume(name);
    record = std::move(opened);
    return {};
}

bool CAVIFile20::IsFileFull() const {
    if (segments_.size() >= limits_.segments || CAVIFile::IsFileFull()) return true;
    // The frame's JUNK, the head of another segment, its index, and the sectors by which indices grow:
    // without room for them the disk would be full before the file is.
    constexpr std::uint64_t kMostBesides = std::uint64_t{6} * kAviSector;
    // A stream may take more than its image.
    const std::uint64_t frame = std::max(settings.imageBytes, largest_);
    return GetMaxFileSize() < projectedSize_ + frame + kMostBesides;
}

Status CAVIFile20::waitForWrite(FileRecord& record) {
    return record.keep(record.unbuffered->wait());
}

Status CAVIFile20::startWrite(FileRecord& record, std::uint64_t position,
                              std::span<const std::uint8_t> bytes) {
    return record.keep(record.unbuffered->startWrite(position, bytes.data(), bytes.size()));
}

void CAVIFile20::beginFile() {
    if (std::exchange(begun_, true)) return;
    position_ = kDataOffset;
    segments_.clear();
    superIndex_.clear();
    index_.begin(position_);
    segmentOpen_ = true;
    frames_ = 0;
    largest_ = 0;
}

Status CAVIFile20::WriteChunk(FileRecord& record, std::uint8_t* chunk, std::uint32_t size,
                              std::uint32_t index) {
    beginFile();
    TAVRA_RETURN_IF_ERROR(appendSkipped(record, index, size));
    TAVRA_RETURN_IF_ERROR(openSegment(record));
    const std::uint32_t bytes = completeChunk(chunk, size);
    TAVRA_RETURN_IF_ERROR(startWrite(record, position_, {chunk, bytes}));
    // The capture thread fills the frame's buffer anew as soon as it has it back.
    TAVRA_RETURN_IF_ERROR(waitForWrite(record));

    largest_ = std::max(largest_, size);
    ++frames_;
    index_.add({static_cast<std::uint32_t>(position_ - index_.base()) + kChunkHeaderBytes, size});
    position_ += bytes;
    project();
    if (position_ - index_.base() + bytes <= limits_.segmentBytes &&
        index_.count() < limits_.segmentEntries) {
        return {};
    }
    return CloseSegment(record);
}

// Header, pad byte and JUNK around the frame. Returns the bytes of all, whole sectors: chunkBytes().
std::uint32_t CAVIFile20::completeChunk(std::uint8_t* chunk, std::uint32_t size) const {
    putChunkHeader(chunk, chunkId_, size);
    std::uint32_t end = kChunkHeaderBytes + size;
    if (size % 2 != 0) chunk[end++] = kPadByte;
    const std::uint32_t junk = junkBytesBehind(end);
    putJunk(chunk + end, junk);
    return end + junk;
}

// The size if the file were closed behind the frame that was just written.
void CAVIFile20::project() {
    projectedSize_ = position_ + roundUp(std::uint64_t{index_.count()} * 8 + 24);
    if (isFirstSegment()) projectedSize_ += oldIndexBytes(frames_ - 1);
}

// Segments past the first: leaves room for the head, and fills up to where the first chunk goes.
Status CAVIFile20::openSegment(FileRecord& record) {
    if (segmentOpen_) return {};
    if (segments_.size() >= limits_.segments) return record.keep(Status(error::kFileTooLarge));
    TAVRA_RETURN_IF_ERROR(waitForWrite(record));
    const std::uint64_t base = position_ + kNextHeadBytes;
    const std::uint32_t junk = junkBytesBehind(base);
    std::memset(scratch_.data(), 0, kNextHeadBytes);
    putJunk(scratch_.data() + kNextHeadBytes, junk);
    TAVRA_RETURN_IF_ERROR(startWrite(record, position_, {scratch_.data(), kNextHeadBytes + junk}));
    index_.begin(base);
    position_ = base + junk;
    segmentOpen_ = true;
    return {};
}

// Entries for the frames that are missing before this one.
Status CAVIFile20::appendSkipped(FileRecord& record, std::uint32_t index, std::uint32_t frameSize) {
    if (index <= frames_) return {};  // one that does not advance counts as the next
    std::uint64_t skipped = index - frames_;
    const std::uint64_t room = (limits_.segments - segments_.size()) * limits_.segmentEntries;
    if (skipped >= room || sizeBehindJump(skipped, chunkBytes(frameSize)) > GetMaxFileSize()) {
        return record.keep(Status(error::kFileTooLarge));
    }

    if (segmentOpen_ && index_.count() + skipped + 1 > limits_.segmentEntries) {
        TAVRA_RETURN_IF_ERROR(CloseSegment(record));
    }
    for (; skipped > 0; --skipped) {
        TAVRA_RETURN_IF_ERROR(openSegment(record));
        index_.add({0, AviStandardIndex::kSkipped});
        ++frames_;
        if (index_.count() == limits_.segmentEntries) TAVRA_RETURN_IF_ERROR(CloseSegment(record));
    }
    return {};
}

// The size if so many frames were skipped, a frame written, and the file closed: as the loop above goes.
std::uint64_t CAVIFile20::sizeBehindJump(std::uint64_t skipped, std::uint64_t chunk) const {
    const auto indexBytes = [](std::uint64_t entries) { return roundUp(entries * 8 + 32); };
    const std::uint64_t entries = index_.count();
    const std::uint64_t most = limits_.segmentEntries;
    std::uint64_t size = position_ + chunk;
    if (segmentOpen_ && entries + skipped + 1 <= most) {
        size += indexBytes(entries + skipped + 1);
        return isFirstSegment() ? size + oldIndexBytes(frames_ + skipped) : size;
    }
    if (segmentOpen_ && entries > 0) {
        size += indexBytes(entries);
        if (isFirstSegment()) size += oldIndexBytes(frames_ - 1);
    }
    size += skipped / most * (kAviSector + indexBytes(most));  // segments without a frame
    return size + kAviSector + indexBytes(skipped % most + 1);
}

// Also behind a failure, so that the headers tell of all that there is.
Status CAVIFile20::CloseSegment(FileRecord& record) {
    if (!std::exchange(segmentOpen_, false)) return {};
    const bool first = isFirstSegment();
    if (index_.count() == 0 && !first) return {};  // nothing came of it

    const std::uint64_t base = index_.base();
    Status written;
    if (index_.count() > 0) written = writeIndices(record);
    const auto listEnd = position_;
    if (first) {
        if (written.ok() && index_.count() > 0) written = WriteIdx1(record);
        header_.setRiffSize(static_cast<std::uint32_t>(position_ - 8));
        header_.setTotalFrames(frames_);
    }
    segments_.push_back(
        {base - (first ? kFirstHeadBytes : kNextHeadBytes), static_cast<std::uint32_t>(listEnd - base) + 4});
    return written;
}

// The segment's own index behind its frames, and its place in the super index.
Status CAVIFile20::writeIndices(FileRecord& record) {
    superIndex_.add(position_, index_.chunkBytes(), index_.count());
    const std::span<const std::uint8_t> block = index_.finish(chunkId_);
    const Status written = startWrite(record, position_, block);
    position_ += block.size();
    return written;
}

Status CAVIFile20::WriteIdx1(FileRecord& record) {
    const std::span<std::uint8_t> block(oldIndex_.data(), oldIndexBytes(frames_ - 1));
    putOldIndex(block, index_, chunkId_);
    const Status written = startWrite(record, position_, block);
    position_ += block.size();
    return written;
}

// Every step is tried, also behind a failure: what is whole of the movie may still be saved. The first
// failure is kept in the record.
Status CAVIFile20::CloseFile(FileRecord& record) {
    beginFile();
    begun_ = false;  // for the next file, whatever becomes of this one
    (void)CloseSegment(record);
    PatchHeaders(record);
    (void)record.keep(record.unbuffered->close());
    return record.firstFailure;
}

// Without memory for it, the movie is closed all the same.
Status CAVIFile20::openAgain(const std::u16string& name, std::unique_ptr<MovieFile>& file) {
    return attempt([&] { return files_.openAgain(name, file); });
}

// Whether another file has come to stand under that name meanwhile: one that is shorter than what was
// written. Behind a failure nothing is known of the length.
bool CAVIFile20::isAnother(const std::u16string& name) {
    std::uint64_t size = 0;
    return position_ > kDataOffset && attempt([&] { return files_.fileSize(name, size); }).ok() &&
           size < position_;
}

void CAVIFile20::PatchHeaders(FileRecord& record) {
    (void)waitForWrite(record);
    std::unique_ptr<MovieFile> file;
    if (record.firstFailure.ok() && isAnother(record.name)) {
        (void)record.keep(Status(error::kFileStream));
        return;
    }
    if (!record.keep(openAgain(record.name, file)).ok()) return;
    putHead();
    (void)record.keep(file->write(0, head_.data(), kDataOffset));
    for (std::size_t i = 1; i < segments_.size(); ++i) {
        std::uint8_t head[kNextHeadBytes];
        putNextHead(head, segments_[i].size);
        (void)record.keep(file->write(segments_[i].offset, head, sizeof head));
    }
    (void)record.keep(file->close());
}

// Everything up to the first frame: headers, super index (which stands there already), the list of frames
// past the first segment, JUNK, and the head of the first list.
void CAVIFile20::putHead() {
    constexpr std::uint32_t kExtendedHeaderBytes = 248;
    header_.setImageSize(largest_);
    header_.setLength(frames_);
    header_.setSuggestedBuffer(largest_ + kChunkHeaderBytes);
    std::uint8_t* const head = head_.data();
    std::memcpy(head, header_.bytes().data(), header_.size());

    std::uint8_t* const extended = head + header_.size() + AviSuperIndex::kBytes;
    putChunkHeader(extended, kList, AviHeader::kExtendedListBytes - kChunkHeaderBytes);
    storeLe32(extended + 8, fourcc("odml"));
    putChunkHeader(extended + 12, fourcc("dmlh"), kExtendedHeaderBytes);
    storeLe32(extended + 20, frames_);

    std::uint8_t* const junk = extended + AviHeader::kExtendedListBytes;
    std::uint8_t* const list = head + kDataOffset - kFirstHeadBytes;
    putChunkHeader(junk, kJunk, static_cast<std::uint32_t>(list - junk) - kChunkHeaderBytes);
    putFirstHead(list, segments_.front().size);
}

}  // namespace tavra::movie
