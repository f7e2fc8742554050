#include "movie_probe/avi_frames.h"

#include <algorithm>

#include "movie_probe/fourcc.h"

namespace tavra::tool {

AviFrames::End AviFrames::walk(std::uint64_t at, std::uint64_t limit, bool headsMissing) {
    constexpr std::uint64_t kListHead = 12, kMissingHead = 32;
    at_ = at;
    while (at_ < limit) {
        const auto chunk = chunkAt(reader_, at_, limit);
        if (!chunk) {
            if (!headsMissing || !missingHeadHere(limit)) return limit - at_ < 8 ? End::Cut : End::NoChunk;
            at_ += kMissingHead;
        } else if (chunk->id == fourcc("LIST")) {
            at_ += kListHead;  // its chunks follow one another like all others
        } else if (chunk->dataEnd() > limit) {
            return End::Cut;
        } else {
            count(*chunk);
            at_ = chunk->next();
        }
    }
    return End::Limit;
}

void AviFrames::count(const Chunk& chunk) {
    if (!isFrameOf(digits_, chunk.id)) return;
    chunk.size != 0 ? ++frames_.pictures : ++frames_.empty;
    pictureBytes_ += chunk.size;
    largestPicture_ = std::max(largestPicture_, chunk.size);
}

bool AviFrames::missingHeadHere(std::uint64_t limit) {
    std::array<std::uint8_t, 32> head{};
    if (!reader_.get(at_, head)) return false;
    return std::all_of(head.begin(), head.end(), [](std::uint8_t byte) { return byte == 0; }) &&
           chunkAt(reader_, at_ + head.size(), limit).has_value();
}

}  // namespace tavra::tool
