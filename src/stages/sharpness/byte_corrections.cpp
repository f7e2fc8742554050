#include "stages/sharpness/byte_corrections.h"

namespace tavra::sharpness {
namespace {

// As many fractional bits as the largest correction leaves room for in a word. False for gains of 256 and
// more.
bool chooseScale(CorrectionLine& line, std::uint16_t gain) {
    constexpr std::uint32_t kLargestFactor = 65535, kHundred = 100;
    for (std::uint32_t bits = 9; bits-- > 1;) {
        const std::uint32_t factor = (gain * (256u << bits) + kHundred / 2) / kHundred;
        if (factor > kLargestFactor) continue;
        line.factor = static_cast<std::uint16_t>(factor);
        line.offset = static_cast<std::uint16_t>(1u << (bits - 1));
        line.shift = static_cast<std::uint16_t>(bits);
        return true;
    }
    return false;
}

// Notes where the line and the table differ. False if they do in too many places.
bool findExceptions(CorrectionLine& line, const ByteCorrectionTable& table) {
    line.exceptionCount = 0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto excess = static_cast<std::uint16_t>(i);
        const int change = table[i] - line.at(excess);
        if (change == 0) continue;
        if (line.exceptionCount == line.exceptions.size()) return false;
        line.exceptions[line.exceptionCount++] = {excess, static_cast<std::uint16_t>(change)};
    }
    return true;
}

}  // namespace

bool fitLine(CorrectionLine& line, const ByteCorrectionTable& table, std::uint16_t gain) {
    CorrectionLine middle;
    if (!chooseScale(middle, gain)) return false;
    bool found = false;
    for (int factor = middle.factor - 4; factor <= middle.factor + 4; ++factor) {
        for (int offset = middle.offset - 2; offset <= middle.offset + 2; ++offset) {
            if (factor < 0 || factor > 65535 || offset < 0) continue;
            CorrectionLine next = middle;
            next.factor = static_cast<std::uint16_t>(factor);
            next.offset = static_cast<std::uint16_t>(offset);
            if (!findExceptions(next, table)) continue;
            if (!found || next.exceptionCount < line.exceptionCount) line = next;
            found = true;
        }
    }
    return found;
}

void ByteCorrections::build(const ByteCorrectionTable& table, std::uint16_t gain) {
    hasLine_ = fitLine(line_, table, gain);
    table_ = WordTable(table);
}

}  // namespace tavra::sharpness
