// From samples to quantised coefficients, several blocks at a time. Pure functions; any thread.
//
// The arithmetic is in single precision and in a fixed order, so that every build makes the same
// coefficients. They are those of the exact transform, rounded to nearest; only a quotient that lies within
// rounding errors of a half may fall to the other side.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tavra::jpeg {

// How many blocks are transformed at a time.
inline constexpr std::size_t kTileBlocks = 8;

// The quantised coefficients of a block, column after column: that of vertical frequency v and horizontal
// frequency u is at [u * 8 + v].
using Block = std::array<std::int16_t, 64>;

// The factors that divide by the step sizes and take out the scale of the transform: [u] holds the eight
// factors v = 0 to 7, once for each block of a tile.
struct alignas(32) ForwardTable {
    std::array<std::array<float, 8 * kTileBlocks>, 8> factors;
};

// From step sizes in zig-zag order.
ForwardTable makeForwardTable(std::span<const std::uint8_t, 64> steps);

// Shifts samples by -128, transforms and quantises them: blocks.size() blocks side by side, at most
// kTileBlocks, of which the upper left sample is `samples`; `step` is the way from row to row in bytes.
void transformBlocks(const std::uint8_t* samples, std::size_t step, const ForwardTable& table,
                     std::span<Block* const> blocks);

}  // namespace tavra::jpeg
