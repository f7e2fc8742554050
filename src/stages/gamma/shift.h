// The luminance curve on colour pixels: the three channels of a pixel move by the same number of levels, so
// its colour stays. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stages/gamma/curve.h"
#include "stages/table_lookup.h"

namespace tavra {

// For rows of bytes: by how much a pixel of each luminance rises, and by how much it falls.
class LumaShift {
  public:
    explicit LumaShift(const GammaTable& table) { fill(table); }

    void fill(const GammaTable& table);

    // A row of `width` pixels of 3 or 4 bytes.
    void apply(std::uint8_t* row, std::size_t pitch, std::size_t width) const;

  private:
    // The rise in the low byte, the fall in the high byte; one of them is 0. More than 255 does no more than
    // 255.
    WordTable shifts_;
};

// A row of `width` pixels of 3 or 4 words.
void shiftWords(const GammaTable& table, std::uint16_t* row, std::size_t pitch, std::size_t width);

}  // namespace tavra
