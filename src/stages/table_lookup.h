// Loops that are nothing but table look-ups. They are compiled without the vectoriser, which would move each
// index into a vector and out again, at twice the time. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra {

// Out[i] = table[index[i]]; each index is below 256.
void lookUp(const std::array<std::uint16_t, 256>& table, const std::uint16_t* index, std::uint16_t* out,
            std::size_t count);

// The i-th four of `out` is first[p[0]] + second[p[1]] + third[p[2]], lowest 16 bits first, p being the i-th
// of `count` pixels that lie `pitch` bytes apart, 3 or 4.
void sumLookUps(const std::array<std::uint64_t, 256>& first, const std::array<std::uint64_t, 256>& second,
                const std::array<std::uint64_t, 256>& third, const std::uint8_t* pixels, std::size_t pitch,
                std::uint16_t* out, std::size_t count);

}  // namespace tavra
