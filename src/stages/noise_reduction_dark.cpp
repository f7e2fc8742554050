#include "stages/noise_reduction_dark.h"

#include <array>

namespace tavra::noise {
namespace {

constexpr std::uint8_t kSaturated = 253;

// Columns that are looked at in one go for samples to raise, which are few.
constexpr std::size_t kTile = 64;

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

constexpr bool fellBelow(std::uint8_t before, std::uint8_t now) {
    return before >= kSaturated && now < kSaturated;
}

bool anyFell(const std::uint8_t* __restrict before, const std::uint8_t* __restrict now, std::size_t count) {
    std::uint8_t fell = 0;
    for (std::size_t i = 0; i < count; ++i) {
        fell |= static_cast<std::uint8_t>(before[i] >= kSaturated) &
                static_cast<std::uint8_t>(now[i] < kSaturated);
    }
    return fell != 0;
}

// `stride`: from row to row.
std::uint8_t raised(const std::uint8_t* sample, std::ptrdiff_t stride, bool diagonal) {
    const std::uint8_t third =
        diagonal ? thirdOf(sample[-stride - 1], sample[-stride + 1], sample[stride - 1], sample[stride + 1])
                 : thirdOf(sample[-2], sample[2], sample[-2 * stride], sample[2 * stride]);
    // With four neighbours, the greater of sample and median of five is the greater of sample and third.
    return std::max(*sample, third);
}

void restoreTile(const Frame& before, bool mosaic, std::size_t x, std::size_t y, std::size_t count,
                 std::uint8_t* samples) {
    const std::uint8_t* const old = before.row(y) + x;
    std::uint8_t* const row = samples + y * before.width + x;
    if (!anyFell(old, row, count)) return;
    for (std::size_t i = 0; i < count; ++i) {
        if (!fellBelow(old[i], row[i])) continue;
        const bool diagonal = !mosaic || isGreenSite(x + i, y);
        row[i] = raised(row + i, static_cast<std::ptrdiff_t>(before.width), diagonal);
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
    for (std::size_t y = margin; y + margin < before.height; ++y) {
        for (std::size_t x = margin; x + margin < before.width; x += kTile) {
            restoreTile(before, mosaic, x, y, std::min(kTile, before.width - margin - x), samples);
        }
    }
}

}  // namespace tavra::noise
