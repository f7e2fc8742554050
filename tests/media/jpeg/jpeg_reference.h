// The definitions behind the encoder, plain and slow, for tests to compare with.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <utility>

namespace tavra::test {

using ReferenceBlock = std::array<std::array<double, 8>, 8>;  // [vertical frequency][horizontal frequency]

// ITU T.81 A.3.3, with the samples shifted by -128. sample(x, y) gives a sample.
template <class Sample>
ReferenceBlock referenceDct(const Sample& sample) {
    const auto wave = [](std::size_t x, std::size_t u) {
        const double scale = u == 0 ? std::numbers::sqrt2 / 2 : 1;
        return scale / 2 *
               std::cos((2.0 * static_cast<double>(x) + 1) * static_cast<double>(u) * std::numbers::pi / 16);
    };
    static const auto waves = [&] {
        ReferenceBlock table;
        for (std::size_t x = 0; x < 8; ++x) {
            for (std::size_t u = 0; u < 8; ++u) table[x][u] = wave(x, u);
        }
        return table;
    }();
    ReferenceBlock rows = {}, result = {};
    for (std::size_t y = 0; y < 8; ++y) {
        for (std::size_t u = 0; u < 8; ++u) {
            for (std::size_t x = 0; x < 8; ++x) rows[y][u] += (sample(x, y) - 128.0) * waves[x][u];
        }
    }
    for (std::size_t v = 0; v < 8; ++v) {
        for (std::size_t u = 0; u < 8; ++u) {
            for (std::size_t y = 0; y < 8; ++y) result[v][u] += rows[y][u] * waves[y][v];
        }
    }
    return result;
}

// Whether `value` is the coefficient over the step, rounded to nearest; a tie may go either way, and what
// single precision cannot tell from one.
inline bool isQuantized(int value, double coefficient, unsigned step) {
    return std::abs(value - coefficient / step) <= 0.5 + 0.0005;
}

// Row and column of the k-th coefficient in zig-zag order, by walking it.
inline std::pair<std::size_t, std::size_t> referenceZigZag(std::size_t k) {
    std::size_t row = 0, column = 0;
    for (; k > 0; --k) {
        const bool upwards = (row + column) % 2 == 0;
        if (upwards && column == 7)
            ++row;
        else if (upwards && row == 0)
            ++column;
        else if (upwards)
            --row, ++column;
        else if (row == 7)
            ++column;
        else if (column == 0)
            ++row;
        else
            ++row, --column;
    }
    return {row, column};
}

// The equations of JFIF, not rounded.
struct ExactYCbCr {
    double y, cb, cr;

    ExactYCbCr(double red, double green, double blue)
        : y(0.299 * red + 0.587 * green + 0.114 * blue),
          cb((blue - y) / 1.772 + 128),
          cr((red - y) / 1.402 + 128) {}
};

// Whether `value` is `exact`, rounded to nearest and not above 255; a tie may go either way.
inline bool isRounded(int value, double exact) {
    return std::abs(value - exact) <= 0.5 + 1e-9;
}

}  // namespace tavra::test
