// From samples to quantised coefficients, several blocks at a time. Pure functions; any thread.
//
// The arithmetic is in single precision and in a fixed order, so that every build makes the same
// coefficients; they are those of the exact transform, except where a quotient lies within a few millionths
// of its size of a half.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tavra::jpeg {

// The zig-zag order of ITU T.81 figure A.6: at [k], row * 8 + column of the k-th coefficient.
extern const std::array<std::uint8_t, 64> kZigZag;

// How many blocks are transformed at a time.
inline constexpr std::size_t kTileBlocks = 8;

// The quantised coefficients of a block, column after column: the coefficient of vertical frequency v and
// horizontal frequency u is at [u * 8 + v].
using Block = std::array<std::int16_t, 64>;

// The factors that divide by the step sizes and take out the scale of the transform: [u] holds the eight
// factors v = 0 to 7 of column u, once for each block of a tile.
struct alignas(32) ForwardTable {
    std::array<std::array<float, 8 * kTileBlocks>, 8> factors;
};

// From step sizes in zig-zag order.
ForwardTable makeForwardTable(std::span<const std::uint8_t, 64> steps);

// Shifts the samples by -128, transforms and quantises `count` blocks side by side, of which the upper left
// sample is `samples`; `step` is the way from row to row in bytes. At [i] of the result is block i.
// `count` is at most kTileBlocks; the samples of no other block are read.
void transformBlocks(const std::uint8_t* samples, std::size_t step, std::size_t count,
                     const ForwardTable& table, std::span<Block, kTileBlocks> blocks);

}  // namespace tavra::jpeg
