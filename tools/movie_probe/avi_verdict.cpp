#include "movie_probe/avi_verdict.h"

#include <algorithm>

namespace tavra::tool {
namespace {

std::string framesText(std::uint64_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

void judgeHeader(const AviReport& avi, std::vector<std::string>& problems) {
    if (avi.width == 0 || avi.height == 0) problems.emplace_back("its header tells no size of the picture");
    if (avi.rate == 0 || avi.scale == 0) problems.emplace_back("its header tells no frame rate");
    if (avi.odmlFrames && *avi.odmlFrames != avi.length) {
        problems.push_back("its header counts " + framesText(avi.length) + " in one place and " +
                           std::to_string(*avi.odmlFrames) + " in another");
    }
}

void judgeEntries(const AviIndex& index, std::vector<std::string>& problems) {
    if (index.outside > 0) {
        problems.push_back("its index points outside the file for " + framesText(index.outside));
    }
    if (index.wrong > 0) {
        problems.push_back("its index points beside the frame for " + framesText(index.wrong));
    }
}

// The index that covers the whole file, if there is one.
const AviIndex* wholeIndex(const AviReport& avi) {
    if (avi.standardIndex) return &*avi.standardIndex;
    return avi.oldIndex && avi.segments.size() == 1 ? &*avi.oldIndex : nullptr;
}

// A list may open with an empty chunk that is no frame, so that there may be more chunks than frames.
void judgeCounts(const AviReport& avi, std::vector<std::string>& problems) {
    const AviIndex* const index = wholeIndex(avi);
    if (index == nullptr) {
        problems.emplace_back("it has no index: a player has to search for the frames");
    } else if (index->frames.pictures != avi.frames.pictures) {
        problems.push_back("its index tells " + framesText(index->frames.pictures) + ", and " +
                           std::to_string(avi.frames.pictures) + " stand in the file");
    }
    const std::uint64_t most = std::max(avi.frames.all(), index != nullptr ? index->frames.all() : 0);
    if (avi.length < avi.frames.pictures || avi.length > most) {
        problems.push_back("its header counts " + framesText(avi.length) + ", and " +
                           std::to_string(avi.frames.pictures) + " stand in the file");
    }
}

}  // namespace

void judgeAvi(const AviReport& avi, MovieReport& report) {
    judgeHeader(avi, report.problems);
    judgeCounts(avi, report.problems);
    if (avi.standardIndex) judgeEntries(*avi.standardIndex, report.problems);
    if (avi.oldIndex) judgeEntries(*avi.oldIndex, report.problems);
}

}  // namespace tavra::tool
