#include "stream_monitor.h"

#include <cstdio>
#include <utility>

namespace tavra::tool {
namespace {

// The library holds four frames for a slow receiver; a pause longer than that many frames explains a hole.
constexpr double kFramesHeld = 4;
// A number further ahead than half the range is one from the past.
constexpr std::uint32_t kHalfRange = 0x80000000;

double milliseconds(StreamMonitor::Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

}  // namespace

std::string Gap::reason() const {
    if (outOfOrder) return "the stream was restarted after a failed read";
    char text[160];
    if (hostPauseMs > kFramesHeld * usualMs && usualMs > 0) {
        std::snprintf(text, sizeof text, "this computer was late: %.1f ms without taking a frame",
                      hostPauseMs);
    } else {
        std::snprintf(text, sizeof text, "damaged on the way, or never sent by the camera");
    }
    return text;
}

std::string Gap::text() const {
    char what[96];
    if (outOfOrder) {
        std::snprintf(what, sizeof what, "frame %u came late", first);
    } else if (first == last) {
        std::snprintf(what, sizeof what, "frame %u lost", first);
    } else {
        std::snprintf(what, sizeof what, "frames %u to %u lost (%u)", first, last, frames());
    }
    return std::string(what) + ": " + reason();
}

void StreamMonitor::frame(std::uint32_t number, std::uint32_t bytes, Clock::time_point now) {
    const std::lock_guard lock(mutex_);
    if (totals_.frames == 0) {
        firstTime_ = now;
    } else {
        look(number, now);
    }
    ++totals_.frames;
    totals_.bytes += bytes;
    lastNumber_ = number;
    lastTime_ = now;
}

void StreamMonitor::look(std::uint32_t number, Clock::time_point now) {
    const std::uint32_t expected = lastNumber_ + 1;
    if (number == expected) return;
    Gap gap;
    gap.outOfOrder = number - expected >= kHalfRange;
    gap.first = gap.outOfOrder ? number : expected;
    gap.last = gap.outOfOrder ? number : number - 1;
    gap.hostPauseMs = milliseconds(now - lastTime_);
    if (totals_.frames > 1) {
        gap.usualMs = milliseconds(lastTime_ - firstTime_) / static_cast<double>(totals_.frames - 1);
    }
    totals_.lost += gap.frames();
    ++totals_.gaps;
    gaps_.push_back(gap);
}

StreamMonitor::Totals StreamMonitor::totals() const {
    const std::lock_guard lock(mutex_);
    return totals_;
}

std::vector<Gap> StreamMonitor::takeGaps() {
    const std::lock_guard lock(mutex_);
    return std::exchange(gaps_, {});
}

}  // namespace tavra::tool
