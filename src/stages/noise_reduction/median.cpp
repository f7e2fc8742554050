#include "stages/noise_reduction/median.h"

#include <iterator>

#include "stages/interpolation/sample_math.h"
#include "stages/interpolation/tiles.h"

namespace tavra::noise {
namespace {

using interpolation::kSites;
constexpr auto kTile = static_cast<std::size_t>(interpolation::kTile);

struct Step {
    int x, y;
};
using Steps = Step[4];

constexpr Steps kCross = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
constexpr Steps kWideCross = {{-2, 0}, {2, 0}, {0, -2}, {0, 2}};
constexpr Steps kDiagonal = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};

std::uint8_t mean(unsigned a, unsigned b) {
    return static_cast<std::uint8_t>((a + b) >> 1);
}

// The lesser of sample and median, by how many neighbours there are. A median above the sample counts for
// nothing, so that a sample is told only from those neighbours that the middle falls on if it is the largest.
std::uint8_t limited(std::uint8_t sample, const std::uint8_t* n, std::size_t neighbours) {
    switch (neighbours) {
        case 0: return sample;
        case 1: return std::min(sample, mean(sample, n[0]));
        case 2: return std::min(sample, std::max(n[0], n[1]));
        case 3: {
            const std::uint8_t first = std::max({n[0], n[1], n[2]});
            const std::uint8_t second = std::max(std::min(n[0], n[1]), std::min(std::max(n[0], n[1]), n[2]));
            return std::min(sample, mean(std::min(sample, first), second));
        }
        default: return std::min(sample, secondOf(n[0], n[1], n[2], n[3]));
    }
}

// A sample that may lack neighbours.
std::uint8_t limitedAtEdge(const Frame& frame, const Steps& steps, std::size_t x, std::size_t y) {
    std::uint8_t neighbours[4] = {};
    std::size_t count = 0;
    for (const Step& step : steps) {
        // Below zero wraps around to beyond the frame.
        const std::size_t column = x + static_cast<std::size_t>(step.x);
        const std::size_t row = y + static_cast<std::size_t>(step.y);
        if (column < frame.width && row < frame.height) neighbours[count++] = frame.row(row)[column];
    }
    return limited(frame.row(y)[x], neighbours, count);
}

void limitMonoRow(const std::uint8_t* __restrict above, const std::uint8_t* __restrict row,
                  const std::uint8_t* __restrict below, std::size_t width, std::uint8_t* __restrict output) {
    for (std::size_t x = 1; x < width - 1; ++x) {
        output[x] = std::min(row[x], secondOf(row[x - 1], row[x + 1], above[x], below[x]));
    }
}

// Green sites are where the mask has ones.
void limitMosaicTile(const std::uint8_t* const* rows, std::size_t x, std::size_t count,
                     const std::uint8_t* __restrict greenSites, std::uint8_t* __restrict output) {
    const std::uint8_t* __restrict const twoAbove = rows[0] + x;
    const std::uint8_t* __restrict const above = rows[1] + x;
    const std::uint8_t* __restrict const row = rows[2] + x;
    const std::uint8_t* __restrict const below = rows[3] + x;
    const std::uint8_t* __restrict const twoBelow = rows[4] + x;
    for (std::ptrdiff_t i = 0; i < static_cast<std::ptrdiff_t>(count); ++i) {
        const std::uint8_t green = secondOf(above[i - 1], above[i + 1], below[i - 1], below[i + 1]);
        const std::uint8_t other = secondOf(row[i - 2], row[i + 2], twoAbove[i], twoBelow[i]);
        output[i] = std::min(row[i], interpolation::pick(greenSites[i], green, other));
    }
}

void limitMosaicRow(const Frame& frame, std::size_t y, std::uint8_t* output) {
    const std::uint8_t* rows[5];
    for (std::size_t k = 0; k < std::size(rows); ++k) rows[k] = frame.row(y + k - 2);
    // Tiles begin in even columns.
    const std::uint8_t* const greenSites =
        isGreenSite(0, y) ? kSites<std::uint8_t>.even() : kSites<std::uint8_t>.odd();
    for (std::size_t x = 2; x < frame.width - 2; x += kTile) {
        limitMosaicTile(rows, x, std::min(kTile, frame.width - 2 - x), greenSites, output + x);
    }
}

void limitEdges(const Frame& frame, bool mosaic, std::size_t y, std::size_t from, std::size_t to,
                std::uint8_t* output) {
    for (std::size_t x = from; x < to; ++x) {
        const Steps& steps = !mosaic ? kCross : isGreenSite(x, y) ? kDiagonal : kWideCross;
        output[x] = limitedAtEdge(frame, steps, x, y);
    }
}

}  // namespace

void limitToMedian(const Frame& frame, bool mosaic, std::uint8_t* output) {
    const std::size_t reach = mosaic ? 2 : 1;
    for (std::size_t y = 0; y < frame.height; ++y) {
        std::uint8_t* const row = output + y * frame.width;
        const bool inside = y >= reach && y + reach < frame.height && frame.width > 2 * reach;
        if (!inside) {
            limitEdges(frame, mosaic, y, 0, frame.width, row);
            continue;
        }
        limitEdges(frame, mosaic, y, 0, reach, row);
        if (mosaic) {
            limitMosaicRow(frame, y, row);
        } else {
            limitMonoRow(frame.row(y - 1), frame.row(y), frame.row(y + 1), frame.width, row);
        }
        limitEdges(frame, mosaic, y, frame.width - reach, frame.width, row);
    }
}

}  // namespace tavra::noise
