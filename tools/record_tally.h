// The books of a recording: what the camera sent, what the files hold, and why the rest is in none.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "movie_probe/movie_report.h"
#include "stream_monitor.h"

namespace tavra::tool {

// Frames as the capture thread sees them. Of a recording that began with the stream and ends by its number of
// frames, those behind the last one do not count.
class FrameBook {
  public:
    // 0: all count.
    void countOnly(std::uint32_t frames) { wanted_ = frames; }
    // From now on nothing counts.
    void close();
    void frame(std::uint32_t number, std::uint32_t bytes, StreamMonitor::Clock::time_point now);

    StreamMonitor::Totals totals() const { return monitor_.totals(); }
    std::vector<Gap> takeGaps() { return monitor_.takeGaps(); }

  private:
    StreamMonitor monitor_;
    std::mutex mutex_;
    bool closed_ = false;
    bool begun_ = false;
    std::uint32_t first_ = 0;
    std::uint32_t wanted_ = 0;
};

// One thread.
class RecordTally {
  public:
    // A file that was closed.
    void addFile(const std::string& name, const MovieReport& report);
    void addGap(const Gap& gap);

    std::uint32_t files() const { return files_; }
    std::uint64_t stored() const { return stored_; }
    // Frames from each file's first to its last, those that the camera lost in between included.
    std::uint64_t length() const { return length_; }
    std::uint64_t bytes() const { return bytes_; }
    bool whole() const { return problems_.empty(); }

    // "out.avi: 600 frames seen, 598 stored, 0 paused, 2 lost (...)."
    std::string sentence(const std::string& name, const StreamMonitor::Totals& seen) const;

  private:
    std::uint32_t files_ = 0;
    std::uint64_t stored_ = 0;
    std::uint64_t length_ = 0;
    std::uint64_t bytes_ = 0;
    std::map<std::string, std::uint64_t> lostBecause_;  // frames by reason, pauses of this computer in one
    std::vector<std::string> problems_;
};

}  // namespace tavra::tool
