// What sharpening adds to a pixel for a difference from its neighbours. No lock; the stage that owns it has
// one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra::sharpness {

// The largest difference that a table has an entry for.
inline constexpr std::int16_t kLargestDifference = 4095;
inline constexpr std::int16_t kLargestByteDifference = 255;

// The correction of each sample of a pixel: the same for B, G and R, none for a fourth. Eight bytes, to be
// copied at once.
struct PixelCorrection {
    std::int16_t samples[4];
};

class Corrections {
  public:
    void build(std::uint16_t gain, std::uint16_t coring);

    // A difference of this size is still left alone.
    std::int16_t coring() const { return coring_; }

    // Tables to be read at -255 to 255 (bytes) and -4095 to 4095 (words). Zero up to the coring.
    const std::int16_t* greyBytes() const { return greyBytes_.data() + kLargestByteDifference; }
    const PixelCorrection* colorBytes() const { return colorBytes_.data() + kLargestByteDifference; }
    const std::int16_t* words() const { return words_.data() + kLargestDifference; }

  private:
    template <class Entry, std::int16_t kLargest>
    using Table = std::array<Entry, 2 * std::size_t{kLargest} + 1>;

    std::int16_t coring_ = 0;
    Table<std::int16_t, kLargestByteDifference> greyBytes_{};
    Table<PixelCorrection, kLargestByteDifference> colorBytes_{};
    Table<std::int16_t, kLargestDifference> words_{};
};

}  // namespace tavra::sharpness
