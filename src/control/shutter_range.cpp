#include "control/shutter_range.h"

#include <algorithm>

namespace tavra {
namespace {

// The bottom against a top that is the free-running exposure.
bool isAboveFree(const Shutter& min, const ShutterScale& scale) {
    const std::uint32_t freeLine = scale.maxShort.line;
    // By design: the clock is compared with the lines of that exposure and not with its clock.
    return min.line > freeLine || (min.line == freeLine && min.clock > freeLine);
}

bool isReversed(const ShutterRange& range, const ShutterScale& scale) {
    if (range.max.isFree()) return isAboveFree(range.min, scale);
    return (range.min.isFree() ? scale.maxShort : range.min).isAbove(range.max);
}

}  // namespace

Status checkShutterRange(const ShutterRange& range, const ShutterScale& scale) {
    const bool tooLong = range.min.isAbove(scale.maxLong) || range.max.isAbove(scale.maxLong);
    const bool tooManyClocks = range.min.clock > scale.maxClock || range.max.clock > scale.maxClock;
    const bool refused = tooLong || tooManyClocks || isReversed(range, scale);
    return refused ? Status(error::kInvalidArgument) : Status();
}

Status moveRangeTop(ShutterRange& range, std::uint32_t clocks, const ShutterScale& scale) {
    if (clocks > scale.maxLongClocks()) return Status(error::kInvalidArgument);
    std::uint32_t bottom = scale.clocks(range.min);
    if (clocks != 0) {
        bottom = std::min(clocks, bottom);
    } else if (scale.maxShortClocks() < bottom) {
        bottom = 0;
    }
    range = {scale.split(bottom), scale.split(clocks)};
    return Status();
}

Status moveRangeBottom(ShutterRange& range, std::uint32_t clocks, const ShutterScale& scale) {
    if (clocks > scale.maxLongClocks()) return Status(error::kInvalidArgument);
    const std::uint32_t free = scale.maxShortClocks();
    std::uint32_t top = scale.clocks(range.max);
    if (clocks == 0) {
        if (top < free) top = 0;
    } else if (top != 0 || free < clocks) {
        top = std::max(top, clocks);
    }
    range = {scale.split(clocks), scale.split(top)};
    return Status();
}

}  // namespace tavra
