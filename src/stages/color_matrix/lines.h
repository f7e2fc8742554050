// The colour matrix of bytes by multiplication, which vectors do several times faster than look-ups, with the
// results of the tables. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "stages/color_matrix/tables.h"

namespace tavra {

// One contribution as a function of the input level i, over all 256 levels: plus or minus
// (i + 1) * whole + (((i + 1) * fraction) >> 16).
//
// The sums from which a table is made drift by their rounding, so where the exact product is a whole number
// the table has that number or the one before. A change of the fraction by 1/65536 at some levels makes up
// for it.
struct ContributionLine {
    static constexpr std::size_t kMostBends = 5;
    struct Bend {
        std::int16_t from;     // level + 1
        std::uint16_t change;  // of the fraction, modulo 65536
    };

    bool negative = false;
    std::uint16_t whole = 0;
    std::uint16_t fraction = 0;
    std::size_t bends = 0;
    std::array<Bend, kMostBends> bend{};
};

// The nine lines, [input B, G, R][output B, G, R], and the offset of each output. They stand for the tables
// where `fit` says so: not with an offset whose fraction matters, nor where sums do not fit in 16 bits with a
// sign.
struct ColorLines {
    std::array<std::array<ContributionLine, 3>, 3> line{};
    std::array<std::int16_t, 3> offset{};
    bool fit = false;
    bool plain = false;  // all are straight, and wholes only from a channel to itself
};

// `offsets`: of B, G and R in whole levels.
void fitColorLines(ColorLines& lines, const ColorTables& tables, const std::array<std::int16_t, 3>& offsets);

// A row of `width` pixels that lie `pitch` bytes apart, 3 or 4, in place; results end at 0 and at the limit.
void transformRow(const ColorLines& lines, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit);

}  // namespace tavra
