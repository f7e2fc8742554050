#include "stages/gamma.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/color_array.h"
#include "base/error_codes.h"
#include "base/pixel_format.h"
#include "stages/image_rows.h"

namespace tavra {
namespace {

constexpr std::uint8_t kOff = 0;
constexpr std::uint8_t kPower = 1;
constexpr std::uint8_t kReversed = 2;
constexpr std::uint8_t kOwnTable = 255;

constexpr std::size_t kLuminance = 0;
constexpr std::uint16_t kByteBits = 8;

GammaTable identity(std::uint16_t bits) {
    GammaTable table;
    fillIdentity(table, bits);
    return table;
}

// The table of an application: bytes up to a depth of 8, words above.
void takeTable(GammaTable& table, const void* source, std::uint16_t bits) {
    const std::size_t count = std::size_t{1} << bits;
    if (bits > kByteBits) {
        std::memcpy(table.data(), source, count * sizeof table[0]);
    } else {
        std::copy_n(static_cast<const std::uint8_t*>(source), count, table.begin());
    }
}

void giveTable(const GammaTable& table, void* destination, std::uint16_t bits) {
    if (bits > kByteBits) {
        std::memcpy(destination, table.data(), (std::size_t{1} << bits) * sizeof table[0]);
    } else {
        std::transform(table.begin(), table.begin() + 256, static_cast<std::uint8_t*>(destination),
                       [](std::uint16_t entry) { return static_cast<std::uint8_t>(entry); });
    }
}

void giveContrast(std::uint16_t contrast, void* destination, std::uint16_t bits) {
    if (bits > kByteBits) {
        std::memcpy(destination, &contrast, sizeof contrast);
    } else {
        *static_cast<std::uint8_t*>(destination) = static_cast<std::uint8_t>(contrast);
    }
}

// The curves of the positions (0,0), (1,0), (0,1) and (1,1) by colour array; 2 for any that is not here.
using Positions = std::array<std::size_t, 4>;

constexpr Positions positionsOf(std::uint16_t colorArray) {
    switch (colorArray) {
        case 3: return {2, 1, 4, 3};
        case 4: return {3, 4, 1, 2};
        case 5: return {4, 3, 2, 1};
        default: return {1, 2, 3, 4};
    }
}

constexpr bool hasPositions(std::uint16_t colorArray) {
    return !isMonoLike(colorArray) && !isQuad(colorArray);
}

std::uint16_t entryOf(const GammaTable& table, std::uint16_t sample) {
    return table[std::min<std::size_t>(sample, table.size() - 1)];
}

}  // namespace

CGamma::Curve::Curve() : table(identity(kByteBits)), bytes(table) {}

CGamma::CGamma() : lumaShift_(curves_[kLuminance].table) {}

std::uint32_t CGamma::GetGamma(std::uint8_t index, std::uint8_t* mode, std::uint16_t* gamma,
                               std::int16_t* brightness, void* contrast, void* table, std::uint16_t* bits) {
    if (index >= curves_.size()) return error::kInvalidArgument;
    const std::lock_guard lock(mutex_);
    const Curve& curve = curves_[index];
    const auto wanted =
        bits == nullptr ? kByteBits : std::min<std::uint16_t>(*bits, std::uint16_t{kGammaMaximumBits});
    if (mode != nullptr) *mode = curve.mode;
    if (gamma != nullptr) *gamma = curve.gamma;
    if (brightness != nullptr) *brightness = curve.brightness;
    if (contrast != nullptr) giveContrast(curve.contrast, contrast, wanted);
    if (table != nullptr) giveTable(curve.table, table, wanted);
    if (bits != nullptr) *bits = curve.bits;
    return error::kNone;
}

std::uint32_t CGamma::SetGamma(std::uint8_t index, std::uint8_t mode, std::uint16_t gamma,
                               std::int16_t brightness, std::uint16_t contrast, const void* table,
                               std::uint16_t bits) {
    if (index >= curves_.size() || bits > kGammaMaximumBits) return error::kInvalidArgument;
    const std::lock_guard lock(mutex_);
    Curve& curve = curves_[index];
    switch (mode) {
        case kOff: fillIdentity(curve.table, bits); break;
        case kPower:
        case kReversed:
            if (gamma == 0) return error::kInvalidArgument;
            fillPowerCurve(curve.table, {gamma, brightness, contrast, bits});
            if (mode == kReversed) reverseCurve(curve.table, bits);
            break;
        case kOwnTable:
            if (table == nullptr) return error::kInvalidArgument;
            takeTable(curve.table, table, bits);
            break;
        default: return error::kInvalidArgument;
    }
    const bool shaped = mode == kPower || mode == kReversed;
    curve.mode = mode;
    curve.gamma = shaped ? gamma : std::uint16_t{100};
    curve.brightness = shaped ? brightness : std::int16_t{0};
    curve.contrast = shaped ? contrast : std::uint16_t{0};
    curve.bits = bits;
    curve.bytes.fill(curve.table);
    if (index == kLuminance) lumaShift_.fill(curve.table);
    return error::kNone;
}

bool CGamma::positionsOn() const {
    return std::any_of(curves_.begin() + 1, curves_.end(),
                       [](const Curve& curve) { return curve.mode != kOff; });
}

std::uint32_t CGamma::ApplyRaw8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                std::uint16_t colorArray, std::uint8_t* pixels) {
    if (!hasPositions(colorArray)) return error::kNone;
    const std::lock_guard lock(mutex_);
    if (!positionsOn()) return error::kNone;
    const Positions positions = positionsOf(colorArray);
    eachRow(width, height, stride, 1, pixels, [&](std::uint8_t* row, std::size_t y) {
        const std::size_t first = 2 * (y & 1);
        lookUpRow(row, width, curves_[positions[first]].bytes, curves_[positions[first + 1]].bytes);
    });
    return error::kNone;
}

std::uint32_t CGamma::ApplyRaw16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint16_t colorArray, std::uint16_t* pixels) {
    if (!hasPositions(colorArray)) return error::kNone;
    const std::lock_guard lock(mutex_);
    if (!positionsOn()) return error::kNone;
    const Positions positions = positionsOf(colorArray);
    eachRow(width, height, stride, 1, pixels, [&](std::uint16_t* row, std::size_t y) {
        const std::size_t first = 2 * (y & 1);
        for (std::size_t x = 0; x < width; ++x)
            row[x] = entryOf(curves_[positions[first + (x & 1)]].table, row[x]);
    });
    return error::kNone;
}

std::uint32_t CGamma::ApplyImage8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint32_t format, std::uint8_t* pixels) {
    const std::lock_guard lock(mutex_);
    const Curve& curve = curves_[kLuminance];
    if (curve.mode == kOff) return error::kNone;
    if (!hasByteSamples(format)) return error::kInvalidArgument;
    const std::size_t pitch = bytesPerPixel(format);
    if (pitch == 1) {
        eachRow(width, height, stride, pitch, pixels,
                [&](std::uint8_t* row, std::size_t) { lookUpRow(row, width, curve.bytes, curve.bytes); });
    } else {
        eachRow(width, height, stride, pitch, pixels,
                [&](std::uint8_t* row, std::size_t) { lumaShift_.apply(row, pitch, width); });
    }
    return error::kNone;
}

std::uint32_t CGamma::ApplyImage16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                   std::uint32_t format, std::uint16_t* pixels) {
    const std::lock_guard lock(mutex_);
    const Curve& curve = curves_[kLuminance];
    if (curve.mode == kOff) return error::kNone;
    switch (format) {
        case 16:
        case 32:
            eachRow(width, height, stride, 1, pixels, [&](std::uint16_t* row, std::size_t) {
                for (std::size_t x = 0; x < width; ++x) row[x] = entryOf(curve.table, row[x]);
            });
            return error::kNone;
        case 256:
        case 512: {
            const std::size_t pitch = format == 256 ? 3 : 4;
            eachRow(width, height, stride, pitch, pixels,
                    [&](std::uint16_t* row, std::size_t) { shiftWords(curve.table, row, pitch, width); });
            return error::kNone;
        }
        default: return error::kInvalidArgument;
    }
}

}  // namespace tavra
