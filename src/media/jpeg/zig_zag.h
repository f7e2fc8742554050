// The order in which the 64 coefficients of a block, and their step sizes, stand in a stream.
#pragma once

#include <array>
#include <cstdint>

namespace tavra::jpeg {

struct Frequency {
    std::uint8_t vertical;
    std::uint8_t horizontal;
};

// ITU T.81 figure A.6: diagonal after diagonal, the odd ones downwards and the even ones upwards.
constexpr std::array<Frequency, 64> makeZigZag() {
    std::array<Frequency, 64> order = {};
    std::size_t k = 0;
    for (int diagonal = 0; diagonal < 15; ++diagonal) {
        for (int i = 0; i <= diagonal; ++i) {
            const int row = diagonal % 2 == 1 ? i : diagonal - i;
            const int column = diagonal - row;
            if (row > 7 || column > 7) continue;
            order[k++] = {static_cast<std::uint8_t>(row), static_cast<std::uint8_t>(column)};
        }
    }
    return order;
}

inline constexpr std::array<Frequency, 64> kZigZag = makeZigZag();

}  // namespace tavra::jpeg
