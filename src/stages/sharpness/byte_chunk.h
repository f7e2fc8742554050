// A vector of byte samples at a time: how far they are from the mean of their neighbours, and the correction
// for it. Pure; any thread.
//
// A vector has room for the sums of half its samples. The samples of even and of odd columns are therefore
// parted into words of their own, by masks and shifts, and joined again behind the arithmetic: halves that
// keep their order would have to cross the vector.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "stages/sharpness/byte_corrections.h"
#include "stages/sharpness/rows.h"

namespace tavra::sharpness {

inline constexpr std::size_t kChunk = kChunkOf<std::uint8_t>;  // columns

struct Parted {
    Words even, odd;
};

inline Parted parted(Bytes bytes) {
    const auto pairs = reinterpret_cast<Words>(bytes);
    return {pairs & 0xFF, pairs >> 8};
}

// The low bytes.
inline Bytes joined(const Parted& words) {
    return reinterpret_cast<Bytes>((words.even & 0xFF) | (words.odd << 8));
}

// Sums lie in their line chunk by chunk, the even columns of each ahead of the odd ones.
inline Parted loadSums(const std::uint16_t* sums) {
    return {load<Words>(sums), load<Words>(sums + kChunk / 2)};
}

inline void storeSums(const Parted& sums, std::uint16_t* line) {
    store(sums.even, line);
    store(sums.odd, line + kChunk / 2);
}

// Each sample with its left and its right neighbour.
inline Parted sumsOfThree(const std::uint8_t* samples) {
    const Parted left = parted(load<Bytes>(samples - 1)), right = parted(load<Bytes>(samples + 1));
    const Words shared = left.odd + right.even;
    return {shared + left.even, shared + right.odd};
}

// How far samples are from the mean of their neighbours, beyond the coring.
struct Excess {
    Bytes size;
    Bytes darker;  // all ones where the sample is the darker one
};

// Inlined by force: what it takes and gives are registers.
[[gnu::always_inline]] inline Excess excessAt(const Rows<std::uint8_t>& chunk, Bytes coring) {
    const Parted above = loadSums(chunk.above), here = loadSums(chunk.here);
    const Parted below = sumsOfThree(chunk.next);
    storeSums(below, chunk.below);
    const auto samples = load<Bytes>(chunk.samples);
    const Parted values = parted(samples);
    const Bytes means = joined({meanOf(above.even, here.even, below.even, values.even),
                                meanOf(above.odd, here.odd, below.odd, values.odd)});
    const Bytes difference = larger(samples, means) - smaller(samples, means);
    return {larger(difference, coring) - coring, reinterpret_cast<Bytes>(samples < means)};
}

// The coring, in all bytes: no difference is above 255.
inline Bytes coringBytes(std::int16_t coring) {
    return Bytes{} + static_cast<std::uint8_t>(std::min<std::int16_t>(coring, 255));
}

// A correction line, in all words.
template <std::size_t kExceptions>
class LineVectors {
  public:
    explicit LineVectors(const CorrectionLine& line)
        : factor_(Words{} + line.factor), offset_(Words{} + line.offset), shift_(line.shift) {
        for (std::size_t k = 0; k < kExceptions; ++k) {
            excess_[k] = Words{} + line.exceptions[k].excess;
            change_[k] = Words{} + line.exceptions[k].change;
        }
    }

    Parted at(Bytes excess) const {
        const Parted words = parted(excess);
        return {at(words.even), at(words.odd)};
    }

  private:
    Words at(Words excess) const {
        Words correction = (lanes::highProduct(excess << 8, factor_) + offset_) >> shift_;
        for (std::size_t k = 0; k < kExceptions; ++k) {
            correction += reinterpret_cast<Words>(excess == excess_[k]) & change_[k];
        }
        return correction;
    }

    Words factor_, offset_;
    int shift_;
    Words excess_[kExceptions + 1], change_[kExceptions + 1];
};

// Calls `pass(std::integral_constant<std::size_t, n>)` with the number of exceptions of the line.
template <class Pass, std::size_t kExceptions = 0>
void withExceptions(const CorrectionLine& line, Pass pass) {
    if constexpr (kExceptions < CorrectionLine::kMostExceptions) {
        if (line.exceptionCount > kExceptions) return withExceptions<Pass, kExceptions + 1>(line, pass);
    }
    pass(std::integral_constant<std::size_t, kExceptions>());
}

}  // namespace tavra::sharpness
