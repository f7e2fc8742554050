// The pixel work of sharpening, in place. No lock; any thread, with an image and a line store of its own.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stages/byte_lanes.h"
#include "stages/sharpness/corrections.h"

namespace tavra::sharpness {

template <class Sample>
struct Image {
    Sample* pixels;
    std::size_t stride;  // bytes
    std::size_t width, height;
    std::int16_t maximum;  // of a sample

    Sample* row(std::size_t y) const {
        if constexpr (sizeof(Sample) == 1) {
            return pixels + y * stride;
        } else {
            return reinterpret_cast<Sample*>(reinterpret_cast<unsigned char*>(pixels) + y * stride);
        }
    }
};

// Lines are worked on in whole vectors, whose last one ends behind the image.
constexpr std::size_t lineLength(std::size_t width) {
    return (width / lanes::kVectorBytes + 2) * lanes::kVectorBytes;
}

// Words of a line store for an image of this width: three lines of words, two of samples.
template <class Sample>
constexpr std::size_t lineStoreWords(std::size_t width) {
    return lineLength(width) * (3 + 2 * sizeof(Sample) / sizeof(std::uint16_t));
}

// The lines that follow the work down the image: of three rows the horizontal sums of three values, of two
// rows the luminance.
template <class Sample>
class LineStore {
  public:
    LineStore(std::uint16_t* words, std::size_t width) : words_(words), length_(lineLength(width)) {}

    std::uint16_t* sums(std::size_t y) const { return words_ + y % 3 * length_; }
    Sample* luma(std::size_t y) const {
        return reinterpret_cast<Sample*>(words_ + 3 * length_) + y % 2 * length_;
    }

  private:
    std::uint16_t* words_;
    std::size_t length_;
};

// kChannels: 1 grey, 3 B, G, R, 4 with a fourth sample that stays.
template <unsigned kChannels>
void sharpen(const Image<std::uint8_t>& image, const Corrections& corrections, LineStore<std::uint8_t> lines);
template <unsigned kChannels>
void sharpen(const Image<std::uint16_t>& image, const Corrections& corrections,
             LineStore<std::uint16_t> lines);

}  // namespace tavra::sharpness
