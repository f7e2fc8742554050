// A quantisation table of the JPEG encoder. Belongs to one encoder; one thread.
#pragma once

#include <array>
#include <cstdint>

#include "media/jpeg/forward_dct.h"

namespace tavra {

// Step sizes in zig-zag order.
using JpegSteps = std::array<std::uint8_t, 64>;

class CJPEGEncoderQuantTable {
  public:
    // The tables of ITU T.81 Annex K: K.1 and K.2.
    static const JpegSteps kLuminance;
    static const JpegSteps kChrominance;

    // Loads the steps as they are.
    void Load(unsigned id, const JpegSteps& steps);

    // Makes the steps coarser below quality 50 and finer above it, each from 1 to 255.
    // By design quality 0 leaves them as they are.
    void Scale(unsigned quality);

    // The table that quantises, from the steps.
    void BuildForward();

    // The next image may do without the table.
    void Clear() { initialized_ = false; }

    unsigned id() const { return id_; }
    unsigned precision() const { return 0; }  // steps of 8 bits
    bool initialized() const { return initialized_; }
    const JpegSteps& steps() const { return steps_; }
    const jpeg::ForwardTable& forward() const { return forward_; }

  private:
    unsigned id_ = 0;
    bool initialized_ = false;
    JpegSteps steps_ = {};
    jpeg::ForwardTable forward_ = {};
};

}  // namespace tavra
