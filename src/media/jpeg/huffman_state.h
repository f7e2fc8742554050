// The entropy coder of the JPEG encoder: blocks of coefficients to bytes. Belongs to one encoder; one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "media/jpeg/bit_stream_output.h"
#include "media/jpeg/codes.h"
#include "media/jpeg/forward_dct.h"
#include "media/jpeg/huffman_table.h"

namespace tavra {

// The bits that do not make a byte yet.
class CJPEGEncoderHuffmanState {
  public:
    // No block takes more bytes: 64 coefficients of at most 16 + 11 bits, each byte followed by a zero, and
    // the bits from before.
    static constexpr std::size_t kLargestBlock = 512;

    // A new, empty accumulator.
    JpegError Allocate();
    void Reset();

    // Appends a block to the output. `lastDc` is that of the component's block before, and becomes this
    // one's. Internal if there is no accumulator, a table is not loaded, or it has no code for a coefficient.
    JpegError Encode(const jpeg::Block& block, std::int16_t& lastDc, const CJPEGEncoderHuffmanTable& dc,
                     const CJPEGEncoderHuffmanTable& ac, CBitStreamOutput& output);

    // Appends what is left of bits, filled up with ones.
    JpegError Flush(CBitStreamOutput& output);

  private:
    // Lets `work` put bits; false from it means that there is no code for them.
    template <class Work>
    JpegError append(CBitStreamOutput& output, Work&& work);

    struct Accumulator {
        std::uint64_t bits = 0;  // the lower `count` are waiting
        unsigned count = 0;      // at most 63
    };
    std::unique_ptr<Accumulator> accumulator_;
};

}  // namespace tavra
