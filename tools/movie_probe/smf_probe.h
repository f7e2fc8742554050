// SMF movies.
#pragma once

#include "movie_probe/byte_source.h"
#include "movie_probe/movie_report.h"
#include "movie_probe/probe_depth.h"

namespace tavra::tool {

// False, and nothing in the report: it is no SMF movie.
bool probeSmf(ByteSource& source, ProbeDepth depth, MovieReport& report);

}  // namespace tavra::tool
