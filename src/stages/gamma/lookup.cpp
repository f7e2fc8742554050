#include "stages/gamma/lookup.h"

#include <bit>
#include <cstring>

namespace tavra {

static_assert(std::endian::native == std::endian::little, "byte 0 of a word is the pixel on the left");

void ByteCurve::fill(const GammaTable& table) {
    for (std::size_t k = 0; k < lanes_.size(); ++k) {
        for (std::size_t i = 0; i < lanes_[k].size(); ++i)
            lanes_[k][i] = std::uint32_t{static_cast<std::uint8_t>(table[i])} << (8 * k);
    }
}

void lookUpRow(std::uint8_t* row, std::size_t width, const ByteCurve& even, const ByteCurve& odd) {
    const auto& lane0 = even.lane(0);
    const auto& lane1 = odd.lane(1);
    const auto& lane2 = even.lane(2);
    const auto& lane3 = odd.lane(3);
    // Half of the bytes are read as pairs, half for themselves: that keeps the load units and the arithmetic
    // of today's processors equally busy.
    const auto four = [&](const std::uint8_t* bytes) {
        std::uint16_t pair;
        std::memcpy(&pair, bytes, sizeof pair);
        return lane0[pair & 0xFF] | lane1[pair >> 8] | lane2[bytes[2]] | lane3[bytes[3]];
    };
    std::size_t x = 0;
    for (; x + 8 <= width; x += 8) {
        const std::uint64_t low = four(row + x);
        const std::uint64_t eight = low | std::uint64_t{four(row + x + 4)} << 32;
        std::memcpy(row + x, &eight, sizeof eight);
    }
    for (; x < width; ++x) row[x] = (x & 1) == 0 ? even(row[x]) : odd(row[x]);
}

}  // namespace tavra
