// The header list of an AVI file.
#pragma once

#include <optional>

#include "movie_probe/movie_report.h"
#include "movie_probe/riff.h"

namespace tavra::tool {

struct AviHeader {
    std::optional<std::uint32_t> videoStream;  // the first one
    std::optional<Chunk> standardIndex;        // its indx
};

// Reads the list's chunks up to `limit` into `avi`.
void readHeaderList(ByteReader& reader, const Chunk& list, std::uint64_t limit, AviReport& avi,
                    AviHeader& header);

// The OpenDML header, which may also stand outside the header list.
void readOdmlList(ByteReader& reader, const Chunk& list, std::uint64_t limit, AviReport& avi);

}  // namespace tavra::tool
