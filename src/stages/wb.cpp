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

// min(maximum, (sample * gain) >> 7) in words alone, which vectorise at full width: the product's upper and
// lower half, and the shifted product fits in a word unless the upper half has more than seven bits.
constexpr std::uint16_t scaled(std::uint16_t sample, std::uint16_t gain, std::uint16_t maximum) {
    const auto high = static_cast<std::uint16_t>((std::uint32_t{sample} * gain) >> 16);
    const auto low = static_cast<std::uint16_t>(std::uint32_t{sample} * gain);
    const auto level = static_cast<std::uint16_t>((high << 9) | (low >> 7));
    const std::uint16_t limited = level < maximum ? level : maximum;
    return high < 128 ? limited : maximum;
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

template <class Sample>
void scaleTile(Sample* samples, std::size_t count, const std::uint16_t* gains, std::uint16_t maximum) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<Sample>(scaled(samples[i], gains[i], maximum));
    }
}

template <class Sample>
void scaleRow(Sample* row, std::size_t width, std::uint16_t even, std::uint16_t odd, std::uint16_t maximum) {
    std::uint16_t gains[kTile];
    for (std::size_t i = 0; i < kTile; i += 2) {
        gains[i] = even;
        gains[i + 1] = odd;
    }
    std::size_t x = 0;
    for (; x + kTile <= width; x += kTile) scaleTile(row + x, kTile, gains, maximum);
    scaleTile(row + x, width - x, gains, maximum);
}

template <class Sample>
void scale(const Mosaic<Sample>& mosaic, const Gains& gains) {
    const auto maximum = static_cast<std::uint16_t>((1u << mosaic.bits) - 1);
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
