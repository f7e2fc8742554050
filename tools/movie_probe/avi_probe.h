// AVI movies, 1.0 and 2.0 (OpenDML), of this system or any other; and recordings of this system that were
// never closed, which have no header.
#pragma once

#include "movie_probe/byte_source.h"
#include "movie_probe/movie_report.h"
#include "movie_probe/probe_depth.h"

namespace tavra::tool {

// False, and nothing in the report: it is no AVI movie.
bool probeAvi(ByteSource& source, ProbeDepth depth, MovieReport& report);

}  // namespace tavra::tool
