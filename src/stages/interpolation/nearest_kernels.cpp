// Nearest neighbour: in 2 x 2 cells aligned to the origin, and in cells that slide with the pixel.
#include "stages/interpolation/cell_centre.h"
#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

// The four pixels of a cell share its R and its B, and take G from their row of the cell.
struct AlignedCell {
    static constexpr std::size_t kRows = 2;  // the row itself, and the other row of its cell
    static std::size_t sourceRow(std::size_t k, std::size_t y, std::size_t height) {
        return k == 0 ? y : insideIndex(static_cast<std::ptrdiff_t>(y ^ 1), height);
    }

    template <class Sample>
    static void tile(const TileRows<Sample, kRows>& rows, const Sample* sites, const Place& place,
                     Planes<Sample>& planes) {
        // The cell's columns are even and odd: green is in one of them in this row, the row's own colour in
        // the other, and the lacking colour stands in the other row under or above green.
        if (place.greenFirst) {
            shareColumn(rows[0], kSites<Sample>.odd(), +1, planes.own);
            shareColumn(rows[0], kSites<Sample>.even(), -1, planes.green);
            shareColumn(rows[1], kSites<Sample>.even(), -1, planes.lacking);
        } else {
            shareColumn(rows[0], sites, -1, planes.own);
            shareColumn(rows[0], kSites<Sample>.odd(), +1, planes.green);
            shareColumn(rows[1], kSites<Sample>.odd(), +1, planes.lacking);
        }
    }

  private:
    // The columns under the mask keep their sample, the others take it from the neighbour at `offset`.
    template <class Sample>
    static void shareColumn(const Sample* row, const Sample* mask, std::ptrdiff_t offset,
                            Sample* __restrict plane) {
        for (std::ptrdiff_t i = 0; i < kTile; ++i) plane[i] = pick(mask[i], row[i], row[i + offset]);
    }
};

// The cell whose top-left sample is the pixel's own.
struct SlidingCell {
    static constexpr std::size_t kRows = 2;
    static std::size_t sourceRow(std::size_t k, std::size_t y, std::size_t height) {
        return insideIndex(static_cast<std::ptrdiff_t>(y + k), height);
    }

    template <class Sample>
    static void tile(const TileRows<Sample, kRows>& rows, const Sample* sites, const Place& place,
                     Planes<Sample>& planes) {
        const Sample* const row = rows[0];
        const Sample* const below = rows[1];
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            planes.own[i] = pick(sites[i], row[i], row[i + 1]);
            planes.lacking[i] = pick(sites[i], below[i + 1], below[i]);
            planes.green[i] = cellGreen(row, below, sites[i], i);
        }
        keepGreenOfLastColumn(row, place, planes);
    }
};

}  // namespace

template <class Sample>
void nearestNeighbour(const Frame<Sample>& frame, const Image<Sample>& image) {
    interpolate<AlignedCell>(frame, image);
}

template <class Sample>
void cellCentreNearest(const Frame<Sample>& frame, const Image<Sample>& image) {
    interpolate<SlidingCell>(frame, image);
}

template void nearestNeighbour(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void nearestNeighbour(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);
template void cellCentreNearest(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void cellCentreNearest(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
