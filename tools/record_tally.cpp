#include "record_tally.h"

namespace tavra::tool {
namespace {

std::uint64_t lengthOf(const MovieReport& report) {
    return report.avi ? report.avi->length : report.smf ? report.smf->length : 0;
}

// How long each pause was is told where it happened.
std::string kindOf(const std::string& reason) {
    return reason.substr(0, reason.find(':'));
}

}  // namespace

void FrameBook::close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
}

void FrameBook::frame(std::uint32_t number, std::uint32_t bytes, StreamMonitor::Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    if (!begun_) first_ = number;
    begun_ = true;
    if (closed_ || (wanted_ != 0 && number - first_ >= wanted_)) return;
    monitor_.frame(number, bytes, now);
}

void RecordTally::addFile(const std::string& name, const MovieReport& report) {
    ++files_;
    stored_ += report.pictures();
    length_ += lengthOf(report);
    bytes_ += report.fileBytes;
    for (const std::string& problem : report.problems) {
        problems_.push_back(name);
        problems_.back().append(" is not whole: ").append(problem);
    }
}

void RecordTally::addGap(const Gap& gap) {
    if (gap.frames() > 0) lostBecause_[kindOf(gap.reason())] += gap.frames();
}

std::string RecordTally::sentence(const std::string& name, const StreamMonitor::Totals& seen) const {
    std::string text =
        name + ": " + std::to_string(seen.frames) + " frames seen, " + std::to_string(stored_) + " stored";
    if (files_ > 1) text += " in " + std::to_string(files_) + " files";
    text += ", 0 paused, " + std::to_string(seen.lost) + " lost";
    const char* separator = " (";
    for (const auto& [reason, frames] : lostBecause_) {
        text += separator + std::to_string(frames) + " " + reason;
        separator = ", ";
    }
    if (!lostBecause_.empty()) text += ")";
    if (seen.frames > stored_) {
        text += "; " + std::to_string(seen.frames - stored_) + " came while no file took them";
    }
    for (const std::string& problem : problems_) text += "; " + problem;
    return text + ".";
}

}  // namespace tavra::tool
