// The indexes of an AVI file; at full depth each entry is held against what it points at.
#pragma once

#include <optional>

#include "movie_probe/movie_report.h"
#include "movie_probe/probe_depth.h"
#include "movie_probe/riff.h"

namespace tavra::tool {

// idx1, whose offsets count from the letters "movi", or from the start of the file: the first frame tells.
AviIndex checkOldIndex(ByteSource& source, ProbeDepth depth, const Chunk& idx1, std::uint64_t movi,
                       std::uint32_t digits);

// indx with its ix blocks, or as a block itself. Nothing if it is neither. What is wrong with the blocks goes
// to `problems`.
std::optional<AviIndex> checkStandardIndex(ByteSource& source, ProbeDepth depth, const Chunk& indx,
                                           std::uint32_t digits, std::vector<std::string>& problems);

}  // namespace tavra::tool
