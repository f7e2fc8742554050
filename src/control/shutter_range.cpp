#include "control/shutter_range.h"

#include <algorithm>

namespace tavra {
namespace {

// By design: a clock is compared with the lines of the free-running exposure, not with its clock.
Shutter freeRunning(const ShutterScale& scale) {
    return {scale.maxShort.line, scale.maxShort.line};
}

bool isReversed(const ShutterRange& range, const ShutterScale& scale) {
    const Shutter free = freeRunning(scale);
    if (range.max.isFree()) return range.min.isAbove(free);
    return (range.min.isFree() ? free : range.min).isAbove(range.max);
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
