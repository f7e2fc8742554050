// The colour matrix as tables: what each value of an input channel adds to the three output channels.
// Pure; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra {

// Three rows, for R, G and B, of four hundredths: from R, from G, from B, offset in levels.
using ColorMatrix = std::array<std::int16_t, 12>;

inline constexpr ColorMatrix kIdentityMatrix = {100, 0, 0, 0, 0, 100, 0, 0, 0, 0, 100, 0};

struct ColorMatrixSettings {
    ColorMatrix matrix = kIdentityMatrix;
    std::int16_t hue = 0;            // tenths of a degree
    std::uint16_t saturation = 100;  // hundredths
};

// What one value of an input channel adds to B, G and R; the fourth is 0, and makes an entry one vector.
using Contribution = std::array<std::int32_t, 4>;
using ContributionTable = std::array<Contribution, 4096>;

struct ColorTables {
    ContributionTable tableB{}, tableG{}, tableR{};
};

void buildColorTables(ColorTables& tables, const ColorMatrixSettings& settings);

// The first 256 entries of the tables with the contributions to all three channels in one machine word each,
// a channel in 16 bits, so that a pixel of bytes is three look-ups and two additions.
//
// All fields are raised to be no less than 0, that none borrows from its neighbour; `raised` is by how much a
// channel of the sum is too large, the same for each. Only matrices whose sums fit have this form, which
// every sensible one does.
struct PackedColorTables {
    std::array<std::uint64_t, 256> blue{}, green{}, red{};
    std::uint16_t raised = 0;
    bool fits = false;
};

void packColorTables(PackedColorTables& packed, const ColorTables& tables);

}  // namespace tavra
