#include "stages/color_matrix/lines.h"

#include <algorithm>
#include <utility>

#include "stages/bgr_reader.h"
#include "stages/interpolation/bgr_writer.h"

namespace tavra {
namespace {

constexpr std::size_t kLevels = 256;
constexpr std::int64_t kOne = 65536;
constexpr std::size_t kTile = 256;

// The contributions of an input's levels to one channel.
using Levels = std::array<std::int64_t, kLevels>;

// The whole numbers m, in 1/65536, for which ((i + 1) * m) >> 16 is what a level wants.
struct Slopes {
    std::int64_t least = 0, most = std::int64_t{1} << 48;

    Slopes narrowed(std::size_t level, std::int64_t wanted) const {
        const auto factor = static_cast<std::int64_t>(level) + 1;
        return {std::max(least, (wanted * kOne + factor - 1) / factor),
                std::min(most, ((wanted + 1) * kOne - 1) / factor)};
    }
    bool empty() const { return least > most; }
};

// From level 0 on, as far as one slope goes, then the next. False if it takes too many.
bool fitLine(ContributionLine& line, Levels levels) {
    const auto [lowest, highest] = std::minmax_element(levels.begin(), levels.end());
    line = {};
    line.negative = *lowest < 0;
    if (line.negative && *highest > 0) return false;
    if (line.negative)
        std::for_each(levels.begin(), levels.end(), [](std::int64_t& level) { level = -level; });
    std::array<std::pair<std::size_t, std::int64_t>, ContributionLine::kMostBends + 1> pieces;  // from, slope
    std::size_t count = 0;
    for (std::size_t from = 0, level = 0; from < kLevels; from = level) {
        if (count == pieces.size()) return false;
        Slopes slopes;
        for (; level < kLevels; ++level) {
            const Slopes next = slopes.narrowed(level, levels[level]);
            if (next.empty()) break;
            slopes = next;
        }
        if (level == from) return false;
        pieces[count++] = {from, slopes.least};
    }
    line.whole = static_cast<std::uint16_t>(pieces[0].second / kOne);
    line.fraction = static_cast<std::uint16_t>(pieces[0].second % kOne);
    for (std::size_t i = 0; i < count; ++i)
        if (pieces[i].second / kOne != line.whole) return false;
    line.bends = count - 1;
    for (std::size_t i = 0; i < line.bends; ++i) {
        line.bend[i].from = static_cast<std::int16_t>(pieces[i + 1].first + 1);
        line.bend[i].change = static_cast<std::uint16_t>(pieces[i + 1].second - pieces[i].second);
    }
    return true;
}

// Whether every sum for a channel fits in 16 bits with a sign.
bool sumsFit(const std::array<const ContributionTable*, 3>& tables, std::size_t channel) {
    std::int64_t lowest = 0, highest = 0;
    for (const ContributionTable* const table : tables) {
        const auto [low, high] = std::minmax_element(
            table->begin(), table->begin() + kLevels,
            [channel](const Contribution& x, const Contribution& y) { return x[channel] < y[channel]; });
        lowest += (*low)[channel];
        highest += (*high)[channel];
    }
    return lowest >= INT16_MIN && highest <= INT16_MAX;
}

// Adds a line to the sums of a tile; `factors` are the levels plus 1. All of the tile, whatever its length.
template <std::size_t kBends, bool kNegative, bool kWhole>
void addLine(const ContributionLine& line, const std::uint16_t* factors, std::uint16_t* __restrict sums) {
    const std::uint16_t whole = line.whole;
    const auto bend = line.bend;
    for (std::size_t i = 0; i < kTile; ++i) {
        const std::uint16_t factor = factors[i];
        std::uint16_t fraction = line.fraction;
        for (std::size_t b = 0; b < kBends; ++b) {
            const bool behind = static_cast<std::int16_t>(factor) >= bend[b].from;
            fraction = static_cast<std::uint16_t>(fraction + (behind ? bend[b].change : 0));
        }
        auto product = static_cast<std::uint16_t>((std::uint32_t{factor} * fraction) >> 16);
        if constexpr (kWhole) product = static_cast<std::uint16_t>(product + factor * whole);
        sums[i] = static_cast<std::uint16_t>(kNegative ? sums[i] - product : sums[i] + product);
    }
}

using AddLine = void (*)(const ContributionLine&, const std::uint16_t*, std::uint16_t*);

template <std::size_t... kBends>
AddLine adderOf(const ContributionLine& line, std::index_sequence<kBends...>) {
    static constexpr AddLine kAdders[][4] = {{addLine<kBends, false, false>, addLine<kBends, false, true>,
                                              addLine<kBends, true, false>, addLine<kBends, true, true>}...};
    return kAdders[line.bends][(line.negative ? 2 : 0) + (line.whole != 0 ? 1 : 0)];
}

void add(const ContributionLine& line, const std::uint16_t* factors, std::uint16_t* sums) {
    if (line.whole == 0 && line.fraction == 0 && line.bends == 0) return;
    adderOf(line, std::make_index_sequence<ContributionLine::kMostBends + 1>())(line, factors, sums);
}

// Planes of a tile: blue, green and red.
template <class Sample>
struct Planes {
    alignas(32) Sample plane[3][kTile] = {};
};

void toFactors(const std::uint8_t* levels, std::uint16_t* __restrict factors) {
    for (std::size_t i = 0; i < kTile; ++i) factors[i] = static_cast<std::uint16_t>(levels[i] + 1);
}

void narrow(const std::uint16_t* sums, std::int16_t limit, std::uint8_t* __restrict samples) {
    for (std::size_t i = 0; i < kTile; ++i) {
        const auto sum = std::max<std::int16_t>(static_cast<std::int16_t>(sums[i]), 0);
        samples[i] = static_cast<std::uint8_t>(std::min(sum, limit));
    }
}

// Lines without bends, wholes only from a channel to itself: what most matrices are. One pass makes a
// channel.
bool plain(const ColorLines& lines) {
    for (std::size_t input = 0; input < 3; ++input) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const ContributionLine& line = lines.line[input][channel];
            if (line.bends != 0 || (line.whole != 0 && input != channel)) return false;
        }
    }
    return true;
}

// A negative product is the complement of the positive one, plus 1, which the start of the sum takes in.
struct PlainLine {
    explicit PlainLine(const ContributionLine& line)
        : fraction(line.fraction), complement(line.negative ? 0xFFFF : 0) {}

    std::uint16_t operator()(std::uint16_t factor) const {
        return static_cast<std::uint16_t>(((std::uint32_t{factor} * fraction) >> 16) ^ complement);
    }
    std::uint16_t fraction, complement;
};

// A channel of a tile, from `factors` of all three.
void mixPlain(const ColorLines& lines, std::size_t channel, const Planes<std::uint16_t>& factors,
              std::int16_t limit, std::uint8_t* __restrict samples) {
    const PlainLine blue(lines.line[0][channel]), green(lines.line[1][channel]), red(lines.line[2][channel]);
    const ContributionLine& own = lines.line[channel][channel];
    const auto whole = static_cast<std::uint16_t>(own.negative ? -own.whole : own.whole);
    // Complements are -1.
    const auto start = static_cast<std::uint16_t>(lines.offset[channel] - blue.complement - green.complement -
                                                  red.complement);
    const std::uint16_t* const ownFactors = factors.plane[channel];
    for (std::size_t i = 0; i < kTile; ++i) {
        const auto sum =
            static_cast<std::uint16_t>(start + ownFactors[i] * whole + blue(factors.plane[0][i]) +
                                       green(factors.plane[1][i]) + red(factors.plane[2][i]));
        const auto positive = std::max<std::int16_t>(static_cast<std::int16_t>(sum), 0);
        samples[i] = static_cast<std::uint8_t>(std::min(positive, limit));
    }
}

// The same line by line, for all that fit.
void mix(const ColorLines& lines, std::size_t channel, const Planes<std::uint16_t>& factors,
         std::int16_t limit, std::uint8_t* __restrict samples) {
    alignas(32) std::uint16_t sums[kTile];
    std::fill_n(sums, kTile, static_cast<std::uint16_t>(lines.offset[channel]));
    for (std::size_t input = 0; input < 3; ++input)
        add(lines.line[input][channel], factors.plane[input], sums);
    narrow(sums, limit, samples);
}

}  // namespace

void fitColorLines(ColorLines& lines, const ColorTables& tables, const std::array<std::int16_t, 3>& offsets) {
    const std::array<const ContributionTable*, 3> inputs = {&tables.tableB, &tables.tableG, &tables.tableR};
    lines.offset = offsets;
    lines.fit = false;
    for (std::size_t channel = 0; channel < 3; ++channel) {
        if (!sumsFit(inputs, channel)) return;
        for (std::size_t input = 0; input < 3; ++input) {
            const std::int64_t offset = input == 2 ? offsets[channel] : 0;
            Levels levels;
            for (std::size_t i = 0; i < kLevels; ++i) levels[i] = (*inputs[input])[i][channel] - offset;
            if (!fitLine(lines.line[input][channel], levels)) return;
        }
    }
    lines.fit = true;
    lines.plain = plain(lines);
}

void transformRow(const ColorLines& lines, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit) {
    Planes<std::uint8_t> bytes;
    Planes<std::uint16_t> factors;
    const auto mixChannel = lines.plain ? mixPlain : mix;
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        std::uint8_t* const pixels = row + x * pitch;
        readBgr(pixels, pitch, bytes.plane[0], bytes.plane[1], bytes.plane[2], count);
        for (std::size_t c = 0; c < 3; ++c) toFactors(bytes.plane[c], factors.plane[c]);
        for (std::size_t channel = 0; channel < 3; ++channel)
            mixChannel(lines, channel, factors, limit, bytes.plane[channel]);
        interpolation::writeBgr(pixels, pitch, bytes.plane[0], bytes.plane[1], bytes.plane[2], count);
    }
}

}  // namespace tavra
