// The walk that most interpolation methods share: row by row, tile by tile, it shows a kernel the source rows
// it wants, takes three planes from it and weaves them into pixels.
//
// A kernel therefore knows no edge: where it would read past the first or last column, the walk shows it a
// copy of the row with the nearest sample of the same colour in that place. All memory is on the stack.
// Any thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>

#include "stages/interpolation/bgr_writer.h"
#include "stages/interpolation/planes.h"
#include "stages/interpolation/sample_math.h"

namespace tavra::interpolation {

// The columns of a row that kernels work on at a time: even, so that the mosaic looks alike from tile to
// tile, and small enough that a tile's planes stay in the first-level cache.
inline constexpr std::ptrdiff_t kTile = 128;

// How far left and right of a tile a kernel may read.
inline constexpr std::ptrdiff_t kReach = 3;

// All ones in every other column of a tile.
template <class Sample>
class EvenSites {
  public:
    constexpr EvenSites() {
        for (std::size_t i = 0; i < masks_.size(); ++i)
            masks_[i] = (i & 1) == 0 ? static_cast<Sample>(~Sample{0}) : Sample{0};
    }
    // Ones in the even columns, or in the odd ones.
    constexpr const Sample* even() const { return masks_.data(); }
    constexpr const Sample* odd() const { return masks_.data() + 1; }

  private:
    alignas(32) std::array<Sample, kTile + 1> masks_{};
};

template <class Sample>
inline constexpr EvenSites<Sample> kSites{};

// What a kernel fills: a tile of the row's own colour, of green, and of the colour that the row lacks.
template <class Sample>
struct Planes {
    alignas(32) Sample own[kTile];
    alignas(32) Sample green[kTile];
    alignas(32) Sample lacking[kTile];
};

// Where a tile lies.
struct Place {
    std::size_t x, y;           // of its first pixel
    std::size_t width, height;  // of the image
    bool greenFirst;            // green stands in the even columns of this row

    bool holds(std::size_t column) const {
        return column >= x && column - x < static_cast<std::size_t>(kTile);
    }
};

template <class Sample, std::size_t kRows>
using TileRows = std::array<const Sample*, kRows>;

// A row's piece with room to the left and the right, for the tiles at the edges.
template <class Sample>
class EdgePiece {
  public:
    // The tile from column x on: in the row itself, or in a copy where the tile meets an edge.
    const Sample* show(const Sample* row, std::size_t x, std::size_t width) {
        return x >= kReach && x + kTile + kReach <= width ? row + x : load(row, x, width);
    }

  private:
    // The columns from x - kReach up to x + kTile + kReach, as far as they or their stand-ins exist.
    const Sample* load(const Sample* row, std::size_t x, std::size_t width) {
        const std::size_t from = x < kReach ? 0 : x - kReach;
        const std::size_t to = std::min(width, x + kTile + kReach);
        Sample* const tile = samples_ + kReach;
        Sample* const start = x < kReach ? tile - x : samples_;
        std::memcpy(start, row + from, (to - from) * sizeof(Sample));
        if (x == 0) tile[-1] = row[insideIndex(-1, width)];
        for (std::size_t past = width; past < width + 2 && past < x + kTile + kReach; ++past) {
            tile[past - x] = row[insideIndex(static_cast<std::ptrdiff_t>(past), width)];
        }
        return tile;
    }

    alignas(32) Sample samples_[kReach + kTile + kReach] = {};
};

// Fills the image from the frame, a mosaic with colour array 2 to 5. Kernel has
// - kRows, the number of source rows it wants for one output row, and sourceRow(k, y, height), the index of
// the k-th;
// - tile(rows, sites, place, planes): rows[k][i] is the sample in column i of the tile; sites[i] is all ones
//   where column i holds the row's own colour. It always fills a whole tile, and may read i from -kReach up
//   to kTile + kReach - 1. What it reads counts for one column before the image and two behind it; further
//   out there is memory, but no sample.
template <class Kernel, class Sample>
void interpolate(const Frame<Sample>& frame, const Image<Sample>& image) {
    constexpr std::size_t kRows = Kernel::kRows;
    std::array<EdgePiece<Sample>, kRows> pieces;
    Planes<Sample> planes;
    for (std::size_t y = 0; y < frame.height; ++y) {
        const RowColors colors = rowColors(frame.colorArray, y);
        const Sample* const sites = colors.greenFirst ? kSites<Sample>.odd() : kSites<Sample>.even();
        const Sample* const blue = colors.ownIsRed ? planes.lacking : planes.own;
        const Sample* const red = colors.ownIsRed ? planes.own : planes.lacking;
        TileRows<Sample, kRows> source;
        for (std::size_t k = 0; k < kRows; ++k) source[k] = frame.row(Kernel::sourceRow(k, y, frame.height));
        for (std::size_t x = 0; x < frame.width; x += kTile) {
            TileRows<Sample, kRows> rows;
            for (std::size_t k = 0; k < kRows; ++k) rows[k] = pieces[k].show(source[k], x, frame.width);
            Kernel::tile(rows, sites, Place{x, y, frame.width, frame.height, colors.greenFirst}, planes);
            writeBgr(image.row(y) + x * image.pitch, image.pitch, blue, planes.green, red,
                     std::min<std::size_t>(kTile, frame.width - x));
        }
    }
}

}  // namespace tavra::interpolation
