#include "control/shutter.h"

namespace tavra {

Shutter ShutterScale::split(std::uint32_t clocks) const {
    const std::uint64_t perLine = std::uint64_t{maxClock} + 1;
    return {static_cast<std::uint32_t>(clocks / perLine), static_cast<std::uint32_t>(clocks % perLine)};
}

std::uint32_t ShutterScale::ToTotalClocks(Shutter shutter) const {
    if (shutter.isFree()) shutter = maxShort;
    if (shutter.isAbove(maxLong)) shutter = maxLong;
    const std::uint32_t lines = clocksPerLine() * shutter.line;
    if (clockUnit) return lines + shutter.clock;
    return lines == 0 && shutter.clock != 0 ? clocksPerLine() : lines;
}

}  // namespace tavra
