#include "stages/wb.h"

#include <algorithm>
#include <cstddef>

#include "base/error_codes.h"
#include "base/pixel_format.h"

namespace tavra {
namespace {

using white_balance::Gains;
using white_balance::kMaximumBits;
using white_balance::kUnityGain;
using white_balance::Mosaic;

enum Mode : std::uint8_t { kOff = 0, kFixed = 1, kEveryFrame = 2, kOnce = 3 };

constexpr Gains kNeutral{kUnityGain, kUnityGain, kUnityGain, kUnityGain};

// Columns that are worked on at a time.
constexpr std::size_t kTile = 64;

// (a * b) >> 16 of two words.
constexpr std::uint16_t upperHalf(std::uint16_t a, std::uint16_t b) {
    return static_cast<std::uint16_t>((std::uint32_t{a} * b) >> 16);
}

// min(maximum, (sample * gain) >> 7) in words alone, which vectorise at full width: the product's upper and
// lower half. An upper half of 8 stands for a level of 4096 and more, above every maximum, and so for any
// larger one.
constexpr std::uint16_t scaled(std::uint16_t sample, std::uint16_t gain, std::int16_t maximum) {
    const std::uint16_t high = std::min<std::uint16_t>(upperHalf(sample, gain), 8);
    const auto low = static_cast<std::uint16_t>(std::uint32_t{sample} * gain);
    const auto level = static_cast<std::int16_t>((high << 9) | (low >> 7));
    return static_cast<std::uint16_t>(std::min(level, maximum));
}

// The same for bytes and a maximum of up to 255, in a single multiplication: (sample << 8) * (gain << 1) is
// the product shifted left by 9. A gain of 255.0 does what every larger one does.
constexpr std::uint16_t kByteGainLimit = 255 * kUnityGain;

constexpr std::uint8_t scaledByte(std::uint8_t sample, std::uint16_t doubledGain, std::uint16_t maximum) {
    const std::uint16_t level = upperHalf(static_cast<std::uint16_t>(sample << 8), doubledGain);
    return static_cast<std::uint8_t>(std::min(level, maximum));
}

// The gains of positions (0,0), (1,0), (0,1) and (1,1). Codes other than 3 to 5 count as 2.
Gains byPosition(const Gains& gains, std::uint16_t colorArray) {
    const auto [r, gr, gb, b] = gains;
    switch (colorArray) {
        case 3: return {gr, r, b, gb};
        case 4: return {gb, b, r, gr};
        case 5: return {b, gb, gr, r};
        default: return gains;
    }
}

// Gains of a row, over and over as the mosaic has them.
struct GainTile {
    GainTile(std::uint16_t even, std::uint16_t odd) {
        for (std::size_t i = 0; i < kTile; i += 2) {
            gains[i] = even;
            gains[i + 1] = odd;
        }
    }
    alignas(32) std::uint16_t gains[kTile];
};

template <class Sample>
void scaleTile(Sample* __restrict samples, std::size_t count, const GainTile& tile, std::int16_t maximum) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<Sample>(scaled(samples[i], tile.gains[i], maximum));
    }
}

void scaleByteTile(std::uint8_t* __restrict samples, std::size_t count, const GainTile& doubled,
                   std::int16_t maximum) {
    const auto limit = static_cast<std::uint16_t>(maximum);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = scaledByte(samples[i], doubled.gains[i], limit);
    }
}

// `work(samples, count, tile, maximum)` on all tiles of a row. Whole tiles apart: their length is known.
template <class Sample, class Work>
void forTiles(Sample* row, std::size_t width, const GainTile& tile, std::int16_t maximum, Work work) {
    std::size_t x = 0;
    for (; x + kTile <= width; x += kTile) work(row + x, kTile, tile, maximum);
    work(row + x, width - x, tile, maximum);
}

std::uint16_t doubledByteGain(std::uint16_t gain) {
    return static_cast<std::uint16_t>(2 * std::min(gain, kByteGainLimit));
}

template <class Sample>
void scaleRow(Sample* row, std::size_t width, std::uint16_t even, std::uint16_t odd, std::int16_t maximum) {
    if constexpr (sizeof(Sample) == 1) {
        if (maximum <= 255) {
            const GainTile doubled(doubledByteGain(even), doubledByteGain(odd));
            return forTiles(row, width, doubled, maximum, scaleByteTile);
        }
    }
    forTiles(row, width, GainTile(even, odd), maximum, scaleTile<Sample>);
}

template <class Sample>
void scale(const Mosaic<Sample>& mosaic, const Gains& gains) {
    const auto maximum = static_cast<std::int16_t>((1 << mosaic.bits) - 1);
    const Gains positions = byPosition(gains, mosaic.colorArray);
    for (std::size_t y = 0; y < mosaic.height; ++y) {
        const std::size_t first = 2 * (y & 1);
        scaleRow(mosaic.row(y), mosaic.width, positions[first], positions[first + 1], maximum);
    }
}

template <class Sample>
Mosaic<Sample> mosaicOf(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                        std::uint16_t colorArray, Sample* pixels, std::uint16_t bits) {
    return {pixels, stride != 0 ? stride : paddedStride(width, sizeof(Sample)), width, height, colorArray,
            bits};
}

}  // namespace

template <class Sample>
std::uint32_t CWB::apply(const Mosaic<Sample>& mosaic) {
    const std::lock_guard lock(mutex_);
    if (mosaic.bits > kMaximumBits) return error::kInvalidArgument;
    if (mode_ == kOff) return error::kNone;
    if (mode_ == kEveryFrame || mode_ == kOnce) {
        white_balance::measure(mosaic, histograms_);
        const Status found = white_balance::balance(histograms_, mosaic.colorArray, mosaic.bits, gains_);
        if (!found.ok()) return found.code();
        if (mode_ == kOnce) mode_ = kFixed;
    }
    if (gains_ != kNeutral) scale(mosaic, gains_);
    return error::kNone;
}

std::uint32_t CWB::Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint16_t colorArray, std::uint8_t* pixels, std::uint16_t bits) {
    return apply(mosaicOf(width, height, stride, colorArray, pixels, bits));
}

std::uint32_t CWB::Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                           std::uint16_t colorArray, std::uint16_t* pixels, std::uint16_t bits) {
    return apply(mosaicOf(width, height, stride, colorArray, pixels, bits));
}

std::uint32_t CWB::SetMode(std::uint8_t mode) {
    const std::lock_guard lock(mutex_);
    mode_ = mode;
    return error::kNone;
}

std::uint32_t CWB::GetMode(std::uint8_t* mode) {
    const std::lock_guard lock(mutex_);
    *mode = mode_;
    return error::kNone;
}

std::uint32_t CWB::SetGains(const std::uint16_t* gains) {
    const std::lock_guard lock(mutex_);
    std::copy_n(gains, gains_.size(), gains_.begin());
    return error::kNone;
}

std::uint32_t CWB::GetGains(std::uint16_t* gains) {
    const std::lock_guard lock(mutex_);
    if (gains != nullptr) std::copy(gains_.begin(), gains_.end(), gains);
    return error::kNone;
}

}  // namespace tavra
