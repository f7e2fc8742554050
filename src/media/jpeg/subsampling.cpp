#include "media/jpeg/subsampling.h"

#include <cstring>

namespace tavra::jpeg {
namespace {

// Both samples of pair j in one word, which is how a processor likes to take them apart.
unsigned sumOfPair(const std::uint8_t* row, std::size_t j) {
    std::uint16_t pair;
    std::memcpy(&pair, row + 2 * j, sizeof pair);
    return (pair & 0xFFU) + (pair >> 8);
}

}  // namespace

void halveColumns(const std::uint8_t* row, std::size_t halfWidth, std::uint8_t* __restrict half) {
    for (std::size_t j = 0; j < halfWidth; ++j) {
        const auto sum = static_cast<std::uint16_t>(sumOfPair(row, j) + (j & 1));
        half[j] = static_cast<std::uint8_t>(sum >> 1);
    }
}

void halveBoth(const std::uint8_t* upper, const std::uint8_t* lower, std::size_t halfWidth,
               std::uint8_t* __restrict half) {
    for (std::size_t j = 0; j < halfWidth; ++j) {
        const auto sum = static_cast<std::uint16_t>(sumOfPair(upper, j) + sumOfPair(lower, j) + 1 + (j & 1));
        half[j] = static_cast<std::uint8_t>(sum >> 2);
    }
}

}  // namespace tavra::jpeg
