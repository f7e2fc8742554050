#include "movie_probe/avi_header.h"

#include <algorithm>
#include <cstdlib>

#include "base/little_endian.h"
#include "movie_probe/fourcc.h"

namespace tavra::tool {
namespace {

constexpr std::uint32_t kMostStreams = 100;  // two digits in the ids of their chunks

// Calls `see(chunk)` for each chunk of a list, as far as they lie ahead of `limit`.
template <typename See>
void forEachIn(ByteReader& reader, const Chunk& list, std::uint64_t limit, See see) {
    const std::uint64_t end = std::min(list.dataEnd(), limit);
    std::uint64_t at = list.data() + 4;
    while (const auto chunk = chunkAt(reader, at, end)) {
        see(*chunk);
        at = chunk->next();
    }
}

// The number at an offset of a chunk; 0 where the chunk or the file has ended.
std::uint32_t wordOf(ByteReader& reader, const Chunk& chunk, std::uint32_t offset) {
    std::array<std::uint8_t, 4> word{};
    if (chunk.size < offset + word.size() || !reader.get(chunk.data() + offset, word)) return 0;
    return loadLe32(word.data());
}

void readStreamHeader(ByteReader& reader, const Chunk& strh, AviReport& avi) {
    avi.handler = fourccText(wordOf(reader, strh, 4));
    avi.scale = wordOf(reader, strh, 20);
    avi.rate = wordOf(reader, strh, 24);
    avi.length = wordOf(reader, strh, 32);
}

void readFormat(ByteReader& reader, const Chunk& strf, AviReport& avi) {
    const auto height = static_cast<std::int32_t>(wordOf(reader, strf, 8));
    avi.width = wordOf(reader, strf, 4);
    avi.height = height < 0 ? 0 - static_cast<std::uint32_t>(height) : static_cast<std::uint32_t>(height);
    avi.bits = wordOf(reader, strf, 12) >> 16;
    avi.codec = fourccText(wordOf(reader, strf, 16));
}

void readStream(ByteReader& reader, const Chunk& strl, std::uint64_t limit, AviReport& avi,
                AviHeader& header) {
    const std::uint32_t number = avi.streams++;
    bool video = false;
    forEachIn(reader, strl, limit, [&](const Chunk& chunk) {
        if (chunk.id == fourcc("strh")) {
            video = !header.videoStream && wordOf(reader, chunk, 0) == fourcc("vids");
            if (video) header.videoStream = number;
            if (video) readStreamHeader(reader, chunk, avi);
        }
        if (!video) return;
        if (chunk.id == fourcc("strf")) readFormat(reader, chunk, avi);
        if (chunk.id == fourcc("indx")) header.standardIndex = chunk;
    });
}

}  // namespace

void readHeaderList(ByteReader& reader, const Chunk& list, std::uint64_t limit, AviReport& avi,
                    AviHeader& header) {
    const std::uint64_t end = std::min(list.dataEnd(), limit);
    forEachIn(reader, list, limit, [&](const Chunk& chunk) {
        if (chunk.id == fourcc("avih")) avi.flags = wordOf(reader, chunk, 12);
        if (chunk.id != fourcc("LIST")) return;
        const std::uint32_t type = listType(reader, chunk);
        if (type == fourcc("strl") && avi.streams < kMostStreams) readStream(reader, chunk, end, avi, header);
        if (type == fourcc("odml")) readOdmlList(reader, chunk, end, avi);
    });
}

void readOdmlList(ByteReader& reader, const Chunk& list, std::uint64_t limit, AviReport& avi) {
    forEachIn(reader, list, limit, [&](const Chunk& chunk) {
        if (chunk.id == fourcc("dmlh") && !avi.odmlFrames) avi.odmlFrames = wordOf(reader, chunk, 0);
    });
}

}  // namespace tavra::tool
