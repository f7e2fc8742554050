// What sharpening adds to a pixel of words, by how far its difference exceeds the coring. No lock; the stage
// that owns it has one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "stages/piecewise_lanes.h"

namespace tavra::sharpness {

// The largest difference that a table has an entry for, and the largest correction. Differences beyond, of
// samples of more than 12 bits, count as this one.
inline constexpr std::int16_t kLargestDifference = 4095;

// For each excess the running sum of single precision that stands for its product with the gain, and the
// correction that comes of it; those for none are 0.
using CorrectionSums = std::array<float, std::size_t{kLargestDifference} + 1>;
using WordCorrectionTable = std::array<std::uint16_t, std::size_t{kLargestDifference} + 1>;

// Finds lines for the table of a gain in hundredths. False if there are none; of those that are found every
// entry was compared, as vectors have it.
//
// From one power of two to the next the running sum grows in equal steps, which are the gain's rounded to
// what it can hold there.
bool fitPieces(lanes::PiecewiseLine& line, const WordCorrectionTable& table, const CorrectionSums& sums,
               std::uint16_t gain);

class WordCorrections {
  public:
    void build(const WordCorrectionTable& table, const CorrectionSums& sums, std::uint16_t gain,
               std::int16_t coring);

    // By the excess of a difference over the coring. Null for the few gains that have none (of those up to
    // 800, only 70), and on machines where look-ups are quicker.
    const lanes::PiecewiseLine* line() const { return hasLine_ ? &line_ : nullptr; }
    // To be read at differences of -4095 to 4095, zero up to the coring.
    const std::int16_t* table() const { return table_.data() + kLargestDifference; }

  private:
    bool hasLine_ = false;
    lanes::PiecewiseLine line_;
    std::array<std::int16_t, 2 * std::size_t{kLargestDifference} + 1> table_{};
};

}  // namespace tavra::sharpness
