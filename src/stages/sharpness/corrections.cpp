#include "stages/sharpness/corrections.h"

#include <algorithm>

namespace tavra::sharpness {

// The product of excess and gain is a running sum of single precision, whose rounding is part of the result.
void Corrections::build(std::uint16_t gain, std::uint16_t coring) {
    coring_ = static_cast<std::int16_t>(std::min<std::uint16_t>(coring, kLargestDifference));
    const float step = static_cast<float>(gain) / 100;
    float product = 0;
    std::array<std::uint16_t, kLargestDifference + 1> byExcess{};
    for (std::size_t excess = 1; excess < byExcess.size(); ++excess) {
        product += step;
        const float rounded = product + 0.5F;  // cut off to the nearest, halves up
        byExcess[excess] = static_cast<std::uint16_t>(product >= 4095.0F ? kLargestDifference : rounded);
    }
    for (std::int16_t difference = 0; difference <= kLargestDifference; ++difference) {
        const auto correction = static_cast<std::int16_t>(
            difference > coring_ ? byExcess[static_cast<std::size_t>(difference - coring_)] : 0);
        words_[std::size_t{kLargestDifference} + difference] = correction;
        words_[std::size_t{kLargestDifference} - difference] = static_cast<std::int16_t>(-correction);
    }
    ByteCorrectionTable bytes;
    std::copy_n(byExcess.begin(), bytes.size(), bytes.begin());
    bytes_.build(bytes, gain);
}

}  // namespace tavra::sharpness
