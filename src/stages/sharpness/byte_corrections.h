// What sharpening adds to a pixel of bytes, by how far its difference exceeds the coring. No lock; the stage
// that owns it has one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "stages/table_lookup.h"

namespace tavra::sharpness {

// The correction for each excess; that for none is 0.
using ByteCorrectionTable = std::array<std::uint16_t, 256>;

// A table as a product, which vectors do several times faster than look-ups:
// (256 * excess * factor / 65536 + offset) >> shift, the division cut off.
//
// Where the exact product of excess and gain is a half, the running sum from which the table is made has
// sometimes lost it and sometimes not: the few such entries that no factor has are told for themselves.
struct CorrectionLine {
    static constexpr std::size_t kMostExceptions = 4;
    struct Exception {
        std::uint16_t excess, change;  // the change is modulo 65536
    };

    std::uint16_t factor = 0, offset = 0, shift = 0;
    std::array<Exception, kMostExceptions> exceptions{};
    std::size_t exceptionCount = 0;

    // Without the exceptions.
    std::uint16_t at(std::uint16_t excess) const {
        const std::uint32_t product = (std::uint32_t{excess} << 8) * factor >> 16;
        return static_cast<std::uint16_t>(static_cast<std::uint16_t>(product + offset) >> shift);
    }
};

// Finds a line for a table of round(excess * gain / 100). False if there is none; every entry of one that is
// found was compared.
bool fitLine(CorrectionLine& line, const ByteCorrectionTable& table, std::uint16_t gain);

class ByteCorrections {
  public:
    void build(const ByteCorrectionTable& table, std::uint16_t gain);

    // Null for the gains that have none.
    const CorrectionLine* line() const { return hasLine_ ? &line_ : nullptr; }
    const WordTable& table() const { return table_; }

  private:
    bool hasLine_ = false;
    CorrectionLine line_;
    WordTable table_;
};

}  // namespace tavra::sharpness
