#include "movie_probe/riff.h"

#include "base/little_endian.h"
#include "movie_probe/fourcc.h"

namespace tavra::tool {

std::optional<Chunk> chunkAt(ByteReader& reader, std::uint64_t at, std::uint64_t limit) {
    std::array<std::uint8_t, 8> head{};
    if (at > limit || limit - at < head.size() || !reader.get(at, head)) return std::nullopt;
    const Chunk chunk{at, loadLe32(head.data()), loadLe32(head.data() + 4)};
    if (!isFourcc(chunk.id)) return std::nullopt;
    return chunk;
}

std::uint32_t listType(ByteReader& reader, const Chunk& list) {
    std::array<std::uint8_t, 4> type{};
    return reader.get(list.data(), type) ? loadLe32(type.data()) : 0;
}

std::uint32_t streamDigits(std::uint32_t stream) {
    return ('0' + stream / 10 % 10) | ('0' + stream % 10) << 8;
}

bool isFrameOf(std::uint32_t digits, std::uint32_t id) {
    constexpr std::uint32_t kPaletteChange = 'p' | 'c' << 8;
    return (id & 0xFFFF) == digits && id >> 16 != kPaletteChange;
}

}  // namespace tavra::tool
