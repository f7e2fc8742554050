// The pixel work of sharpening, in place. No lock; any thread, with an image and a line store of its own.
#pragma once

#include <cstddef>
#include <cstdint>

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

// Words of a line store for an image of this width: three lines of words, two of samples.
template <class Sample>
constexpr std::size_t lineStoreWords(std::size_t width) {
    return 3 * width + 2 * width * sizeof(Sample) / sizeof(std::uint16_t);
}

// The lines that follow the work down the image: of three rows the horizontal sums of three values, of two
// rows the luminance.
template <class Sample>
class LineStore {
  public:
    LineStore(std::uint16_t* words, std::size_t width) : words_(words), width_(width) {}

    std::uint16_t* sums(std::size_t y) const { return words_ + y % 3 * width_; }
    Sample* luma(std::size_t y) const {
        return reinterpret_cast<Sample*>(words_ + 3 * width_) + y % 2 * width_;
    }

  private:
    std::uint16_t* words_;
    std::size_t width_;
};

// kChannels: 1 grey, 3 B, G, R, 4 with a fourth sample that stays.
template <class Sample, unsigned kChannels>
void sharpen(const Image<Sample>& image, const Corrections& corrections, LineStore<Sample> lines);

}  // namespace tavra::sharpness
