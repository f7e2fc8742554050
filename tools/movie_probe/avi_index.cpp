#include "movie_probe/avi_index.h"

#include <algorithm>

#include "base/little_endian.h"
#include "movie_probe/fourcc.h"

namespace tavra::tool {
namespace {

// Compares places in a file with what an index says of them.
class Places {
  public:
    Places(ByteSource& source, ProbeDepth depth, std::uint32_t digits)
        : reader_(source), depth_(depth), digits_(digits) {}

    // Whether a frame's chunk of this size begins here.
    bool holds(std::uint64_t at, std::uint32_t size) {
        const auto chunk = chunkAt(reader_, at, reader_.size());
        return chunk && isFrameOf(digits_, chunk->id) && chunk->size == size;
    }

    // Counts a frame that an index says is here; one of size 0 is nowhere.
    void count(AviIndex& index, std::uint64_t at, std::uint32_t size) {
        if (size == 0) {
            ++index.frames.empty;
            return;
        }
        ++index.frames.pictures;
        index.pictureBytes += size;
        index.largestPicture = std::max(index.largestPicture, size);
        const std::uint64_t end = reader_.size();
        if (at > end || end - at < std::uint64_t{size} + 8) {
            ++index.outside;
        } else if (depth_ == ProbeDepth::Frames && !holds(at, size)) {
            ++index.wrong;
        }
    }

  private:
    ByteReader reader_;
    ProbeDepth depth_;
    std::uint32_t digits_;
};

struct OldEntry {
    std::uint32_t id = 0, offset = 0, size = 0;
};

std::optional<OldEntry> oldEntry(ByteReader& reader, const Chunk& idx1, std::uint64_t number) {
    std::array<std::uint8_t, 16> bytes{};
    if (!reader.get(idx1.data() + number * bytes.size(), bytes)) return std::nullopt;
    return OldEntry{loadLe32(bytes.data()), loadLe32(bytes.data() + 8), loadLe32(bytes.data() + 12)};
}

// What the offsets of an old index count from, by its first frame.
std::uint64_t originOf(ByteReader& reader, const Chunk& idx1, std::uint64_t movi, std::uint32_t digits,
                       Places& places) {
    for (std::uint64_t i = 0; i < idx1.size / 16; ++i) {
        const auto entry = oldEntry(reader, idx1, i);
        if (!entry) break;
        if (!isFrameOf(digits, entry->id) || entry->size == 0) continue;
        if (places.holds(movi + entry->offset, entry->size)) return movi;
        return places.holds(entry->offset, entry->size) ? 0 : movi;
    }
    return movi;
}

// One block of a standard index.
class StandardBlocks {
  public:
    StandardBlocks(ByteSource& source, ProbeDepth depth, std::uint32_t digits, AviIndex& index)
        : reader_(source), places_(source, depth, digits), index_(index), entriesLeft_(source.size() / 8) {}

    // False: at this place there is no block of this size, or more of it than a file can hold.
    bool read(std::uint64_t at) {
        std::array<std::uint8_t, 32> head{};
        if (!reader_.get(at, head)) return false;
        const std::uint32_t size = loadLe32(head.data() + 4), entries = loadLe32(head.data() + 12);
        constexpr std::uint8_t kIndexOfChunks = 1;
        if (loadLe16(head.data() + 8) != 2 || head[11] != kIndexOfChunks) return false;
        // Each entry has bytes of its own in a file; blocks that share them are no work of a writer.
        if (size < 24 || entries > (size - 24) / 8 || entries > entriesLeft_) return false;
        entriesLeft_ -= entries;
        ++index_.blocks;
        const std::uint64_t base = loadLe64(head.data() + 20);
        for (std::uint64_t i = 0; i < entries; ++i) {
            std::array<std::uint8_t, 8> entry{};
            if (!reader_.get(at + head.size() + i * entry.size(), entry)) return false;
            ++index_.entries;
            constexpr std::uint32_t kSizeBits = 0x7FFFFFFF;  // the top bit: no key frame
            places_.count(index_, base + loadLe32(entry.data()) - 8, loadLe32(entry.data() + 4) & kSizeBits);
        }
        return true;
    }

  private:
    ByteReader reader_;
    Places places_;
    AviIndex& index_;
    std::uint64_t entriesLeft_;
};

}  // namespace

AviIndex checkOldIndex(ByteSource& source, ProbeDepth depth, const Chunk& idx1, std::uint64_t movi,
                       std::uint32_t digits) {
    ByteReader reader(source);
    Places places(source, depth, digits);
    const std::uint64_t origin = originOf(reader, idx1, movi, digits, places);
    AviIndex index;
    index.blocks = 1;
    for (std::uint64_t i = 0; i < idx1.size / 16; ++i) {
        const auto entry = oldEntry(reader, idx1, i);
        if (!entry) break;
        ++index.entries;
        if (isFrameOf(digits, entry->id)) places.count(index, origin + entry->offset, entry->size);
    }
    return index;
}

std::optional<AviIndex> checkStandardIndex(ByteSource& source, ProbeDepth depth, const Chunk& indx,
                                           std::uint32_t digits, std::vector<std::string>& problems) {
    ByteReader reader(source);
    std::array<std::uint8_t, 8> head{};
    if (indx.size < 24 || !reader.get(indx.data(), head)) return std::nullopt;
    AviIndex index;
    StandardBlocks blocks(source, depth, digits, index);
    constexpr std::uint8_t kIndexOfIndexes = 0;
    if (head[3] != kIndexOfIndexes) return blocks.read(indx.at) ? std::optional(index) : std::nullopt;
    const std::uint32_t entries = loadLe32(head.data() + 4);
    if (entries > (indx.size - 24) / 16) {
        problems.push_back("its index tells " + std::to_string(entries) + " blocks and has room for " +
                           std::to_string((indx.size - 24) / 16));
    }
    std::uint64_t wrong = 0;
    const std::uint64_t told = std::min(entries, (indx.size - 24) / 16);
    for (std::uint64_t i = 0; i < told; ++i) {
        std::array<std::uint8_t, 16> entry{};
        if (!reader.get(indx.data() + 24 + i * entry.size(), entry)) break;
        if (!blocks.read(loadLe64(entry.data()))) ++wrong;
    }
    if (wrong > 0) {
        problems.push_back(std::to_string(wrong) + " of " + std::to_string(told) +
                           " blocks of its index are not where they should be, or damaged");
    }
    return index;
}

}  // namespace tavra::tool
