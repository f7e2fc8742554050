#include "stages/table_lookup.h"

#include <cstring>

namespace tavra {
namespace {

std::uint16_t loadPair(const std::uint8_t* bytes) {
    std::uint16_t pair;
    std::memcpy(&pair, bytes, sizeof pair);
    return pair;
}

}  // namespace

void lookUp(const std::array<std::uint16_t, 256>& table, const std::uint16_t* index,
            std::uint16_t* __restrict out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) out[i] = table[index[i]];
}

void sumLookUps(const std::array<std::uint64_t, 256>& first, const std::array<std::uint64_t, 256>& second,
                const std::array<std::uint64_t, 256>& third, const std::uint8_t* pixels, std::size_t pitch,
                std::uint16_t* __restrict out, std::size_t count) {
    // Two bytes in a load, the third for itself: see lookUpRow.
    for (std::size_t i = 0; i < count; ++i, pixels += pitch, out += 4) {
        const std::uint16_t pair = loadPair(pixels);
        const std::uint64_t sum = first[pair & 0xFF] + second[pair >> 8] + third[pixels[2]];
        std::memcpy(out, &sum, sizeof sum);
    }
}

}  // namespace tavra
