// Noise that follows from a seed: the same on every machine. Plain values, one owner each.
#pragma once

#include <array>
#include <cstdint>

namespace tavra::usbd {

// 64 well mixed bits at a time (SplitMix64, Steele, Lea and Flood 2014).
class RandomBits {
  public:
    RandomBits(std::uint64_t seed, std::uint64_t stream) : state_(seed * 0x9E3779B97F4A7C15u ^ stream << 17) {
        next();
    }

    std::uint64_t next() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t bits = state_;
        bits = (bits ^ bits >> 30) * 0xBF58476D1CE4E5B9u;
        bits = (bits ^ bits >> 27) * 0x94D049BB133111EBu;
        return bits ^ bits >> 31;
    }

  private:
    std::uint64_t state_;
};

inline constexpr std::size_t kNoiseValues = 1 << 14;

// Normally distributed values (mean 0, deviation 1), as the sum of twelve even ones: no function of the
// machine's mathematics library takes part.
const std::array<float, kNoiseValues>& noiseValues();

// The noise of one row, value after value.
class NoiseRow {
  public:
    NoiseRow(std::uint32_t seed, std::uint32_t variant, std::uint32_t panel, std::uint32_t row)
        : random_(seed, (std::uint64_t{variant} << 44) ^ (std::uint64_t{panel} << 16) ^ row),
          values_(noiseValues()) {}

    float next() {
        if (left_ == 0) {
            bits_ = random_.next();
            left_ = 4;
        }
        --left_;
        const float value = values_[bits_ % kNoiseValues];
        bits_ >>= 16;
        return value;
    }

  private:
    RandomBits random_;
    const std::array<float, kNoiseValues>& values_;
    std::uint64_t bits_ = 0;
    int left_ = 0;
};

}  // namespace tavra::usbd
