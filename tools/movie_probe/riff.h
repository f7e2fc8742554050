// Chunks of RIFF files.
#pragma once

#include <cstdint>
#include <optional>

#include "movie_probe/byte_source.h"

namespace tavra::tool {

struct Chunk {
    std::uint64_t at = 0;  // of its id
    std::uint32_t id = 0;
    std::uint32_t size = 0;

    std::uint64_t data() const { return at + 8; }
    std::uint64_t dataEnd() const { return data() + size; }
    std::uint64_t next() const { return dataEnd() + (size & 1); }
};

// Nothing where no eight bytes stand ahead of `limit`, or none that can be a chunk's.
std::optional<Chunk> chunkAt(ByteReader& reader, std::uint64_t at, std::uint64_t limit);

// The type of a RIFF or LIST chunk; 0 if the file ends ahead of it.
std::uint32_t listType(ByteReader& reader, const Chunk& list);

// "00" of stream 0, as the lower half of the ids of its chunks; and whether an id is one of its frames: db,
// dc, or what codecs make of it, but no change of palette.
std::uint32_t streamDigits(std::uint32_t stream);
bool isFrameOf(std::uint32_t digits, std::uint32_t id);

}  // namespace tavra::tool
