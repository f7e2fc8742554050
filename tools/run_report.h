// What a run tells while it goes on: a line that is written over, or a JSON object a line for programs.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "progress.h"
#include "stream_monitor.h"

namespace tavra::tool {

// The time of a run, and when its next line is due: one a second. One thread.
class RunClock {
  public:
    using Clock = StreamMonitor::Clock;

    void start() { started_ = lastLine_ = Clock::now(); }
    double seconds() const { return since(started_); }
    bool lineIsDue() const { return Clock::now() - lastLine_ >= std::chrono::seconds(1); }
    // The next line's time begins. How long the last one's was, in seconds.
    double nextLine();

  private:
    static double since(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    Clock::time_point started_ = Clock::now(), lastLine_ = started_;
};

// One thread.
class RunReport {
  public:
    explicit RunReport(bool json) : json_(json) {}

    bool isJson() const { return json_; }
    // The run's present state, over the last one.
    void show(const std::string& text) { live_.show(text); }
    // An object on standard output. Names of files that are no UTF-8 come with replacement characters.
    void object(const nlohmann::json& object);
    void gaps(const std::vector<Gap>& gaps);
    // Leaves the last line standing.
    void finish() { live_.finish(); }

  private:
    const bool json_;
    LiveLine live_;
};

}  // namespace tavra::tool
