// A row of pixels through the tables of the colour matrix. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stages/color_matrix/tables.h"

namespace tavra {

// `width` pixels that lie `pitch` samples apart, 3 or 4, in place. A sum above the limit becomes the limit,
// below 0x10000000 that is; one of 0x10000000 and more, as an unsigned number, becomes 0, and so does every
// negative one.
void transformRow(const ColorTables& tables, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit);
void transformRow(const ColorTables& tables, std::uint16_t* row, std::size_t pitch, std::size_t width,
                  std::uint16_t limit);

// The same by the packed tables, if they fit.
void transformRow(const PackedColorTables& tables, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit);

}  // namespace tavra
