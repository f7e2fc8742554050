#include "control/average_pixel_value.h"

#include <algorithm>
#include <numeric>

#include "base/color_array.h"
#include "base/little_endian.h"

namespace tavra {
namespace {

constexpr CAveragePixelValue::Boundaries kQuarters{2500, 5000, 7500};
constexpr std::uint32_t kBoundaryUnit = 10000;
constexpr std::uint16_t kMonochrome = 1;

// Luminance from the means of a mosaic. Their sum is 1.
constexpr double kGreenShare = 0.5866;
constexpr double kRedShare = 0.2989;
constexpr double kBlueShare = 0.1145;

std::array<std::uint32_t, CAveragePixelValue::kBands> bandEdges(
    const CAveragePixelValue::Boundaries& boundaries, std::uint32_t size) {
    std::array<std::uint32_t, CAveragePixelValue::kBands> edges{};
    for (std::size_t i = 0; i < boundaries.size(); ++i) {
        edges[i] = std::min(boundaries[i] * size / kBoundaryUnit, size);
    }
    for (std::size_t i = 1; i < boundaries.size(); ++i) edges[i] = std::max(edges[i], edges[i - 1]);
    edges.back() = size;
    return edges;
}

// Pixels of one row of a cell, summed by their distance from its left edge, modulo 4. In 32 bits, which wrap.
using SumsByDistance = std::array<std::uint32_t, 4>;

// Eight pixels a step: those at even and those at odd distance in lanes of 16 bits of their own, which hold
// the sum of 257 bytes.
constexpr std::size_t kStep = 8;
constexpr std::size_t kLongestRun = 256 * kStep;
constexpr std::uint64_t kEvenBytes = 0x00FF00FF00FF00FF;

void addRun(const std::uint8_t* pixels, std::size_t count, SumsByDistance& sums) {
    std::uint64_t even = 0;
    std::uint64_t odd = 0;
    for (std::size_t i = 0; i < count; i += kStep) {
        const std::uint64_t eight = loadLe64(pixels + i);
        even += eight & kEvenBytes;
        odd += eight >> 8 & kEvenBytes;
    }
    const auto lane = [](std::uint64_t lanes, unsigned k) {
        return static_cast<std::uint32_t>(lanes >> (16 * k) & 0xFFFF);
    };
    sums[0] += lane(even, 0) + lane(even, 2);
    sums[1] += lane(odd, 0) + lane(odd, 2);
    sums[2] += lane(even, 1) + lane(even, 3);
    sums[3] += lane(odd, 1) + lane(odd, 3);
}

SumsByDistance sumRow(const std::uint8_t* pixels, std::size_t count) {
    SumsByDistance sums{};
    std::size_t done = 0;
    for (const std::size_t whole = count - count % kStep; done < whole;) {
        const std::size_t run = std::min(whole - done, kLongestRun);
        addRun(pixels + done, run, sums);
        done += run;
    }
    for (; done < count; ++done) sums[done % sums.size()] += pixels[done];
    return sums;
}

using Shares = std::array<std::uint32_t, 2>;

// How many of `n` rows or columns of a quad mosaic count for the first and for the second block of a pair.
// By design: no exact count of pixels; the whole system's picture of quad mosaics rests on these numbers.
Shares blockShares(std::uint32_t n, std::uint32_t residue, bool odd) {
    const std::uint32_t half = n / 2;
    switch (residue) {
        case 1: return {half + 1, half};
        case 2: return {half, odd ? half : half - 1};
        case 3: return odd ? Shares{half, half + 1} : Shares{half + 1, half};
        default: return {half, half};
    }
}

}  // namespace

CAveragePixelValue::CAveragePixelValue() {
    ResetUnlocked();
}

CAveragePixelValue::~CAveragePixelValue() = default;

void CAveragePixelValue::Reset() {
    const std::lock_guard lock(averageMutex_);
    ResetUnlocked();
}

void CAveragePixelValue::ResetUnlocked() {
    xBoundary_ = kQuarters;
    yBoundary_ = kQuarters;
    geometryDirty_ = 1;
    colorArray_ = 0;
    imageWidth_ = 0;
    imageHeight_ = 0;
}

void CAveragePixelValue::setControlArea(const Boundaries& x, const Boundaries& y) {
    const std::lock_guard lock(averageMutex_);
    xBoundary_ = x;
    yBoundary_ = y;
    geometryDirty_ = 1;
}

void CAveragePixelValue::getControlArea(Boundaries& x, Boundaries& y) const {
    const std::lock_guard lock(averageMutex_);
    x = xBoundary_;
    y = yBoundary_;
}

std::uint32_t CAveragePixelValue::Accumulate(std::uint32_t width, std::uint32_t height,
                                             std::uint16_t frameColorArray, const std::uint8_t* image) {
    const std::lock_guard lock(averageMutex_);
    rebuildTables(width, height, frameColorArray);
    for (std::size_t rowBand = 0; rowBand < kBands; ++rowBand) measureBand(rowBand, image);
    return 1;
}

void CAveragePixelValue::rebuildTables(std::uint32_t width, std::uint32_t height,
                                       std::uint16_t frameColorArray) {
    const bool current = geometryDirty_ == 0 && width == imageWidth_ && height == imageHeight_ &&
                         frameColorArray == colorArray_;
    if (current) return;
    xEdge_ = bandEdges(xBoundary_, width);
    yEdge_ = bandEdges(yBoundary_, height);
    // By design: blocks are counted by the colour array before this one. The first frames of a quad camera
    // are counted in pairs of pixels, until something changes.
    if (isQuad(colorArray_)) {
        countCells(countBlocks);
    } else {
        countCells(frameColorArray == kMonochrome ? countAll : countPairs);
    }
    imageWidth_ = width;
    imageHeight_ = height;
    colorArray_ = frameColorArray;
    geometryDirty_ = 0;
}

// By design: an empty band ends the walk of its axis, and what lies behind it keeps the counts that it had.
void CAveragePixelValue::countCells(CountRule rule) {
    std::uint32_t y = 0;
    for (std::size_t rowBand = 0; rowBand < kBands && yEdge_[rowBand] > y; y = yEdge_[rowBand++]) {
        std::uint32_t x = 0;
        for (std::size_t band = 0; band < kBands && xEdge_[band] > x; x = xEdge_[band++]) {
            rule({x, y, xEdge_[band] - x, yEdge_[rowBand] - y}, cellCount_[kBands * rowBand + band]);
        }
    }
}

void CAveragePixelValue::countAll(const Cell& cell, Counts& counts) {
    counts[0] = cell.width * cell.height;
}

void CAveragePixelValue::countPairs(const Cell& cell, Counts& counts) {
    const Shares columns{cell.width - cell.width / 2, cell.width / 2};
    const Shares rows{cell.height - cell.height / 2, cell.height / 2};
    const std::uint32_t start = (cell.x & 1) + 2 * (cell.y & 1);
    for (std::uint32_t k = 0; k < kPositions; ++k) counts[k ^ start] = columns[k & 1] * rows[k >> 1];
}

// By design: both axes split by the height; the columns ask whether the width is odd, the rows whether the
// upper edge is.
void CAveragePixelValue::countBlocks(const Cell& cell, Counts& counts) {
    const std::uint32_t residue = cell.height % 4;
    const Shares columns = blockShares(cell.width, residue, (cell.width & 1) != 0);
    const Shares rows = blockShares(cell.height, residue, (cell.y & 1) != 0);
    const std::uint32_t start = (cell.x >> 1 & 1) + (cell.y & 2);
    for (std::uint32_t k = 0; k < kPositions; ++k) counts[k ^ start] = columns[k & 1] * rows[k >> 1];
}

void CAveragePixelValue::measureBand(std::size_t rowBand, const std::uint8_t* image) {
    std::array<Counts, kBands> sums{};
    const std::uint32_t top = rowBand == 0 ? 0 : yEdge_[rowBand - 1];
    for (std::uint32_t y = top; y < yEdge_[rowBand]; ++y) {
        addRow(y, image + std::size_t{y} * imageWidth_, sums);
    }
    storeMeans(rowBand, sums);
}

void CAveragePixelValue::addRow(std::uint32_t y, const std::uint8_t* row,
                                std::array<Counts, kBands>& sums) const {
    std::uint32_t x = 0;
    for (std::size_t band = 0; band < kBands; x = xEdge_[band++]) {
        const SumsByDistance distances = sumRow(row + x, xEdge_[band] - x);
        Counts& cell = sums[band];
        if (isQuad(colorArray_)) {
            // Pixels by bit 1 of x, from four distances that begin at any phase.
            Shares blocks{};
            for (std::uint32_t k = 0; k < distances.size(); ++k) blocks[(x + k) >> 1 & 1] += distances[k];
            // By design: in a cell that begins in the second block of a pair, the two sums cross over.
            const std::uint32_t first = (x >> 1 & 1) + (y & 2);
            cell[first] += blocks[0];
            cell[first ^ 1] += blocks[1];
        } else if (colorArray_ == kMonochrome) {
            cell[0] += std::accumulate(distances.begin(), distances.end(), std::uint32_t{0});
        } else {
            const std::uint32_t first = (x & 1) + 2 * (y & 1);
            cell[first] += distances[0] + distances[2];
            cell[first ^ 1] += distances[1] + distances[3];
        }
    }
}

void CAveragePixelValue::storeMeans(std::size_t rowBand, const std::array<Counts, kBands>& sums) {
    const std::size_t positions = colorArray_ == kMonochrome ? 1 : kPositions;
    for (std::size_t band = 0; band < kBands; ++band) {
        const std::size_t cell = kBands * rowBand + band;
        for (std::size_t p = 0; p < positions; ++p) {
            const std::uint32_t count = cellCount_[cell][p];
            cellAverage_[cell][p] = static_cast<std::uint8_t>(count == 0 ? 0 : sums[band][p] / count);
        }
    }
}

std::uint32_t CAveragePixelValue::GetWeightedAverage(const Weights& weights, Means& means) const {
    const std::lock_guard lock(averageMutex_);
    averageLocked(weights, means);
    return 1;
}

std::uint32_t CAveragePixelValue::GetWeightedLuminance(const Weights& weights,
                                                       std::uint8_t& luminance) const {
    const std::lock_guard lock(averageMutex_);
    Means means{};
    averageLocked(weights, means);
    if (isMonoLike(colorArray_)) {
        luminance = means[0];
        return 1;
    }
    const auto [r, gr, gb, b] = means;
    luminance = static_cast<std::uint8_t>(((gr + gb) >> 1) * kGreenShare + r * kRedShare + b * kBlueShare);
    return 1;
}

// By design: patterns 12 to 15 are measured like mosaics and read through their first position alone.
void CAveragePixelValue::averageLocked(const Weights& weights, Means& means) const {
    if (isMonoLike(colorArray_)) {
        means[0] = weightedMean(weights, 0);
        return;
    }
    if (std::all_of(weights.begin(), weights.end(), [](std::uint8_t w) { return w == 0; })) {
        means.fill(0);
        return;
    }
    const unsigned firstCode = isQuad(colorArray_) ? 16 : 2;
    // The position of R, 0 to 3. The other colours stand around it.
    const std::size_t red = colorArray_ - firstCode;
    if (red >= kPositions) return;  // no mosaic
    for (std::size_t i = 0; i < means.size(); ++i) means[i] = weightedMean(weights, i ^ red);
}

std::uint8_t CAveragePixelValue::weightedMean(const Weights& weights, std::size_t position) const {
    std::uint32_t sum = 0;
    std::uint32_t total = 0;
    for (std::size_t cell = 0; cell < kCells; ++cell) {
        sum += std::uint32_t{weights[cell]} * cellAverage_[cell][position];
        total += weights[cell];
    }
    return static_cast<std::uint8_t>(total == 0 ? 0 : sum / total);
}

}  // namespace tavra
