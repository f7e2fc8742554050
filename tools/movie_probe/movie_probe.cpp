#include "movie_probe/movie_probe.h"

#include "movie_probe/avi_probe.h"
#include "movie_probe/smf_probe.h"

namespace tavra::tool {

MovieReport probeMovie(ByteSource& source, ProbeDepth depth) {
    MovieReport report;
    report.fileBytes = source.size();
    if (probeSmf(source, depth, report) || probeAvi(source, depth, report)) return report;
    report.problems.emplace_back(report.fileBytes == 0 ? "the file is empty"
                                                       : "it is neither an AVI nor an SMF movie");
    return report;
}

MovieReport probeMovie(const std::filesystem::path& path, ProbeDepth depth) {
    FileSource file(path);
    return probeMovie(file, depth);
}

}  // namespace tavra::tool
