// Counts what a stream delivers, and finds what is missing.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

namespace tavra::tool {

// A hole in the camera's frame numbers, or a number that came again.
struct Gap {
    std::uint32_t first = 0;  // missing numbers
    std::uint32_t last = 0;
    double hostPauseMs = 0;   // time from the callback before the hole to the one behind it
    double usualMs = 0;       // time between callbacks so far
    bool outOfOrder = false;  // `first` came after a higher number; nothing is missing

    std::uint32_t frames() const { return outOfOrder ? 0 : last - first + 1; }
    // Why, as far as this side can tell.
    std::string reason() const;
    std::string text() const;
};

// Fed by the capture thread, read by the thread that prints. Frame numbers wrap at 32 bits.
class StreamMonitor {
  public:
    using Clock = std::chrono::steady_clock;

    struct Totals {
        std::uint64_t frames = 0;
        std::uint64_t bytes = 0;
        std::uint64_t lost = 0;
        std::uint64_t gaps = 0;
    };

    void frame(std::uint32_t number, std::uint32_t bytes, Clock::time_point now);

    Totals totals() const;
    // The gaps found since the last call.
    std::vector<Gap> takeGaps();

  private:
    void look(std::uint32_t number, Clock::time_point now);

    mutable std::mutex mutex_;
    Totals totals_;
    std::vector<Gap> gaps_;
    std::uint32_t lastNumber_ = 0;
    Clock::time_point firstTime_;
    Clock::time_point lastTime_;
};

}  // namespace tavra::tool
