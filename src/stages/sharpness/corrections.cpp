#include "stages/sharpness/corrections.h"

#include <algorithm>
#include <cstddef>

namespace tavra::sharpness {
namespace {

// The product of excess and gain is a running sum of single precision, whose rounding is part of the result.
void sumUp(std::uint16_t gain, CorrectionSums& sums) {
    const float step = static_cast<float>(gain) / 100;
    sums[0] = 0;
    for (std::size_t excess = 1; excess < sums.size(); ++excess) sums[excess] = sums[excess - 1] + step;
}

std::uint16_t correctionFor(float sum) {
    const float rounded = sum + 0.5F;  // cut off to the nearest, halves up
    return static_cast<std::uint16_t>(sum >= 4095.0F ? kLargestDifference : rounded);
}

}  // namespace

void Corrections::build(std::uint16_t gain, std::uint16_t coring) {
    coring_ = static_cast<std::int16_t>(std::min<std::uint16_t>(coring, kLargestDifference));
    CorrectionSums sums;
    sumUp(gain, sums);
    WordCorrectionTable words;
    std::transform(sums.begin(), sums.end(), words.begin(), correctionFor);
    words_.build(words, sums, gain, coring_);
    ByteCorrectionTable bytes;
    std::copy_n(words.begin(), bytes.size(), bytes.begin());
    bytes_.build(bytes, gain);
}

}  // namespace tavra::sharpness
