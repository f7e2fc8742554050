// The Huffman tables of the JPEG encoder and its bit accumulator. Both belong to one encoder; one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "media/jpeg/codes.h"
#include "media/jpeg/forward_dct.h"
#include "media/jpeg/memory_buffer.h"

namespace tavra {

// A table as it stands in the stream: how many codes there are of each length from 1 to 16 bits, and their
// symbols in the order of their codes.
struct JpegHuffmanCodes {
    std::array<std::uint8_t, 16> counts;
    std::span<const std::uint8_t> symbols;
};

class CJPEGEncoderHuffmanTable {
  public:
    enum class Class : unsigned { Dc = 0, Ac = 1 };

    // The tables of ITU T.81 Annex K: K.3 to K.6.
    static const JpegHuffmanCodes kDcLuminance;
    static const JpegHuffmanCodes kDcChrominance;
    static const JpegHuffmanCodes kAcLuminance;
    static const JpegHuffmanCodes kAcChrominance;

    // Loads the codes, and makes the table that the coder looks up. OutOfMemory leaves nothing loaded.
    JpegError Load(unsigned id, Class tableClass, const JpegHuffmanCodes& codes);

    // The next image may do without the table.
    void Clear() { lookUp_.Free(); }

    bool initialized() const { return lookUp_.size() != 0; }
    unsigned id() const { return id_; }
    Class tableClass() const { return class_; }
    const std::array<std::uint8_t, 16>& counts() const { return counts_; }
    std::span<const std::uint8_t> symbols() const { return {symbols_.data(), symbolCount_}; }

    // At [symbol]: the code, shifted left to make room for the extra bits that follow it (as many as the
    // lower four bits of the symbol say), times 32, plus the bits of both together. 0 for symbols without a
    // code.
    const std::uint32_t* lookUp() const { return reinterpret_cast<const std::uint32_t*>(lookUp_.data()); }

  private:
    unsigned id_ = 0;
    Class class_ = Class::Dc;
    std::array<std::uint8_t, 16> counts_ = {};
    std::array<std::uint8_t, 256> symbols_ = {};
    std::size_t symbolCount_ = 0;
    CMemoryBuffer lookUp_;
};

}  // namespace tavra
