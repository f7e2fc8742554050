// Four-tap: -1/8, 5/8, 5/8, -1/8 across the row, then the same between filled rows for the colour that
// a row lacks.
#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

// The outer and the inner pair are rounded apart.
// By design: the result is clamped at 255 in the 16-bit form too.
template <class Sample>
Sample fourTaps(Sample a, Sample b, Sample c, Sample d) {
    const auto outer = static_cast<std::uint16_t>(a + d);
    const auto inner = static_cast<std::uint16_t>(b + c);
    const auto outerEighth = static_cast<std::uint16_t>(static_cast<std::uint16_t>(outer + 4) >> 3);
    const auto innerFiveEighths = static_cast<std::uint16_t>(static_cast<std::uint16_t>(inner * 5 + 4) >> 3);
    const auto sum = static_cast<std::int16_t>(innerFiveEighths - outerEighth);
    return static_cast<Sample>(std::clamp<std::int16_t>(sum, 0, 255));
}

// Whether all four taps around the position lie inside; else the mean of the two nearer ones stands in.
bool tapsAt(std::size_t position, std::size_t count) {
    return position >= 3 && position + 4 <= count;
}

// A tile of a row whose two colours are complete.
template <class Sample>
struct FilledRow {
    alignas(32) Sample own[kTile];
    alignas(32) Sample green[kTile];

    void fill(const Sample* row, const Sample* sites, const Place& place) {
        alignas(32) Sample missing[kTile];  // what each column would get, if it lacked its neighbours' colour
        for (std::ptrdiff_t i = 0; i < kTile; ++i)
            missing[i] = fourTaps(row[i - 3], row[i - 1], row[i + 1], row[i + 3]);
        for (const std::size_t x : {std::size_t{0}, std::size_t{1}, std::size_t{2}, place.width - 3,
                                    place.width - 2, place.width - 1}) {
            if (x >= place.width || !place.holds(x)) continue;
            const auto i = static_cast<std::ptrdiff_t>(x - place.x);
            missing[i] = mean(row[i - 1], row[i + 1]);
        }
        for (std::ptrdiff_t i = 0; i < kTile; ++i) {
            own[i] = pick(sites[i], row[i], missing[i]);
            green[i] = pick(sites[i], missing[i], row[i]);
        }
    }
};

// Rows y - 3 to y + 3, by row modulo 8.
template <class Sample>
using FilledRows = std::array<FilledRow<Sample>, 8>;

// The colour that row y lacks, which is the own colour of the rows beside it.
template <class Sample>
void fillLacking(const FilledRows<Sample>& rows, std::size_t y, std::size_t height,
                 Sample* __restrict lacking) {
    if (height == 1) {
        // The row stands in for those beside it, whose own colour lies where its green does.
        std::copy_n(rows[0].green, kTile, lacking);
        return;
    }
    const auto own = [&](std::ptrdiff_t offset) {
        return rows[insideIndex(static_cast<std::ptrdiff_t>(y) + offset, height) % rows.size()].own;
    };
    const Sample* const above = own(-1);
    const Sample* const below = own(+1);
    if (!tapsAt(y, height)) {
        for (std::ptrdiff_t i = 0; i < kTile; ++i) lacking[i] = mean(above[i], below[i]);
        return;
    }
    const Sample* const farAbove = own(-3);
    const Sample* const farBelow = own(+3);
    for (std::ptrdiff_t i = 0; i < kTile; ++i)
        lacking[i] = fourTaps(farAbove[i], above[i], below[i], farBelow[i]);
}

// The tiles at column x of the rows from `begin` up to `end`.
template <class Sample>
void fillTiles(const Frame<Sample>& frame, const Image<Sample>& image, std::size_t x, std::size_t begin,
               std::size_t end) {
    FilledRows<Sample> rows;
    EdgePiece<Sample> piece;
    alignas(32) Sample lacking[kTile];
    std::size_t filled = begin < 3 ? 0 : begin - 3;
    for (std::size_t y = begin; y < end; ++y) {
        for (; filled < frame.height && filled <= y + 3; ++filled) {
            const bool greenFirst = rowColors(frame.colorArray, filled).greenFirst;
            rows[filled % rows.size()].fill(piece.show(frame.row(filled), x, frame.width),
                                            greenFirst ? kSites<Sample>.odd() : kSites<Sample>.even(),
                                            Place{x, filled, frame.width, frame.height, greenFirst});
        }
        fillLacking(rows, y, frame.height, lacking);
        const FilledRow<Sample>& row = rows[y % rows.size()];
        const bool ownIsRed = rowColors(frame.colorArray, y).ownIsRed;
        writeBgr(image.row(y) + x * image.pitch, image.pitch, ownIsRed ? lacking : row.own, row.green,
                 ownIsRed ? row.own : lacking, std::min<std::size_t>(kTile, frame.width - x));
    }
}

// The rows of the image that tiles are taken down together.
constexpr std::size_t kBand = 16;

}  // namespace

// Tiles are taken down a band of rows, not along each row: a piece of a row is filled once there, and serves
// the seven rows around it. Bands are low, so that a large image is still walked along its rows.
template <class Sample>
void fourTap(const Frame<Sample>& frame, const Image<Sample>& image) {
    for (std::size_t y = 0; y < frame.height; y += kBand) {
        for (std::size_t x = 0; x < frame.width; x += kTile)
            fillTiles(frame, image, x, y, std::min(frame.height, y + kBand));
    }
}

template void fourTap(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void fourTap(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
