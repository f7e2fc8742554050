#include "stages/color_matrix_kernel.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tavra {
namespace {

static_assert(std::endian::native == std::endian::little, "the lowest field of a packed entry is blue");

constexpr std::size_t kTile = 128;
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

// The sums of a tile's pixels, four fields each; the fourth is 0.
struct Sums {
    alignas(32) std::uint16_t fields[kFields * kTile];
};

template <std::size_t kPitch>
void addUp(const PackedColorTables& tables, const std::uint8_t* pixels, std::size_t count, Sums& sums) {
    for (std::size_t i = 0; i < count; ++i, pixels += kPitch) {
        const std::uint64_t sum = tables.blue[pixels[0]] + tables.green[pixels[1]] + tables.red[pixels[2]];
        std::memcpy(sums.fields + kFields * i, &sum, sizeof sum);
    }
}

// Sums to samples, still in fours.
void narrow(const Sums& sums, std::uint16_t raised, std::uint16_t limit, std::uint8_t* __restrict samples) {
    for (std::size_t i = 0; i < kFields * kTile; ++i) {
        const auto sum = static_cast<std::uint16_t>(std::max(sums.fields[i], raised) - raised);
        samples[i] = static_cast<std::uint8_t>(std::min(sum, limit));
    }
}

// Pixels of four bytes written three apart: the byte too many is overwritten by the next pixel, but for the
// last one's, which is not written.
void closeUp(const std::uint8_t* samples, std::uint8_t* __restrict pixels, std::size_t count) {
    for (std::size_t i = 0; i + 1 < count; ++i) std::memcpy(pixels + 3 * i, samples + kFields * i, kFields);
    std::memcpy(pixels + 3 * (count - 1), samples + kFields * (count - 1), 3);
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
    Sums sums = {};
    alignas(32) std::uint8_t samples[kFields * kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        std::uint8_t* const pixels = row + x * pitch;
        if (pitch == 3) {
            addUp<3>(tables, pixels, count, sums);
            narrow(sums, tables.raised, limit, samples);
            closeUp(samples, pixels, count);
        } else {
            addUp<4>(tables, pixels, count, sums);
            narrow(sums, tables.raised, limit, samples);
            mergeFour(samples, pixels, count);
        }
    }
}

}  // namespace tavra
