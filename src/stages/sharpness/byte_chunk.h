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
#include <cstring>
#include <utility>

#include "stages/sharpness/byte_corrections.h"
#include "stages/word_lanes.h"

namespace tavra::sharpness {

using Bytes = lanes::Vector;
using lanes::Words;

inline constexpr std::size_t kChunk = lanes::kVectorBytes;  // columns

template <class Vector = Bytes>
Vector load(const void* from) {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector>
void store(const Vector& vector, void* to) {
    std::memcpy(to, &vector, sizeof vector);
}

inline Bytes larger(Bytes a, Bytes b) {
    return a > b ? a : b;
}

inline Bytes smaller(Bytes a, Bytes b) {
    return a < b ? a : b;
}

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
    const Parted left = parted(load(samples - 1)), right = parted(load(samples + 1));
    const Words shared = left.odd + right.even;
    return {shared + left.even, shared + right.odd};
}

// Of the eight neighbours, rounded.
inline Words meanOf(Words above, Words here, Words below, Words value) {
    return (above + here + below + (4 - value)) >> 3;
}

// The rows around a chunk: the sums of three, those of the last made here, and the samples of two.
struct Rows {
    const std::uint16_t *above, *here;
    std::uint16_t* below;
    const std::uint8_t *samples, *next;

    // - sums: where those of the chunk lie in their lines
    // - column: of the first sample
    Rows at(std::size_t sums, std::size_t column) const {
        return {above + sums, here + sums, below + sums, samples + column, next + column};
    }
};

// How far samples are from the mean of their neighbours, beyond the coring.
struct Excess {
    Bytes size;
    Bytes darker;  // all ones where the sample is the darker one
};

// Inlined by force: what it takes and gives are registers.
[[gnu::always_inline]] inline Excess excessAt(const Rows& chunk, Bytes coring) {
    const Parted above = loadSums(chunk.above), here = loadSums(chunk.here);
    const Parted below = sumsOfThree(chunk.next);
    storeSums(below, chunk.below);
    const Bytes samples = load(chunk.samples);
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
