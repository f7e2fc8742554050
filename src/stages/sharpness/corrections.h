// What sharpening adds to a pixel for a difference from its neighbours. No lock; the stage that owns it has
// one.
#pragma once

#include <cstdint>

#include "stages/sharpness/byte_corrections.h"
#include "stages/sharpness/word_corrections.h"

namespace tavra::sharpness {

class Corrections {
  public:
    void build(std::uint16_t gain, std::uint16_t coring);

    // A difference of this size is still left alone.
    std::int16_t coring() const { return coring_; }

    // Those of bytes are told by the excess of a difference over the coring.
    const ByteCorrections& bytes() const { return bytes_; }
    const WordCorrections& words() const { return words_; }

  private:
    std::int16_t coring_ = 0;
    ByteCorrections bytes_;
    WordCorrections words_;
};

}  // namespace tavra::sharpness
