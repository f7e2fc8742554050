// What the kernels that go by vectors have in common: vectors from memory and back, and the rows around the
// samples in work. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "stages/word_lanes.h"

namespace tavra::sharpness {

using Bytes = lanes::Vector;
using lanes::Words;

template <class Vector>
Vector load(const void* from) {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector>
void store(const Vector& vector, void* to) {
    std::memcpy(to, &vector, sizeof vector);
}

template <class Vector>
Vector larger(Vector a, Vector b) {
    return a > b ? a : b;
}

template <class Vector>
Vector smaller(Vector a, Vector b) {
    return a < b ? a : b;
}

// Columns of a chunk, one vector of samples.
template <class Sample>
inline constexpr std::size_t kChunkOf = lanes::kVectorBytes / sizeof(Sample);

// Of the eight neighbours, rounded.
inline Words meanOf(Words above, Words here, Words below, Words value) {
    return (above + here + below + (4 - value)) >> 3;
}

// The rows around a chunk: the sums of three, those of the last made here, and the samples of two.
template <class Sample>
struct Rows {
    const std::uint16_t *above, *here;
    std::uint16_t* below;
    const Sample *samples, *next;

    // - sums: where those of the chunk lie in their lines
    // - column: of the first sample
    Rows at(std::size_t sums, std::size_t column) const {
        return {above + sums, here + sums, below + sums, samples + column, next + column};
    }
};

}  // namespace tavra::sharpness
