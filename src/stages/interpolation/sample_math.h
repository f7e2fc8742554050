// Arithmetic of single samples, in the forms that compilers turn into vector code of bytes and words.
// Any thread.
#pragma once

namespace tavra::interpolation {

// (a + b) >> 1. Processors have the mean that rounds up, for whole vectors of bytes or words; the truncated
// one is the same less one where the sum is odd.
template <class Sample>
constexpr Sample mean(Sample a, Sample b) {
    return static_cast<Sample>(((a + b + 1) >> 1) - ((a ^ b) & 1));
}

// `yes` where the mask is all ones, `no` where it is zero.
template <class Sample>
constexpr Sample pick(Sample mask, Sample yes, Sample no) {
    return static_cast<Sample>((yes & mask) | (no & ~mask));
}

}  // namespace tavra::interpolation
