#include "stages/color_matrix/kernel.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "stages/table_lookup.h"

namespace tavra {
namespace {

static_assert(std::endian::native == std::endian::little, "the lowest field of a packed entry is blue");

constexpr std::size_t kTile = 256;
constexpr std::size_t kFields = 4;

constexpr std::uint32_t kNegative = 0x10000000;

// By design: very large sums count as negative ones, which they cannot be told from once they wrap.
std::uint32_t limited(std::uint32_t sum, std::uint32_t limit) {
    if (sum <= limit) return sum;
    return sum < kNegative ? limit : 0;
}

template <class Sample>
void transform(const ColorTables& tables, Sample* row, std::size_t pitch, std::size_t width, Sample limit) {
    const auto entry = [](const ContributionTable& table, Sample sample) -> const Contribution& {
        return table[std::min<std::size_t>(sample, table.size() - 1)];
    };
    for (Sample* pixel = row; pixel != row + width * pitch; pixel += pitch) {
        const Contribution& b = entry(tables.tableB, pixel[0]);
        const Contribution& g = entry(tables.tableG, pixel[1]);
        const Contribution& r = entry(tables.tableR, pixel[2]);
        for (std::size_t c = 0; c < 3; ++c) {
            const std::uint32_t sum = static_cast<std::uint32_t>(b[c]) + static_cast<std::uint32_t>(g[c]) +
                                      static_cast<std::uint32_t>(r[c]);
            pixel[c] = static_cast<Sample>(limited(sum, limit));
        }
    }
}

// Sums to samples, still in fours.
void narrow(const std::uint16_t* sums, std::uint16_t raised, std::uint16_t limit,
            std::uint8_t* __restrict samples) {
    for (std::size_t i = 0; i < kFields * kTile; ++i) {
        const auto sum = static_cast<std::uint16_t>(std::max(sums[i], raised) - raised);
        samples[i] = static_cast<std::uint8_t>(std::min(sum, limit));
    }
}

// Pixels of four bytes moved together to three. Four at a time as a vector, whose last four bytes, too many,
// are overwritten by the next pixels; so the last ones go one by one.
void closeUp(const std::uint8_t* samples, std::uint8_t* __restrict pixels, std::size_t count) {
    using Bytes = std::uint8_t __attribute__((vector_size(16)));
    std::size_t i = 0;
    for (; i + 6 <= count; i += 4) {
        Bytes four;
        std::memcpy(&four, samples + kFields * i, sizeof four);
        four = __builtin_shufflevector(four, four, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15);
        std::memcpy(pixels + 3 * i, &four, sizeof four);
    }
    for (; i < count; ++i) std::memcpy(pixels + 3 * i, samples + kFields * i, 3);
}

// The fourth byte is put back as it was.
void mergeFour(const std::uint8_t* samples, std::uint8_t* __restrict pixels, std::size_t count) {
    constexpr std::uint32_t kFourth = 0xFF000000;
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t old, pixel;
        std::memcpy(&old, pixels + kFields * i, sizeof old);
        std::memcpy(&pixel, samples + kFields * i, sizeof pixel);
        pixel = (pixel & ~kFourth) | (old & kFourth);
        std::memcpy(pixels + kFields * i, &pixel, sizeof pixel);
    }
}

}  // namespace

void transformRow(const ColorTables& tables, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit) {
    transform(tables, row, pitch, width, limit);
}

void transformRow(const ColorTables& tables, std::uint16_t* row, std::size_t pitch, std::size_t width,
                  std::uint16_t limit) {
    transform(tables, row, pitch, width, limit);
}

void transformRow(const PackedColorTables& tables, std::uint8_t* row, std::size_t pitch, std::size_t width,
                  std::uint8_t limit) {
    alignas(32) std::uint16_t sums[kFields * kTile] = {};
    alignas(32) std::uint8_t samples[kFields * kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        std::uint8_t* const pixels = row + x * pitch;
        sumLookUps(tables.blue, tables.green, tables.red, pixels, pitch, sums, count);
        narrow(sums, tables.raised, limit, samples);
        if (pitch == 3) {
            closeUp(samples, pixels, count);
        } else {
            mergeFour(samples, pixels, count);
        }
    }
}

}  // namespace tavra
