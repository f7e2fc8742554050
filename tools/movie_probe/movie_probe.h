// Reads what a movie file holds. Any bytes may come; the work is at most linear in the file's length, and
// memory is bounded.
#pragma once

#include "movie_probe/byte_source.h"
#include "movie_probe/movie_report.h"
#include "movie_probe/probe_depth.h"

namespace tavra::tool {

MovieReport probeMovie(ByteSource& source, ProbeDepth depth = ProbeDepth::Frames);

// Throws std::system_error when the file cannot be read.
MovieReport probeMovie(const std::filesystem::path& path, ProbeDepth depth = ProbeDepth::Frames);

}  // namespace tavra::tool
