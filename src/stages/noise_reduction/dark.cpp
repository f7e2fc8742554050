#include "stages/noise_reduction/dark.h"

#include <array>
#include <cstring>

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

// R and B where `fell` has ones, from left to right: each counts for the next but one. They are few, so that
// eight samples without any are passed over at once.
void raiseByCross(const Rows& rows, std::size_t count, const std::uint8_t* fell) {
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
        if (mosaic) raiseByCross(rows, count, others);
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
