#include "stages/color_matrix/tables.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tavra {
namespace {

// Rows R, G, B, columns R, G, B. Everything here is in single precision and in the order in which it stands
// (no contraction): the tables are exact to the bit.
using Matrix = std::array<std::array<float, 3>, 3>;

constexpr float kPi = 3.14159265358979323846F;

// Hue as a rotation, saturation as a scale of what differs from luminance.
Matrix hueSaturation(std::int16_t hue, std::uint16_t saturation) {
    constexpr float kRed = 0.2989F, kGreen = 0.5866F, kBlue = 0.1145F;
    constexpr float kNotRed = 0.7011F, kNotBlue = 0.8855F;
    const float angle = static_cast<float>(hue) / 10.0F * kPi / 180.0F;
    const auto s = static_cast<float>(std::sin(static_cast<double>(angle)));
    const auto c = static_cast<float>(std::cos(static_cast<double>(angle)));
    const float scale = static_cast<float>(saturation) / 100.0F;
    Matrix h;
    h[0][0] = (kNotRed * c + kRed * s) * scale + kRed;
    h[0][1] = ((s - c) * scale + 1.0F) * kGreen;
    h[0][2] = kBlue - (kBlue * c + kNotBlue * s) * scale;
    h[2][0] = (kNotRed * s - kRed * c) * scale + kRed;
    h[2][1] = (1.0F - (c + s) * scale) * kGreen;
    h[2][2] = (kNotBlue * c - kBlue * s) * scale + kBlue;
    // What the luminance of each input needs to stay as it is.
    h[1][0] = (1.0F - h[0][0]) * kRed / kGreen - h[2][0] * kBlue / kGreen;
    h[1][1] = 1.0F - h[0][1] * kRed / kGreen - h[2][1] * kBlue / kGreen;
    h[1][2] = (1.0F - h[2][2]) * kBlue / kGreen - h[0][2] * kRed / kGreen;
    return h;
}

float hundredth(std::int16_t value) {
    return static_cast<float>(value) / 100.0F;
}

Matrix composite(const ColorMatrixSettings& settings) {
    const Matrix h = hueSaturation(settings.hue, settings.saturation);
    Matrix m;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            m[row][column] = h[row][0] * hundredth(settings.matrix[column]) +
                             h[row][1] * hundredth(settings.matrix[4 + column]) +
                             h[row][2] * hundredth(settings.matrix[8 + column]);
        }
    }
    return m;
}

// Without its fraction. What no 32-bit number can hold, which only extreme matrices reach, is the lowest one,
// which ends as 0 in a pixel.
std::int32_t truncated(float value) {
    constexpr float kLimit = 2147483648.0F;
    const bool fits = value > -kLimit && value < kLimit;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

// The contributions of one input channel to B, G, R: its column of the matrix from the last row to the first.
// By design the sums start at the coefficient and not at 0, so that entry i holds i + 1 times the
// coefficient: pictures of this camera family have always been one level brighter with the stage on.
void accumulate(ContributionTable& table, const std::array<float, 3>& coefficients,
                const std::array<float, 3>& offsets) {
    std::array<float, 3> sums = coefficients;
    for (Contribution& entry : table) {
        for (std::size_t c = 0; c < 3; ++c) {
            entry[c] = truncated(offsets[c] + sums[c]);
            sums[c] += coefficients[c];
        }
    }
}

using Fields = std::array<std::int64_t, 3>;

// The lowest and the highest contribution of a table's bytes to each channel.
struct Range {
    Fields lowest, highest;
};

Range rangeOf(const ContributionTable& table) {
    Range range;
    for (std::size_t c = 0; c < 3; ++c) {
        const auto [lowest, highest] =
            std::minmax_element(table.begin(), table.begin() + 256,
                                [c](const Contribution& x, const Contribution& y) { return x[c] < y[c]; });
        range.lowest[c] = (*lowest)[c];
        range.highest[c] = (*highest)[c];
    }
    return range;
}

void pack(std::array<std::uint64_t, 256>& packed, const ContributionTable& table, const Fields& raise) {
    for (std::size_t i = 0; i < packed.size(); ++i) {
        packed[i] = 0;
        for (std::size_t c = 0; c < 3; ++c)
            packed[i] |= static_cast<std::uint64_t>(table[i][c] + raise[c]) << (16 * c);
    }
}

}  // namespace

void buildColorTables(ColorTables& tables, const ColorMatrixSettings& settings) {
    const Matrix m = composite(settings);
    const auto column = [&m](std::size_t input) {
        return std::array<float, 3>{m[2][input], m[1][input], m[0][input]};
    };
    // The offsets are in the table of R alone: a pixel gets them once.
    const std::array<float, 3> offsets = {hundredth(settings.matrix[11]), hundredth(settings.matrix[7]),
                                          hundredth(settings.matrix[3])};
    accumulate(tables.tableB, column(2), {});
    accumulate(tables.tableG, column(1), {});
    accumulate(tables.tableR, column(0), offsets);
}

void packColorTables(PackedColorTables& packed, const ColorTables& tables) {
    const Range b = rangeOf(tables.tableB), g = rangeOf(tables.tableG), r = rangeOf(tables.tableR);
    Fields lowest, highest;
    for (std::size_t c = 0; c < 3; ++c) {
        lowest[c] = b.lowest[c] + g.lowest[c] + r.lowest[c];
        highest[c] = b.highest[c] + g.highest[c] + r.highest[c];
    }
    // By as much as the lowest sum of all needs; a sum that is never negative needs nothing.
    const std::int64_t raised = std::max<std::int64_t>(0, -std::min({lowest[0], lowest[1], lowest[2]}));
    packed.fits = raised <= 0xFFFF && std::max({highest[0], highest[1], highest[2]}) + raised <= 0xFFFF;
    if (!packed.fits) return;
    packed.raised = static_cast<std::uint16_t>(raised);
    Fields raiseB, raiseG, raiseR;
    for (std::size_t c = 0; c < 3; ++c) {
        raiseB[c] = -b.lowest[c];
        raiseG[c] = -g.lowest[c];
        raiseR[c] = raised - raiseB[c] - raiseG[c];  // no less than -r.lowest
    }
    pack(packed.blue, tables.tableB, raiseB);
    pack(packed.green, tables.tableG, raiseG);
    pack(packed.red, tables.tableR, raiseR);
}

}  // namespace tavra
