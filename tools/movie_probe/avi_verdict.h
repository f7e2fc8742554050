// What is wrong with an AVI file, from what was found in it.
#pragma once

#include "movie_probe/movie_report.h"

namespace tavra::tool {

// Adds to the report's problems. For a file that has a header.
void judgeAvi(const AviReport& avi, MovieReport& report);

}  // namespace tavra::tool
