// Any bytes as a movie, at both depths. What is told of them fits in them.
#include <cstddef>
#include <cstdint>

#include "movie_probe/movie_probe.h"

namespace {

void require(bool holds) {
    if (!holds) __builtin_trap();
}

void probe(const std::uint8_t* data, std::size_t size, tavra::tool::ProbeDepth depth) {
    tavra::tool::MemorySource source({data, size});
    const tavra::tool::MovieReport report = probeMovie(source, depth);
    require(report.fileBytes == size);
    require(report.isMovie() || !report.problems.empty());
    require(!report.isMovie() || report.avi.has_value() != report.smf.has_value());
    if (report.smf) require(report.smf->pictures <= size / 24);
    if (!report.avi) return;
    require(report.avi->frames.all() <= size / 8);
    if (depth == tavra::tool::ProbeDepth::Frames) require(report.avi->pictureBytes <= size);
    if (report.avi->standardIndex) require(report.avi->standardIndex->entries <= size / 8);
    for (const auto& segment : report.avi->segments) require(segment.offset + segment.size <= size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    probe(data, size, tavra::tool::ProbeDepth::Frames);
    probe(data, size, tavra::tool::ProbeDepth::Index);
    return 0;
}
