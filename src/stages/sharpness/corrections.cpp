#include "stages/sharpness/corrections.h"

#include <algorithm>

namespace tavra::sharpness {
namespace {

constexpr std::int16_t lowByte(std::int16_t value) {
    return static_cast<std::int16_t>(value & 0xFF);
}

constexpr std::int16_t negative(std::int16_t value) {
    return static_cast<std::int16_t>(-value);
}

constexpr PixelCorrection ofPixel(std::int16_t value) {
    return {{value, value, value, 0}};
}

}  // namespace

// The product of excess and gain is a running sum of single precision, whose rounding is part of the result.
void Corrections::build(std::uint16_t gain, std::uint16_t coring) {
    coring_ = static_cast<std::int16_t>(std::min<std::uint16_t>(coring, kLargestDifference));
    const float step = static_cast<float>(gain) / 100;
    float product = 0;
    for (std::int16_t difference = 0; difference <= kLargestDifference; ++difference) {
        if (difference > coring_) product += step;
        const float rounded = product + 0.5F;  // cut off to the nearest, halves up
        const std::int16_t correction =
            product >= 4095.0F ? kLargestDifference : static_cast<std::int16_t>(rounded);
        words_[std::size_t{kLargestDifference} + difference] = correction;
        words_[std::size_t{kLargestDifference} - difference] = negative(correction);
        if (difference > kLargestByteDifference) continue;
        // By design: in byte images the low byte of a correction acts, so that one of 300 acts as 44. Only a
        // colour pixel that becomes darker takes it whole.
        greyBytes_[std::size_t{kLargestByteDifference} + difference] = lowByte(correction);
        greyBytes_[std::size_t{kLargestByteDifference} - difference] = negative(lowByte(correction));
        colorBytes_[std::size_t{kLargestByteDifference} + difference] = ofPixel(lowByte(correction));
        colorBytes_[std::size_t{kLargestByteDifference} - difference] = ofPixel(negative(correction));
    }
}

}  // namespace tavra::sharpness
