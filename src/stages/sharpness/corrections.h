// What sharpening adds to a pixel for a difference from its neighbours. No lock; the stage that owns it has
// one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "stages/sharpness/byte_corrections.h"

namespace tavra::sharpness {

// The largest difference that a table has an entry for.
inline constexpr std::int16_t kLargestDifference = 4095;

class Corrections {
  public:
    void build(std::uint16_t gain, std::uint16_t coring);

    // A difference of this size is still left alone.
    std::int16_t coring() const { return coring_; }

    // Differences of bytes, by their excess over the coring.
    const ByteCorrections& bytes() const { return bytes_; }
    // A table to be read at -4095 to 4095, zero up to the coring.
    const std::int16_t* words() const { return words_.data() + kLargestDifference; }

  private:
    std::int16_t coring_ = 0;
    ByteCorrections bytes_;
    std::array<std::int16_t, 2 * std::size_t{kLargestDifference} + 1> words_{};
};

}  // namespace tavra::sharpness
