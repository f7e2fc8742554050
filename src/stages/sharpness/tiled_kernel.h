// Sharpening of any image, by tiles: grey or luminance goes through the line store, whose lines have room for
// the last chunk. No lock; any thread, with an image and a line store of its own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "stages/sharpness/kernel.h"
#include "stages/sharpness/rows.h"

namespace tavra::sharpness {

// Columns that are worked on at a time: what lies between two steps stays in the first-level cache.
inline constexpr std::size_t kTile = 256;

// Tile, made of the corrections and the maximum of a sample, is what is done with the columns of a tile:
// - Sample, kChannels
// - kColumns: those of a chunk, by which the tile goes
// - lumaRow(row, width, luma): the luminance of a row of colour pixels
// - sum(samples, sums): the sums of a chunk
// - sharpen(rows, count, pixels): as many columns from the first of the rows, whose pixels are told, too
template <class Tile>
class TiledKernel {
  public:
    using Sample = typename Tile::Sample;

    TiledKernel(const Image<Sample>& image, const Corrections& corrections, LineStore<Sample> lines)
        : image_(image), lines_(lines), tile_(corrections, image.maximum) {}

    void run() {
        for (const std::size_t y : {0, 1}) {
            prepare(y);
            sumRow(y);
        }
        for (std::size_t y = 1; y < image_.height - 1; ++y) {
            prepare(y + 1);
            sharpenRow(y);
        }
    }

  private:
    static_assert(kTile % Tile::kColumns == 0);

    std::size_t columns() const { return image_.width - 2; }

    // What later rows need to know of a row, before it changes.
    void prepare(std::size_t y) {
        if constexpr (Tile::kChannels == 1) {
            std::memcpy(lines_.luma(y), image_.row(y), image_.width * sizeof(Sample));
        } else {
            Tile::lumaRow(image_.row(y), image_.width, lines_.luma(y));
        }
    }

    void sumRow(std::size_t y) {
        for (std::size_t x = 0; x < columns(); x += Tile::kColumns) {
            Tile::sum(lines_.luma(y) + 1 + x, lines_.sums(y) + x);
        }
    }

    void sharpenRow(std::size_t y) {
        const Rows<Sample> rows = {lines_.sums(y - 1), lines_.sums(y), lines_.sums(y + 1), lines_.luma(y) + 1,
                                   lines_.luma(y + 1) + 1};
        Sample* const pixels = image_.row(y) + Tile::kChannels;
        for (std::size_t x = 0; x < columns(); x += kTile) {
            const std::size_t count = std::min(kTile, columns() - x);
            tile_.sharpen(rows.at(x, x), count, pixels + x * Tile::kChannels);
        }
    }

    const Image<Sample>& image_;
    LineStore<Sample> lines_;
    Tile tile_;
};

}  // namespace tavra::sharpness
