// Goes from chunk to chunk through the frames of an AVI file.
#pragma once

#include "movie_probe/movie_report.h"
#include "movie_probe/riff.h"

namespace tavra::tool {

class AviFrames {
  public:
    enum class End : std::uint8_t {
        Limit,    // all was seen
        Cut,      // a chunk reaches beyond the limit
        NoChunk,  // something that is no chunk
    };

    AviFrames(ByteReader& reader, std::uint32_t digits) : reader_(reader), digits_(digits) {}

    // Of the stream with these digits, from now on.
    void countStream(std::uint32_t digits) { digits_ = digits; }

    // Goes from `at` to `limit`. With `headsMissing` over the places for the heads of segments too, which a
    // recording fills in at its end.
    End walk(std::uint64_t at, std::uint64_t limit, bool headsMissing);
    // Where the last walk ended.
    std::uint64_t position() const { return at_; }

    // All that was found so far.
    const FrameCount& frames() const { return frames_; }
    std::uint64_t pictureBytes() const { return pictureBytes_; }
    std::uint32_t largestPicture() const { return largestPicture_; }

  private:
    void count(const Chunk& chunk);
    bool missingHeadHere(std::uint64_t limit);

    ByteReader& reader_;
    std::uint32_t digits_;
    std::uint64_t at_ = 0;
    FrameCount frames_;
    std::uint64_t pictureBytes_ = 0;
    std::uint32_t largestPicture_ = 0;
};

}  // namespace tavra::tool
