#include "stages/table_lookup.h"

#include <bit>
#include <cstring>
#include <type_traits>

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

template <class Index>
void WordTable::lookUpAll(const Index* index, std::uint16_t* out, std::size_t count) const {
    using Pair = std::conditional_t<sizeof(Index) == 1, std::uint16_t, std::uint32_t>;
    constexpr unsigned kBits = 8 * sizeof(Index);
    std::size_t i = 0;
    for (; i + lanes_.size() <= count; i += lanes_.size()) {
        // Two in a load, two for themselves: that keeps load units and arithmetic equally busy.
        const auto pair = load<Pair>(index + i);
        const std::uint64_t four = lanes_[0][static_cast<Index>(pair)] | lanes_[1][pair >> kBits] |
                                   lanes_[2][index[i + 2]] | lanes_[3][index[i + 3]];
        std::memcpy(out + i, &four, sizeof four);
    }
    for (; i < count; ++i) out[i] = static_cast<std::uint16_t>(lanes_[0][index[i]]);
}

void WordTable::lookUp(const std::uint8_t* index, std::uint16_t* out, std::size_t count) const {
    lookUpAll(index, out, count);
}

void WordTable::lookUp(const std::uint16_t* index, std::uint16_t* out, std::size_t count) const {
    lookUpAll(index, out, count);
}

void lookUp(const std::int16_t* table, const std::int16_t* index, std::int16_t* __restrict out,
            std::size_t count) {
    // Eight in a round: one by one, counting would take as long as looking up.
    constexpr std::size_t kRound = 8;
    std::size_t i = 0;
    for (; i + kRound <= count; i += kRound) {
        for (std::size_t k = i; k < i + kRound; ++k) out[k] = table[index[k]];
    }
    for (; i < count; ++i) out[i] = table[index[i]];
}

void sumLookUps(const std::array<std::uint64_t, 256>& first, const std::array<std::uint64_t, 256>& second,
                const std::array<std::uint64_t, 256>& third, const std::uint8_t* pixels, std::size_t pitch,
                std::uint16_t* __restrict out, std::size_t count) {
    // Two bytes in a load, the third for itself.
    for (std::size_t i = 0; i < count; ++i, pixels += pitch, out += 4) {
        const std::uint16_t pair = load<std::uint16_t>(pixels);
        const std::uint64_t sum = first[pair & 0xFF] + second[pair >> 8] + third[pixels[2]];
        std::memcpy(out, &sum, sizeof sum);
    }
}

}  // namespace tavra
