// Bilinear: means across the row, then between the rows above and below. Green is never averaged vertically.
#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

struct Bilinear {
    static constexpr std::size_t kRows = 3;  // above, the row itself, below
    static std::size_t sourceRow(std::size_t k, std::size_t y, std::size_t height) {
        return insideIndex(static_cast<std::ptrdiff_t>(y + k) - 1, height);
    }

    // At the edges the walk shows the same neighbour on both sides, and the mean of a sample with itself is
    // the sample.
    template <class Sample>
    static void tile(const TileRows<Sample, kRows>& rows, const Sample* sites, const Place&,
                     Planes<Sample>& planes) {
        const Sample* const above = rows[0];
        const Sample* const row = rows[1];
        const Sample* const below = rows[2];
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            const Sample across = mean(row[i - 1], row[i + 1]);
            const Sample upright = mean(above[i], below[i]);
            const Sample corners = mean(mean(above[i - 1], above[i + 1]), mean(below[i - 1], below[i + 1]));
            planes.own[i] = pick(sites[i], row[i], across);
            planes.green[i] = pick(sites[i], across, row[i]);
            planes.lacking[i] = pick(sites[i], corners, upright);
        }
    }
};

}  // namespace

template <class Sample>
void bilinear(const Frame<Sample>& frame, const Image<Sample>& image) {
    interpolate<Bilinear>(frame, image);
}

template void bilinear(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void bilinear(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
