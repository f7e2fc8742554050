// The 20 capability words of a camera, zero on the oldest types.
#pragma once

#include <array>
#include <cstdint>

namespace tavra {

struct CapabilityWords {
    static constexpr std::size_t kCount = 20;

    std::array<std::uint16_t, kCount> words{};

    bool bit(unsigned word, unsigned number) const { return (words[word] >> number & 1u) != 0; }
    std::uint16_t word(unsigned index) const { return words[index]; }
    // Word 7: tells variants of one product type apart.
    std::uint16_t samePid() const { return words[7]; }
};

}  // namespace tavra
