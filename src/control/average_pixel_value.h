// Statistics of a raw frame: the mean byte of each of 4 x 4 cells, at each position of the colour pattern.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

namespace tavra {

// Owned by the handle record, by value. The capture thread measures (Accumulate) and reads; application
// threads move the grid. Every operation takes the one lock and waits for a frame that is being measured.
//
// A pattern position is p = (x & 1) + 2 * (y & 1), in quad mosaics of the blocks of 2 x 2 pixels. Which
// colour stands there is settled when the means are read, not when they are measured.
class CAveragePixelValue {
  public:
    static constexpr std::size_t kBands = 4;
    static constexpr std::size_t kCells = kBands * kBands;  // row by row
    static constexpr std::size_t kPositions = 4;

    // The inner lines of the grid on one axis, in ten-thousandths of the image.
    using Boundaries = std::array<std::uint16_t, kBands - 1>;
    // A weight for each cell. A controller owns its table.
    using Weights = std::array<std::uint8_t, kCells>;
    // Weighted means in the order R, Gr, Gb, B.
    using Means = std::array<std::uint8_t, kPositions>;

    CAveragePixelValue();
    virtual ~CAveragePixelValue();
    CAveragePixelValue(const CAveragePixelValue&) = delete;
    CAveragePixelValue& operator=(const CAveragePixelValue&) = delete;

    // Any values in any order. They count from the next frame on.
    void setControlArea(const Boundaries& x, const Boundaries& y);
    void getControlArea(Boundaries& x, Boundaries& y) const;

    // Measures a frame of dense rows, width bytes each. 1.
    std::uint32_t Accumulate(std::uint32_t width, std::uint32_t height, std::uint16_t frameColorArray,
                             const std::uint8_t* image);

    // Weighted means of the frame measured last. 1. A mono-like frame has one mean, which goes to the first
    // byte, and the other bytes stay; with a colour array that is no mosaic all of them stay. Without any
    // weight the means are 0.
    std::uint32_t GetWeightedAverage(const Weights& weights, Means& means) const;
    // The same as one luminance. 1.
    std::uint32_t GetWeightedLuminance(const Weights& weights, std::uint8_t& luminance) const;

    // The grid of a new record. Means and counts stay until the next frame.
    void Reset();
    // For a caller that nobody can meet here.
    void ResetUnlocked();

  private:
    using Edges = std::array<std::uint32_t, kBands>;
    using Counts = std::array<std::uint32_t, kPositions>;

    // What one cell covers: from (x, y), `width` by `height` pixels.
    struct Cell {
        std::uint32_t x, y, width, height;
    };
    using CountRule = void (*)(const Cell&, Counts&);

    void rebuildTables(std::uint32_t width, std::uint32_t height, std::uint16_t frameColorArray);
    void countCells(CountRule rule);
    static void countAll(const Cell& cell, Counts& counts);     // one plane
    static void countPairs(const Cell& cell, Counts& counts);   // pairs of pixels
    static void countBlocks(const Cell& cell, Counts& counts);  // pairs of blocks of 2 x 2 pixels
    void measureBand(std::size_t rowBand, const std::uint8_t* image);
    void addRow(std::uint32_t y, const std::uint8_t* row, std::array<Counts, kBands>& sums) const;
    void storeMeans(std::size_t rowBand, const std::array<Counts, kBands>& sums);

    void averageLocked(const Weights& weights, Means& means) const;
    std::uint8_t weightedMean(const Weights& weights, std::size_t position) const;

    Boundaries xBoundary_{};
    Boundaries yBoundary_{};
    mutable std::mutex averageMutex_;
    std::array<std::array<std::uint8_t, kPositions>, kCells> cellAverage_{};
    std::uint32_t geometryDirty_ = 1;  // the tables below must be rebuilt before the next frame
    std::uint16_t colorArray_ = 0;     // what the tables were built for; 0 on a new record
    std::uint32_t imageWidth_ = 0;
    std::uint32_t imageHeight_ = 0;
    Edges xEdge_{};  // of each band the first pixel behind it
    Edges yEdge_{};
    std::array<Counts, kCells> cellCount_{};  // what the sum of each cell and position is divided by
};

}  // namespace tavra
