// Planes with fewer columns and rows. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra::jpeg {

// Half of the columns: the mean of each pair. What is added ahead of the division alternates from column to
// column, so that means of a half go down and up in turn and the picture does not become darker or brighter.
void halveColumns(const std::uint8_t* row, std::size_t halfWidth, std::uint8_t* half);

// Half of the columns and rows: the mean of each square of two rows, with 1 and 2 added in turn.
void halveBoth(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t halfWidth,
               std::uint8_t* half);

}  // namespace tavra::jpeg
