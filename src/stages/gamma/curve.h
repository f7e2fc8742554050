// How the table of a tone curve is made. Pure; any thread.
#pragma once

#include <array>
#include <cstdint>

namespace tavra {

// Output for each input level. A curve of a depth of b bits fills the first 2^b entries.
using GammaTable = std::array<std::uint16_t, 4096>;

inline constexpr unsigned kGammaMaximumBits = 12;

// The settings of a power curve.
struct GammaShape {
    std::uint16_t gamma;      // times 100, not 0
    std::int16_t brightness;  // levels added to the input
    std::uint16_t contrast;   // levels cut off at each end of the input
    std::uint16_t bits;       // depth, up to 12
};

// Entry i is i, and from the largest value of the depth on that value.
void fillIdentity(GammaTable& table, std::uint16_t bits);

// The curve in the entries of its depth; those above keep what they had.
void fillPowerCurve(GammaTable& table, const GammaShape& shape);

// The entries of the depth in the reverse order: the negative of a curve.
void reverseCurve(GammaTable& table, std::uint16_t bits);

}  // namespace tavra
