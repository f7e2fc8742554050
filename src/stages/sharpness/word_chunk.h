// A vector of word samples at a time: how far they are from the mean of their neighbours, and what a
// correction makes of them. Pure; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

#include "stages/sharpness/rows.h"
#include "stages/sharpness/word_corrections.h"

namespace tavra::sharpness {

inline constexpr std::size_t kWordChunk = kChunkOf<std::uint16_t>;  // columns

// Each sample with its left and its right neighbour.
inline Words sumsOfThree(const std::uint16_t* samples) {
    return load<Words>(samples - 1) + load<Words>(samples) + load<Words>(samples + 1);
}

// Of samples from the mean of their neighbours, with a sign. Inlined by force: what it takes and gives are
// registers.
[[gnu::always_inline]] inline Words differenceAt(const Rows<std::uint16_t>& chunk) {
    const Words below = sumsOfThree(chunk.next);
    store(below, chunk.below);
    const auto samples = load<Words>(chunk.samples);
    return samples - meanOf(load<Words>(chunk.above), load<Words>(chunk.here), below, samples);
}

// The correction has the sign of the difference, and is 0 for one within the coring. Samples may lie above
// the maximum, up to 4095, and are held to it only where they are made brighter.
inline Words corrected(Words samples, Words difference, Words correction, Words coring, Words maximum) {
    using lanes::SignedWords;
    const auto stays = reinterpret_cast<Words>(reinterpret_cast<SignedWords>(coring + 1) >
                                               reinterpret_cast<SignedWords>(difference));
    const auto sum = reinterpret_cast<SignedWords>(samples + correction);
    return smaller(reinterpret_cast<Words>(larger(sum, SignedWords{})), maximum | stays);
}

// A correction line, for differences.
class WordLine {
  public:
    WordLine(const lanes::PiecewiseLine& line, Words coring) : line_(line), coring_(coring) {}

    [[gnu::always_inline]] Words at(Words difference) const {
        const Words excess = lanes::heldDifference(lanes::magnitude(difference), coring_);
        return lanes::withSign(line_.at(excess), difference);
    }

  private:
    lanes::PiecewiseVectors line_;
    Words coring_;
};

}  // namespace tavra::sharpness
