#include "stages/sharpness/word_corrections.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace tavra::sharpness {
namespace {

using lanes::PiecewiseLine;

// Excesses of one piece, as long as their corrections still grow.
struct Span {
    std::size_t begin, end;
};

Span spanFrom(std::size_t begin, const PiecewiseLine& line, const WordCorrectionTable& table) {
    const auto pieceOf = [&](std::size_t i) { return line.pieceOf(static_cast<std::uint16_t>(i)); };
    std::size_t end = begin + 1;
    while (end < table.size() && table[end] < kLargestDifference && pieceOf(end) == pieceOf(begin)) ++end;
    return {begin, end};
}

// An offset with which the line of this slope, cut off, has all entries of the span. False if there is none.
// It is taken from the lower part of those that will do: rounding must not carry a value over the next
// whole number.
bool findOffset(double slope, Span span, const WordCorrectionTable& table, float& offset) {
    double least = -std::numeric_limits<double>::infinity(), end = std::numeric_limits<double>::infinity();
    for (std::size_t i = span.begin; i < span.end; ++i) {
        const double rest = table[i] - slope * static_cast<double>(i);
        least = std::max(least, rest);
        end = std::min(end, rest + 1);
    }
    offset = static_cast<float>(least + (end - least) / 4);
    return least < end;
}

// The step of the running sum in the midst of a span. Where the span is too short for one, the gain's will
// do.
float slopeOf(Span span, const CorrectionSums& sums, float step) {
    const std::size_t middle = (span.begin + span.end) / 2;
    return middle + 1 < span.end ? sums[middle + 1] - sums[middle] : step;
}

// Small sums share one piece, and where an exact product is a half, they have sometimes lost it and sometimes
// not: a slope a little higher or lower tells most of these apart.
bool fitPiece(PiecewiseLine& line, Span span, float slope, const WordCorrectionTable& table) {
    constexpr float kLittle = 1.0F / 16384;
    const std::size_t piece = line.pieceOf(static_cast<std::uint16_t>(span.begin));
    for (const float candidate : {slope, slope - kLittle, slope + kLittle}) {
        line.slopes[piece] = candidate;
        if (findOffset(candidate, span, table, line.offsets[piece])) return true;
    }
    return false;
}

// The power of two from which on the pieces reach as far as the corrections do.
float leastOf(float step) {
    const float most = std::min(step * kLargestDifference, static_cast<float>(kLargestDifference));
    constexpr std::uint32_t kExponent = 0xFFu << PiecewiseLine::kMantissaBits;
    const float last = std::bit_cast<float>(std::bit_cast<std::uint32_t>(most) & kExponent);
    return last / (1u << (PiecewiseLine::kPieces - 1));
}

// For the excesses of all words; beyond the table its last entry counts.
bool equal(const PiecewiseLine& line, const WordCorrectionTable& table) {
    constexpr std::size_t kMostExcess = 32768, kWords = lanes::kVectorBytes / 2;
    const lanes::PiecewiseVectors vectors(line);
    for (std::size_t first = 0; first <= kMostExcess; first += kWords) {
        lanes::Words excess{}, wanted{};
        for (std::size_t i = 0; i < kWords; ++i) {
            excess[i] = static_cast<std::uint16_t>(first + i);
            wanted[i] = table[std::min(first + i, table.size() - 1)];
        }
        const lanes::Words differing = vectors.at(excess) ^ wanted;
        for (std::size_t i = 0; i < kWords; ++i) {
            if (differing[i] != 0) return false;
        }
    }
    return true;
}

}  // namespace

bool fitPieces(PiecewiseLine& line, const WordCorrectionTable& table, const CorrectionSums& sums,
               std::uint16_t gain) {
    const float step = static_cast<float>(gain) / 100;
    line.scale = step;
    line.least = leastOf(step);
    line.largest = table.back();
    line.slopes.fill(step);
    line.offsets.fill(0.5F);
    for (Span span = spanFrom(0, line, table); table[span.begin] < kLargestDifference;
         span = spanFrom(span.end, line, table)) {
        if (!fitPiece(line, span, slopeOf(span, sums, step), table)) return false;
        if (span.end == table.size()) break;
    }
    return equal(line, table);
}

void WordCorrections::build(const WordCorrectionTable& table, const CorrectionSums& sums, std::uint16_t gain,
                            std::int16_t coring) {
    hasLine_ = lanes::kPiecesAreQuick && fitPieces(line_, table, sums, gain);
    line_.largest = table[static_cast<std::size_t>(kLargestDifference - coring)];
    for (std::int16_t difference = 0; difference <= kLargestDifference; ++difference) {
        const auto correction = static_cast<std::int16_t>(
            difference > coring ? table[static_cast<std::size_t>(difference - coring)] : 0);
        table_[std::size_t{kLargestDifference} + difference] = correction;
        table_[std::size_t{kLargestDifference} - difference] = static_cast<std::int16_t>(-correction);
    }
}

}  // namespace tavra::sharpness
