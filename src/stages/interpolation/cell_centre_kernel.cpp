// Cell-centre bilinear: the image shifted by half a pixel to the right and down, each pixel the 9:3:3:1 mean
// of the four nearest sites of a colour around the middle of its cell.
#include "stages/interpolation/cell_centre.h"
#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

// At most 16 x 4095, so a word holds the sum of 12-bit samples. Where an edge doubles a pair of sites this is
// (3 near + far) >> 2, exactly.
template <class Sample>
Sample nineThreeThreeOne(Sample near, Sample across, Sample upright, Sample far) {
    const auto nearRow = static_cast<std::uint16_t>(near * 3 + across);
    const auto farRow = static_cast<std::uint16_t>(upright * 3 + far);
    return static_cast<Sample>(static_cast<std::uint16_t>(nearRow * 3 + farRow) >> 4);
}

struct CellCentre {
    static constexpr std::size_t kRows = 4;  // y - 1, y, y + 1, y + 2
    static std::size_t sourceRow(std::size_t k, std::size_t y, std::size_t height) {
        const auto row = static_cast<std::ptrdiff_t>(y + k) - 1;
        if (height % 2 == 0 || y + 3 < height) return insideIndex(row, height);
        // By design: the last three rows of an odd height come from rows h - 3 and h - 2 alone, as if these
        // two alternated for ever; row h - 1 is not read.
        const auto pair = static_cast<std::ptrdiff_t>(height) - 3;
        const std::ptrdiff_t alternating = pair + ((row - pair) & 1);
        return alternating < 0 ? 0 : static_cast<std::size_t>(alternating);
    }

    template <class Sample>
    static void tile(const TileRows<Sample, kRows>& rows, const Sample* sites, const Place& place,
                     Planes<Sample>& planes) {
        const Sample* const row = rows[1];
        const Sample* const below = rows[2];
        // The row's own colour lies in this row and two below, the lacking one in the row below and
        // the one above.
        for (std::ptrdiff_t i = 0; i < kTile; ++i) planes.green[i] = cellGreen(row, below, sites[i], i);
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            planes.own[i] = nineThreeThreeOne(
                pick(sites[i], row[i], row[i + 1]), pick(sites[i], row[i + 2], row[i - 1]),
                pick(sites[i], rows[3][i], rows[3][i + 1]), pick(sites[i], rows[3][i + 2], rows[3][i - 1]));
        }
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            planes.lacking[i] = nineThreeThreeOne(
                pick(sites[i], below[i + 1], below[i]), pick(sites[i], below[i - 1], below[i + 2]),
                pick(sites[i], rows[0][i + 1], rows[0][i]), pick(sites[i], rows[0][i - 1], rows[0][i + 2]));
        }
        keepGreenOfLastColumn(row, place, planes);
    }
};

}  // namespace

template <class Sample>
void cellCentreBilinear(const Frame<Sample>& frame, const Image<Sample>& image) {
    interpolate<CellCentre>(frame, image);
}

template void cellCentreBilinear(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void cellCentreBilinear(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
