#include "stages/noise_reduction/dark.h"

#include <array>
#include <cstring>
#include <utility>

#include "stages/byte_lanes.h"
#include "stages/interpolation/sample_math.h"
#include "stages/interpolation/tiles.h"

namespace tavra::noise {
namespace {

constexpr std::uint8_t kSaturated = 253;

using interpolation::kSites;
constexpr auto kTile = static_cast<std::size_t>(interpolation::kTile);

// The least values of a row's even and odd columns, in whole pairs.
struct Pair {
    std::uint8_t even, odd;
};

Pair leastOfRow(const std::uint8_t* row, std::size_t width, Pair least) {
    for (std::size_t x = 0; x + 1 < width; x += 2) {
        least.even = std::min(least.even, row[x]);
        least.odd = std::min(least.odd, row[x + 1]);
    }
    return least;
}

void lowerRow(std::uint8_t* row, std::size_t width, Pair level) {
    for (std::size_t x = 0; x + 1 < width; x += 2) {
        row[x] = static_cast<std::uint8_t>(row[x] - level.even);
        row[x + 1] = static_cast<std::uint8_t>(row[x + 1] - level.odd);
    }
}

// What a saturated sample becomes that fell below: with four neighbours, the greater of sample and median of
// five is the greater of sample and third neighbour.
constexpr std::uint8_t raised(std::uint8_t sample, std::uint8_t a, std::uint8_t b, std::uint8_t c,
                              std::uint8_t d) {
    return std::max(sample, thirdOf(a, b, c, d));
}

// All ones for true, without a branch.
constexpr std::uint8_t ones(bool condition) {
    return static_cast<std::uint8_t>(-static_cast<int>(condition));
}

// One row of the frame as it came in, and the rows of the frame in work, from two above to two below. All
// begin at the same column.
struct Rows {
    const std::uint8_t* before;
    std::uint8_t* now[5];
};

// Samples whose neighbours are diagonal, where the mask has ones: they do not touch one another in a row, so
// that all of them are done at once. The others are left for later, with ones in `others` where they fell.
void raiseByDiagonals(const Rows& rows, std::size_t count, const std::uint8_t* __restrict mask,
                      std::uint8_t* __restrict others) {
    const std::uint8_t* __restrict const before = rows.before;
    const std::uint8_t* __restrict const above = rows.now[1];
    std::uint8_t* __restrict const row = rows.now[2];
    const std::uint8_t* __restrict const below = rows.now[3];
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) {
        const std::uint8_t fell = ones(before[i] >= kSaturated) & ones(row[i] < kSaturated);
        const std::uint8_t value = raised(row[i], above[i - 1], above[i + 1], below[i - 1], below[i + 1]);
        row[i] = interpolation::pick<std::uint8_t>(fell & mask[i], value, row[i]);
        others[i] = fell & ~mask[i];
    }
}

// R and B sites of a tile: every other sample, the first one `first` samples behind the tile's beginning.
//
// From left to right, each counts for the next. Of the third of four neighbours, three are known beforehand;
// so a result is its left neighbour's held between two limits, from the least of those three to the middle
// one, neither below the sample itself. For samples that stay, both limits are the sample.
struct Limits {
    alignas(32) std::uint8_t low[kTile], high[kTile];
};

void findLimits(const Rows& rows, std::size_t count, const std::uint8_t* __restrict fell,
                Limits& __restrict limits) {
    const std::uint8_t* __restrict const above = rows.now[0];
    const std::uint8_t* __restrict const row = rows.now[2];
    const std::uint8_t* __restrict const below = rows.now[4];
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t a = row[i + 2], b = above[i], c = below[i];
        const std::uint8_t least = std::min(std::min(a, b), c);
        const std::uint8_t middle = std::max(std::min(a, b), std::min(std::max(a, b), c));
        limits.low[i] = std::max<std::uint8_t>(row[i], least & fell[i]);
        limits.high[i] = std::max<std::uint8_t>(row[i], middle & fell[i]);
    }
}

// Every other one, to the front.
void closeUp(std::uint8_t* samples, std::size_t first) {
    std::uint8_t sites[kTile / 2];
    for (std::size_t k = 0; k < kTile / 2; ++k) sites[k] = samples[2 * k + first];
    std::memcpy(samples, sites, sizeof sites);
}

using lanes::Lane;

Lane held(Lane value, Lane low, Lane high) {
    const Lane raised = value > low ? value : low;
    return raised < high ? raised : high;
}

template <std::size_t kBy, std::size_t... kByte>
Lane movedUp(Lane lane, Lane fill, std::index_sequence<kByte...>) {
    return __builtin_shufflevector(fill, lane, (lanes::kLaneBytes - kBy + kByte)...);
}

// Limits one after the other are limits again: each pair becomes that of itself and the kBy pairs to its
// left.
template <std::size_t kBy>
void chain(Lane& low, Lane& high) {
    constexpr auto kBytes = std::make_index_sequence<lanes::kLaneBytes>();
    const Lane leftLow = movedUp<kBy>(low, Lane{}, kBytes), leftHigh = movedUp<kBy>(high, ~Lane{}, kBytes);
    const Lane chainedHigh = held(leftHigh, low, high);
    low = held(leftLow, low, high);
    high = chainedHigh;
}

// Results of 16 sites at a time, in place of the lower limits, `left` being the one ahead of the first.
void resolve(Limits& limits, std::size_t sites, std::uint8_t left) {
    for (std::size_t k = 0; k < sites; k += lanes::kLaneBytes) {
        Lane low, high;
        std::memcpy(&low, limits.low + k, sizeof low);
        std::memcpy(&high, limits.high + k, sizeof high);
        chain<1>(low, high);
        chain<2>(low, high);
        chain<4>(low, high);
        chain<8>(low, high);
        const Lane results = held(Lane{} + left, low, high);
        std::memcpy(limits.low + k, &results, sizeof results);
        left = results[lanes::kLaneBytes - 1];
    }
}

// Into every other sample, by pairs: that vectorises. The other one of a pair is written as it was.
void spread(const std::uint8_t* __restrict results, std::size_t sites, std::size_t first,
            std::uint8_t* __restrict row) {
    const std::uint16_t kept = first == 0 ? 0xFF00 : 0x00FF, scale = first == 0 ? 1 : 0x100;
    for (std::size_t k = 0; k < sites; ++k) {
        std::uint16_t pair;
        std::memcpy(&pair, row + 2 * k, sizeof pair);
        pair = static_cast<std::uint16_t>((pair & kept) | (results[k] * scale));
        std::memcpy(row + 2 * k, &pair, sizeof pair);
    }
}

void raiseAllByCross(const Rows& rows, std::size_t count, std::size_t first, const std::uint8_t* fell) {
    Limits limits = {};
    findLimits(rows, count, fell, limits);
    closeUp(limits.low, first);
    closeUp(limits.high, first);
    std::uint8_t* const row = rows.now[2];
    const std::size_t sites = (count - first + 1) / 2;
    resolve(limits, sites, *(row + first - 2));
    spread(limits.low, sites, first, row);
}

// Where few fell, eight samples without any are passed over at once.
void raiseFewByCross(const Rows& rows, std::size_t count, const std::uint8_t* fell) {
    std::uint8_t* const row = rows.now[2];
    for (std::size_t from = 0; from < count; from += sizeof(std::uint64_t)) {
        std::uint64_t group = 0;
        std::memcpy(&group, fell + from, sizeof group);
        if (group == 0) continue;
        for (std::size_t i = from; i < std::min(from + sizeof group, count); ++i) {
            if (fell[i] == 0) continue;
            row[i] = raised(row[i], *(row + i - 2), row[i + 2], rows.now[0][i], rows.now[4][i]);
        }
    }
}

// R and B where `fell` has ones.
void raiseByCross(const Rows& rows, std::size_t count, std::size_t first, const std::uint8_t* fell) {
    constexpr std::uint8_t kFew = 8;
    static_assert(kTile <= 255, "the number of those that fell is counted in a byte");
    std::uint8_t number = 0;
    for (std::size_t i = 0; i < count; ++i) number = static_cast<std::uint8_t>(number + (fell[i] & 1));
    if (number > kFew) {
        raiseAllByCross(rows, count, first, fell);
    } else if (number > 0) {
        raiseFewByCross(rows, count, fell);
    }
}

constexpr auto kAllSites = [] {
    std::array<std::uint8_t, kTile> sites{};
    sites.fill(0xFF);
    return sites;
}();

// Tiles begin in columns of the same parity.
void restoreRow(const Frame& before, bool mosaic, std::size_t y, std::uint8_t* samples) {
    const std::size_t margin = mosaic ? 2 : 1;
    const std::uint8_t* const greenSites =
        isGreenSite(margin, y) ? kSites<std::uint8_t>.even() : kSites<std::uint8_t>.odd();
    std::uint8_t others[kTile] = {};
    for (std::size_t x = margin; x + margin < before.width; x += kTile) {
        const std::size_t count = std::min(kTile, before.width - margin - x);
        Rows rows = {before.row(y) + x, {}};
        // A mono frame has no second row above the first that is looked at, and needs none.
        for (std::size_t k = mosaic ? 0 : 1; k < (mosaic ? 5u : 4u); ++k) {
            rows.now[k] = samples + (y + k - 2) * before.width + x;
        }
        raiseByDiagonals(rows, count, mosaic ? greenSites : kAllSites.data(), others);
        if (mosaic) raiseByCross(rows, count, isGreenSite(x, y) ? 1 : 0, others);
    }
}

}  // namespace

void subtractBlackLevels(std::size_t width, std::size_t height, std::uint8_t* samples) {
    Pair least[2] = {{255, 255}, {255, 255}};
    const std::size_t rows = height - height % 2;
    for (std::size_t y = 0; y < rows; ++y) {
        least[y & 1] = leastOfRow(samples + y * width, width, least[y & 1]);
    }
    for (std::size_t y = 0; y < rows; ++y) lowerRow(samples + y * width, width, least[y & 1]);
}

void subtract(const std::uint8_t* __restrict dark, std::size_t count, std::uint8_t* __restrict samples) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<std::uint8_t>(std::max(samples[i], dark[i]) - dark[i]);
    }
}

void restoreSaturated(const Frame& before, bool mosaic, std::uint8_t* samples) {
    const std::size_t margin = mosaic ? 2 : 1;
    for (std::size_t y = margin; y + margin < before.height; ++y) restoreRow(before, mosaic, y, samples);
}

}  // namespace tavra::noise
