#include "stages/table_lookup.h"

#include <bit>
#include <cstring>

namespace tavra {
namespace {

static_assert(std::endian::native == std::endian::little, "the lowest bits of a word are its first part");

template <class Word>
Word load(const void* from) {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

}  // namespace

WordTable::WordTable(const std::array<std::uint16_t, 256>& entries) {
    for (std::size_t k = 0; k < lanes_.size(); ++k) {
        for (std::size_t i = 0; i < entries.size(); ++i) lanes_[k][i] = std::uint64_t{entries[i]} << (16 * k);
    }
}

void WordTable::lookUp(const std::uint16_t* index, std::uint16_t* out, std::size_t count) const {
    std::size_t i = 0;
    for (; i + lanes_.size() <= count; i += lanes_.size()) {
        const std::uint32_t pair = load<std::uint32_t>(index + i);
        const std::uint64_t four = lanes_[0][pair & 0xFFFF] | lanes_[1][pair >> 16] |
                                   lanes_[2][index[i + 2]] | lanes_[3][index[i + 3]];
        std::memcpy(out + i, &four, sizeof four);
    }
    for (; i < count; ++i) out[i] = static_cast<std::uint16_t>(lanes_[0][index[i]]);
}

void sumLookUps(const std::array<std::uint64_t, 256>& first, const std::array<std::uint64_t, 256>& second,
                const std::array<std::uint64_t, 256>& third, const std::uint8_t* pixels, std::size_t pitch,
                std::uint16_t* __restrict out, std::size_t count) {
    // Two bytes in a load, the third for itself: see lookUpRow.
    for (std::size_t i = 0; i < count; ++i, pixels += pitch, out += 4) {
        const std::uint16_t pair = load<std::uint16_t>(pixels);
        const std::uint64_t sum = first[pair & 0xFF] + second[pair >> 8] + third[pixels[2]];
        std::memcpy(out, &sum, sizeof sum);
    }
}

}  // namespace tavra
