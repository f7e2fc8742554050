// What automatic white balance works from: how often each level stands at each of the four positions of a
// mosaic's cell, and the gains of R and B that follow. No lock; the stage that owns it has one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/status.h"

namespace tavra::white_balance {

inline constexpr std::uint16_t kUnityGain = 128;
inline constexpr std::uint16_t kMaximumBits = 12;

// R, Gr, Gb, B; 128 is 1.0.
using Gains = std::array<std::uint16_t, 4>;

template <class Sample>
struct Mosaic {
    Sample* samples;
    std::size_t stride;  // bytes
    std::size_t width, height;
    std::uint16_t colorArray;
    std::uint16_t bits;

    Sample* row(std::size_t y) const {
        if constexpr (sizeof(Sample) == 1) {
            return samples + y * stride;
        } else {
            return reinterpret_cast<Sample*>(reinterpret_cast<unsigned char*>(samples) + y * stride);
        }
    }
};

// How often each level occurs at one position. Samples above 12 bits count as the highest level.
struct Histogram {
    static constexpr std::size_t kLevels = std::size_t{1} << kMaximumBits;

    std::array<std::uint32_t, kLevels> levels{};
    std::uint32_t count = 0;
    double mean = 0;  // 0 without samples
};

// One for each position (x & 1) + 2 (y & 1).
using Histograms = std::array<Histogram, 4>;

template <class Sample>
void measure(const Mosaic<Sample>& mosaic, Histograms& histograms);

// Sets the gains of R and B so that their means after the gain, clipped to the depth, reach the mean of G;
// the gains of G stay. 87 for an array that is none of 1 to 5, with the thread's last error for 0.
Status balance(const Histograms& histograms, std::uint16_t colorArray, std::uint16_t bits, Gains& gains);

}  // namespace tavra::white_balance
