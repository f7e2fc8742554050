// Functions of words that are straight from one power of two to the next, in vectors: instead of a look-up, a
// product and a sum. Pure; any thread.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "stages/word_lanes.h"

namespace tavra::lanes {

// The word times a slope plus an offset, cut off, `largest` at most. The exponent of the word times `scale`
// tells which: that of `least` and the seven above it have a slope and an offset each. Products below `least`
// count as `least`, those beyond take what stands eight exponents below.
//
// Product and sum are rounded together, once: so all machines have the same results.
struct PiecewiseLine {
    static constexpr std::size_t kPieces = 8;
    static constexpr int kMantissaBits = 23;

    float scale = 0;
    float least = 1;
    // At the exponent modulo 8, as the permutation of a vector takes it.
    std::array<float, kPieces> slopes{}, offsets{};
    std::uint16_t largest = 0xFFFF;

    std::size_t pieceOf(std::uint16_t word) const {
        const float scaled = std::max(static_cast<float>(word) * scale, least);
        return (std::bit_cast<std::uint32_t>(scaled) >> kMantissaBits) % kPieces;
    }

    // Only for words whose result is neither below 0 nor beyond 31 bits.
    std::uint16_t at(std::uint16_t word) const {
        const std::size_t piece = pieceOf(word);
        const float value = std::fma(static_cast<float>(word), slopes[piece], offsets[piece]);
        return static_cast<std::uint16_t>(std::min<std::int32_t>(static_cast<std::int32_t>(value), largest));
    }
};

#if defined(__AVX2__) && defined(__FMA__)

inline constexpr bool kPiecesAreQuick = true;

class PiecewiseVectors {
  public:
    explicit PiecewiseVectors(const PiecewiseLine& line)
        : scale_(_mm256_set1_ps(line.scale)),
          least_(_mm256_set1_ps(line.least)),
          slopes_(_mm256_loadu_ps(line.slopes.data())),
          offsets_(_mm256_loadu_ps(line.offsets.data())),
          largest_(Words{} + line.largest) {}

    // Widening and narrowing both keep to the halves of a vector, so that the order is kept as well.
    Words at(Words words) const {
        const auto narrow = reinterpret_cast<__m256i>(words);
        const __m256i zero = _mm256_setzero_si256();
        const __m256i low = atWide(_mm256_unpacklo_epi16(narrow, zero));
        const __m256i high = atWide(_mm256_unpackhi_epi16(narrow, zero));
        const auto values = reinterpret_cast<Words>(_mm256_packus_epi32(low, high));
        return values < largest_ ? values : largest_;
    }

  private:
    __m256i atWide(__m256i words) const {
        const __m256 numbers = _mm256_cvtepi32_ps(words);
        const __m256 scaled = _mm256_max_ps(_mm256_mul_ps(numbers, scale_), least_);
        const __m256i piece = _mm256_srli_epi32(_mm256_castps_si256(scaled), PiecewiseLine::kMantissaBits);
        const __m256 slopes = _mm256_permutevar8x32_ps(slopes_, piece);
        const __m256 offsets = _mm256_permutevar8x32_ps(offsets_, piece);
        return _mm256_cvttps_epi32(_mm256_fmadd_ps(numbers, slopes, offsets));
    }

    __m256 scale_, least_, slopes_, offsets_;
    Words largest_;
};

#else

inline constexpr bool kPiecesAreQuick = false;

class PiecewiseVectors {
  public:
    explicit PiecewiseVectors(const PiecewiseLine& line) : line_(line) {}

    Words at(Words words) const {
        for (std::size_t i = 0; i < kVectorBytes / 2; ++i) words[i] = line_.at(words[i]);
        return words;
    }

  private:
    PiecewiseLine line_;
};

#endif

}  // namespace tavra::lanes
