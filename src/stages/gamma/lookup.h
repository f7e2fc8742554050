// Look-ups of bytes, arranged for speed. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "stages/gamma/curve.h"

namespace tavra {

// The low bytes of a curve's first 256 entries, ready for each of four neighbouring pixels: entry [k][i] has
// the byte for the input i at the place of byte k of a word. So four results are put together by "or" and
// written at once.
class ByteCurve {
  public:
    explicit ByteCurve(const GammaTable& table) { fill(table); }

    void fill(const GammaTable& table);
    std::uint8_t operator()(std::uint8_t value) const { return static_cast<std::uint8_t>(lanes_[0][value]); }
    const std::array<std::uint32_t, 256>& lane(std::size_t k) const { return lanes_[k]; }

  private:
    std::array<std::array<std::uint32_t, 256>, 4> lanes_{};
};

// Replaces every byte of a row, those in even columns by one curve, those in odd columns by the other.
void lookUpRow(std::uint8_t* row, std::size_t width, const ByteCurve& even, const ByteCurve& odd);

}  // namespace tavra
