// A font of the library's own, for text in images on machines that have none installed: printable ASCII, each
// glyph 5 columns by 7 rows. Plain data; any thread.
#pragma once

#include <array>
#include <cstdint>

namespace tavra::platform {

// Rows from the top; bit 4 is the left column. Other characters have the glyph of a question mark.
using Glyph = std::array<std::uint8_t, 7>;
const Glyph& glyphOf(char character);

// A cell is a glyph with its rows drawn twice, and room to the neighbours.
inline constexpr std::int32_t kGlyphColumns = 5;
inline constexpr std::int32_t kCellWidth = 7;
inline constexpr std::int32_t kCellHeight = 16;

}  // namespace tavra::platform
