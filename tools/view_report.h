// What `tavra view` tells on the terminal, and for a moment in its title.
#pragma once

#include <chrono>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "progress.h"
#include "stream_monitor.h"

namespace tavra::tool {

// One thread.
class ViewReport {
  public:
    explicit ViewReport(bool json) : json_(json) {}

    // A result, on standard output: the text, or the object for programs.
    void tell(const std::string& text, const nlohmann::json& object) const;
    // For programs only.
    void progress(const nlohmann::json& object) const;
    void gaps(const std::vector<Gap>& gaps);
    // What could not be done, on standard error and in the title.
    void note(const std::string& text);
    // In the title.
    void setNotice(const std::string& text);
    // Empty once it has stood for three seconds.
    std::string notice() const;

  private:
    using Clock = std::chrono::steady_clock;

    bool json_;
    LiveLine live_;
    std::string notice_;
    Clock::time_point noticeEnds_;
};

}  // namespace tavra::tool
