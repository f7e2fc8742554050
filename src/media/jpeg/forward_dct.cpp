#include "media/jpeg/forward_dct.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>

#include "media/jpeg/zig_zag.h"

namespace tavra::jpeg {
namespace {

constexpr std::size_t kLanes = 8 * kTileBlocks;

// Rows of a tile: the samples of its blocks side by side, or what has become of them.
struct alignas(64) Tile {
    float rows[8][kLanes];
};

// Transforms columns of eight, without the factors that scale them and that the forward table takes out.
// The flow graph of Arai, Agui and Nakajima: 5 multiplications and 29 additions. C_k stands for
// cos(k pi / 16).
void transformColumns(Tile& tile) {
    constexpr float kC4 = 0.707106781186547524F;
    constexpr float kC6 = 0.382683432365089772F;
    constexpr float kC2MinusC6 = 0.541196100146196985F;
    constexpr float kC2PlusC6 = 1.306562964876376527F;

    for (std::size_t i = 0; i < kLanes; ++i) {
        const float sum0 = tile.rows[0][i] + tile.rows[7][i];
        const float sum1 = tile.rows[1][i] + tile.rows[6][i];
        const float sum2 = tile.rows[2][i] + tile.rows[5][i];
        const float sum3 = tile.rows[3][i] + tile.rows[4][i];
        const float difference0 = tile.rows[0][i] - tile.rows[7][i];
        const float difference1 = tile.rows[1][i] - tile.rows[6][i];
        const float difference2 = tile.rows[2][i] - tile.rows[5][i];
        const float difference3 = tile.rows[3][i] - tile.rows[4][i];

        const float outer = sum0 + sum3;
        const float inner = sum1 + sum2;
        const float outerDifference = sum0 - sum3;
        const float turned = ((sum1 - sum2) + outerDifference) * kC4;
        tile.rows[0][i] = outer + inner;
        tile.rows[4][i] = outer - inner;
        tile.rows[2][i] = outerDifference + turned;
        tile.rows[6][i] = outerDifference - turned;

        const float a = difference3 + difference2;
        const float b = (difference2 + difference1) * kC4;
        const float c = difference1 + difference0;
        const float shared = (a - c) * kC6;
        const float low = a * kC2MinusC6 + shared;
        const float high = c * kC2PlusC6 + shared;
        const float plus = difference0 + b;
        const float minus = difference0 - b;
        tile.rows[5][i] = minus + low;
        tile.rows[3][i] = minus - low;
        tile.rows[1][i] = plus + high;
        tile.rows[7][i] = plus - high;
    }
}

using Four = float __attribute__((vector_size(16)));

// Four rows of four values, at any place in a tile.
struct Square {
    Four rows[4];

    static Square load(const Tile& tile, std::size_t row, std::size_t column) {
        Square square;
        for (std::size_t i = 0; i < 4; ++i) std::memcpy(&square.rows[i], &tile.rows[row + i][column], 16);
        return square;
    }
    void store(Tile& tile, std::size_t row, std::size_t column) const {
        for (std::size_t i = 0; i < 4; ++i) std::memcpy(&tile.rows[row + i][column], &rows[i], 16);
    }
    Square transposed() const {
        const Four a = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
        const Four b = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
        const Four c = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
        const Four d = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
        return {{__builtin_shufflevector(a, c, 0, 1, 4, 5), __builtin_shufflevector(a, c, 2, 3, 6, 7),
                 __builtin_shufflevector(b, d, 0, 1, 4, 5), __builtin_shufflevector(b, d, 2, 3, 6, 7)}};
    }
};

// Turns each block of the tile on its side.
void transposeBlocks(Tile& tile) {
    for (std::size_t x = 0; x < kLanes; x += 8) {
        const Square upperRight = Square::load(tile, 0, x + 4).transposed();
        const Square lowerLeft = Square::load(tile, 4, x).transposed();
        Square::load(tile, 0, x).transposed().store(tile, 0, x);
        Square::load(tile, 4, x + 4).transposed().store(tile, 4, x + 4);
        upperRight.store(tile, 4, x);
        lowerLeft.store(tile, 0, x + 4);
    }
}

void loadSamples(const std::uint8_t* samples, std::size_t step, Tile& tile) {
    for (auto& row : tile.rows) {
        for (std::size_t i = 0; i < kLanes; ++i) row[i] = static_cast<float>(samples[i]);
        samples += step;
    }
}

// Fewer blocks than a tile has; the rest is blank.
void loadSamples(const std::uint8_t* samples, std::size_t step, std::size_t blockCount, Tile& tile) {
    std::uint8_t copy[8][kLanes] = {};
    for (std::size_t y = 0; y < 8; ++y) std::memcpy(copy[y], samples + y * step, 8 * blockCount);
    loadSamples(copy[0], kLanes, tile);
}

// Added to a small number, this rounds it to nearest, and leaves it in the lower bits of the sum.
constexpr float kRounding = 12582912.0F;  // 1.5 * 2^23

void quantize(const Tile& tile, const ForwardTable& table, std::int32_t (&values)[8][kLanes]) {
    for (std::size_t u = 0; u < 8; ++u) {
        for (std::size_t i = 0; i < kLanes; ++i) {
            values[u][i] = std::bit_cast<std::int32_t>(tile.rows[u][i] * table.factors[u][i] + kRounding);
        }
    }
}

void storeBlock(const std::int32_t (&values)[8][kLanes], std::size_t x, Block& block) {
    for (std::size_t u = 0; u < 8; ++u) {
        for (std::size_t v = 0; v < 8; ++v) block[u * 8 + v] = static_cast<std::int16_t>(values[u][x + v]);
    }
}

}  // namespace

ForwardTable makeForwardTable(std::span<const std::uint8_t, 64> steps) {
    const auto scale = [](unsigned frequency) {
        return frequency == 0 ? 1.0 : std::cos(frequency * std::numbers::pi / 16) * std::numbers::sqrt2;
    };
    ForwardTable table;
    for (std::size_t k = 0; k < steps.size(); ++k) {
        const auto [v, u] = kZigZag[k];
        const double factor = 1 / (8 * scale(v) * scale(u) * steps[k]);
        for (std::size_t b = 0; b < kTileBlocks; ++b)
            table.factors[u][8 * b + v] = static_cast<float>(factor);
    }
    return table;
}

void transformBlocks(const std::uint8_t* samples, std::size_t step, const ForwardTable& table,
                     std::span<Block* const> blocks) {
    Tile tile;
    if (blocks.size() == kTileBlocks) {
        loadSamples(samples, step, tile);
    } else {
        loadSamples(samples, step, blocks.size(), tile);
    }
    transformColumns(tile);
    // The shift of the samples is left to the one sum that it does not cancel out of.
    for (std::size_t i = 0; i < kLanes; ++i) tile.rows[0][i] -= 8 * 128;
    transposeBlocks(tile);
    transformColumns(tile);

    alignas(64) std::int32_t values[8][kLanes];
    quantize(tile, table, values);
    for (std::size_t b = 0; b < blocks.size(); ++b) storeBlock(values, 8 * b, *blocks[b]);
}

}  // namespace tavra::jpeg
