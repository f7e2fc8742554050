// Exposure times as the camera counts them: lines and clocks, and as one number of clocks. Pure; any thread.
#pragma once

#include <cstdint>

namespace tavra {

// An exposure in whole lines and clocks of a further line. (0, 0) is a value of its own: the shutter stays
// out of the way and the exposure is the longest that fits a frame.
struct Shutter {
    std::uint32_t line = 0;
    std::uint32_t clock = 0;

    bool isFree() const { return line == 0 && clock == 0; }
    // Neither is below the other only if they are equal.
    bool isAbove(const Shutter& other) const {
        return line > other.line || (line == other.line && clock > other.clock);
    }
    bool operator==(const Shutter&) const = default;
};

// Ends of what the automatic control may use. They stand as they were set, also upside down.
struct ShutterRange {
    Shutter min;
    Shutter max;

    bool operator==(const ShutterRange&) const = default;
};

// What a camera's lines, clocks and limits are at this moment. All totals are 32 bits and wrap, as cameras
// count.
struct ShutterScale {
    std::uint32_t maxClock = 0;  // clocks of an exposure line less one
    Shutter maxShort;            // the longest exposure that fits a frame
    Shutter maxLong;             // the longest at all
    bool clockUnit = false;      // the clock part takes effect

    // 0 stands for 2^32, and the two functions below take it so.
    std::uint32_t clocksPerLine() const { return maxClock + 1; }

    std::uint32_t clocks(const Shutter& shutter) const {
        return clocksPerLine() * shutter.line + shutter.clock;
    }
    std::uint32_t maxShortClocks() const { return clocks(maxShort); }
    std::uint32_t maxLongClocks() const { return clocks(maxLong); }
    // By design: from the line of the longest exposure on, the longest exposure.
    Shutter limited(const Shutter& shutter) const { return shutter.line >= maxLong.line ? maxLong : shutter; }
    Shutter split(std::uint32_t clocks) const;

    // The exposure that a pair has in effect, as one number: the free-running pair counts as the longest that
    // fits a frame, nothing is longer than the longest, and without a clock part only whole lines count.
    std::uint32_t ToTotalClocks(Shutter shutter) const;
};

}  // namespace tavra
