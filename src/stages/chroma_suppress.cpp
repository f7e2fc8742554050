#include "stages/chroma_suppress.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "base/error_codes.h"
#include "stages/bgr_reader.h"
#include "stages/image_rows.h"
#include "stages/interpolation/bgr_writer.h"
#include "stages/luma_tables.h"

namespace tavra {
namespace {

// The whole of the distance, in the unit of k.
constexpr std::uint16_t kWhole = 16384;

constexpr std::size_t kTile = 256;

// Samples of a pixel: 0 for a mono format, which is left as it is, -1 for a format that is not taken.
template <class Sample>
int pitchOf(std::uint32_t format) {
    constexpr bool kBytes = sizeof(Sample) == 1;
    switch (format) {
        case 1: return kBytes ? 0 : -1;
        case 2:
        case 16:
        case 32:
        case 64: return kBytes ? -1 : 0;
        case 4: return kBytes ? 3 : -1;
        case 8: return kBytes ? 4 : -1;
        case 256: return kBytes ? -1 : 3;
        case 512: return kBytes ? -1 : 4;
        default: return -1;
    }
}

// One of the two sides, in words with a sign: luminance stays below 4096, and a threshold beyond the largest
// such word lies so far away that all it could suppress is suppressed wholly, or nothing.
struct Side {
    Side(std::uint16_t edge, std::uint16_t factor)
        : threshold(static_cast<std::int16_t>(std::min<std::uint16_t>(edge, INT16_MAX - 1))),
          strength(factor),
          furthest(static_cast<std::int16_t>(factor == 0 ? 0 : (kWhole - 1) / factor + 1)) {}

    // k at a distance beyond the threshold, counted from 1 at the threshold itself, where nothing is
    // suppressed yet; the whole and more is the whole. Strength times distance is kept within a word by
    // limiting the distance first: to the levels that make the whole.
    std::uint16_t suppression(std::int16_t distance) const {
        const std::int16_t levels = distance > 1 ? distance : std::int16_t{0};
        return static_cast<std::uint16_t>(std::min(levels, furthest) * strength);
    }

    std::int16_t threshold;
    std::uint16_t strength;
    std::int16_t furthest;
};

struct Bands {
    Side low, high;
};

// k of each pixel. False if it is 0 for all of them.
bool suppressionOf(const Bands& bands, const std::uint16_t* luma, std::uint16_t* __restrict k,
                   std::size_t count) {
    const Side low = bands.low, high = bands.high;
    std::uint16_t any = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const auto y = static_cast<std::int16_t>(luma[i]);
        const std::uint16_t below = low.suppression(static_cast<std::int16_t>(low.threshold + 1 - y));
        const std::uint16_t above = high.suppression(static_cast<std::int16_t>(y - high.threshold + 1));
        k[i] = std::min(std::max(below, above), kWhole);
        any |= k[i];
    }
    return any != 0;
}

// Moves a channel by k / 16384 of its distance to green, rounded towards where it was. As k is at most the
// whole, the channel never passes green, so it needs no clamp.
void pull(std::uint8_t* __restrict channel, const std::uint8_t* green, const std::uint16_t* k,
          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto way = static_cast<std::int16_t>(green[i] - channel[i]);
        const auto distance = static_cast<std::uint16_t>(std::abs(way) << 2);
        const auto step = static_cast<std::int16_t>((std::uint32_t{distance} * k[i]) >> 16);
        channel[i] = static_cast<std::uint8_t>(channel[i] + (way < 0 ? -step : step));
    }
}
void pull(std::uint16_t* __restrict channel, const std::uint16_t* green, const std::uint16_t* k,
          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t c = channel[i], g = green[i];
        const std::uint32_t step = ((std::max(c, g) - std::min(c, g)) * k[i]) >> 14;
        channel[i] = static_cast<std::uint16_t>(c < g ? c + step : c - step);
    }
}

template <class Sample>
void suppressRow(const Bands& bands, Sample* row, std::size_t pitch, std::size_t width) {
    alignas(32) Sample blue[kTile], green[kTile], red[kTile];
    alignas(32) std::uint16_t luma[kTile], k[kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        Sample* const pixels = row + x * pitch;
        readBgr(pixels, pitch, blue, green, red, count);
        lumaOfPlanes(blue, green, red, luma, count);
        if (!suppressionOf(bands, luma, k, count)) continue;
        pull(blue, green, k, count);
        pull(red, green, k, count);
        interpolation::writeBgr(pixels, pitch, blue, green, red, count);
    }
}

}  // namespace

template <class Sample>
std::uint32_t CChromaSuppress::apply(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                     std::uint32_t format, Sample* pixels) {
    // By design: only a setter that has begun is waited for; the values are read without the mutex.
    { const std::lock_guard lock(mutex_); }
    const std::uint16_t low = lowThreshold_, high = highThreshold_;
    const Bands bands = {{low, lowStrength_}, {high, highStrength_}};
    const bool lowOff = low == 0 || bands.low.strength == 0;
    const bool highOff = high >= std::numeric_limits<Sample>::max() || bands.high.strength == 0;
    if (lowOff && highOff) return error::kNone;
    const int pitch = pitchOf<Sample>(format);
    if (pitch < 0) return error::kInvalidArgument;
    if (pitch == 0) return error::kNone;
    const auto samples = static_cast<std::size_t>(pitch);
    eachRow(width, height, stride, samples, pixels,
            [&](Sample* row, std::size_t) { suppressRow(bands, row, samples, width); });
    return error::kNone;
}

std::uint32_t CChromaSuppress::Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                      std::uint32_t format, std::uint8_t* pixels) {
    return apply(width, height, stride, format, pixels);
}

std::uint32_t CChromaSuppress::Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                       std::uint32_t format, std::uint16_t* pixels) {
    return apply(width, height, stride, format, pixels);
}

std::uint32_t CChromaSuppress::set(Field& field, std::uint16_t value) {
    const std::lock_guard lock(mutex_);
    field = value;
    return error::kNone;
}

std::uint32_t CChromaSuppress::get(const Field& field, std::uint16_t* value) {
    if (value == nullptr) return error::kInvalidArgument;
    const std::lock_guard lock(mutex_);
    *value = field;
    return error::kNone;
}

std::uint32_t CChromaSuppress::SetThreshold(std::uint16_t value) {
    return SetHighThreshold(value);
}
std::uint32_t CChromaSuppress::GetThreshold(std::uint16_t* value) {
    return GetHighThreshold(value);
}
std::uint32_t CChromaSuppress::SetStrength(std::uint16_t value) {
    return SetHighStrength(value);
}
std::uint32_t CChromaSuppress::GetStrength(std::uint16_t* value) {
    return GetHighStrength(value);
}
std::uint32_t CChromaSuppress::SetLowThreshold(std::uint16_t value) {
    return set(lowThreshold_, value);
}
std::uint32_t CChromaSuppress::GetLowThreshold(std::uint16_t* value) {
    return get(lowThreshold_, value);
}
std::uint32_t CChromaSuppress::SetLowStrength(std::uint16_t value) {
    return set(lowStrength_, value);
}
std::uint32_t CChromaSuppress::GetLowStrength(std::uint16_t* value) {
    return get(lowStrength_, value);
}
std::uint32_t CChromaSuppress::SetHighThreshold(std::uint16_t value) {
    return set(highThreshold_, value);
}
std::uint32_t CChromaSuppress::GetHighThreshold(std::uint16_t* value) {
    return get(highThreshold_, value);
}
std::uint32_t CChromaSuppress::SetHighStrength(std::uint16_t value) {
    return set(highStrength_, value);
}
std::uint32_t CChromaSuppress::GetHighStrength(std::uint16_t* value) {
    return get(highStrength_, value);
}

}  // namespace tavra
