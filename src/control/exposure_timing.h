// Exposure clocks and seconds. What a clock of the exposure is depends on the camera's family. Pure; any
// thread.
#pragma once

#include <cstdint>

namespace tavra {

// How a camera family counts its exposure.
enum class TimingClass {
    SensorTicks,   // ticks of a sensor whose length depends on binning and image width
    Lines,         // lines of a frame
    DelayedLines,  // lines behind a fixed delay
    SlowBase,      // the base clock for short exposures, lines for longer ones; at least 1.5 us
    Base,          // the same, at least 1 us
    Microseconds,
    Clocks,  // clocks of the camera
};
// `samePid` tells the variants of some types apart.
TimingClass timingClass(std::uint16_t productType, std::uint16_t samePid);

// What the conversion needs to know of a camera. Numbers that a camera tells as 0 give results without
// meaning, but no harm.
struct ExposureTiming {
    TimingClass timing = TimingClass::Clocks;
    double clockHz = 0;        // of the camera
    double clocksPerLine = 0;  // of a frame
    double baseHz = 0;         // the base clock of exposures
    double minimumClocks = 0;  // up to here exposures count the base clock
    double imageWidth = 0;     // pixels
    unsigned horizontalBinning = 0;
    unsigned verticalBinning = 0;

    // 1 to `longest`; 1 too if that is 0, and for what is no time.
    std::uint32_t clocks(float seconds, std::uint32_t longest) const;
    // `clocks` as a camera takes it, up to 2^32 - 1.
    float seconds(std::uint32_t clocks) const;
};

}  // namespace tavra
