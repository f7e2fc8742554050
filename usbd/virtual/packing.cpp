#include "packing.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/little_endian.h"
#include "base/pixel_format.h"

namespace tavra::usbd {
namespace {

std::uint32_t scaled(std::uint16_t sample, std::uint32_t from, std::uint32_t to) {
    return from >= to ? sample >> (from - to) : std::uint32_t{sample} << (to - from);
}

// Significant bits of a sample in a format of one sample a pixel or BGR.
std::uint32_t significantBits(std::uint32_t code) {
    switch (code) {
        case 2:
        case 64:
        case 2048:
        case 0x10000:
        case 0x100000: return 10;
        case 4:
        case 128:
        case 0x20000:
        case 0x200000: return 12;
        case 8:
        case 256: return 14;
        case 16:
        case 512: return 16;
        default: return 8;
    }
}

void packBits(std::uint32_t bits, std::uint32_t from, std::span<const std::uint16_t> samples,
              std::span<std::uint8_t> out) {
    std::uint32_t pending = 0, count = 0;
    std::size_t at = 0;
    for (const std::uint16_t sample : samples) {
        pending |= scaled(sample, from, bits) << count;
        for (count += bits; count >= 8; count -= 8, pending >>= 8)
            out[at++] = static_cast<std::uint8_t>(pending);
    }
    if (count > 0) out[at] = static_cast<std::uint8_t>(pending);
}

struct Ycbcr {
    double y, cb, cr;
};

Ycbcr fullRange(double r, double g, double b) {
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    return {y, 128 + (b - y) / 1.772, 128 + (r - y) / 1.402};
}

Ycbcr limitedRange(double r, double g, double b) {
    const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
    constexpr double kLuma = 219.0 / 255, kChroma = 224.0 / 255;
    return {16 + kLuma * y, 128 + kChroma * (b - y) / 1.8556, 128 + kChroma * (r - y) / 1.5748};
}

std::uint8_t byteOf(double value) {
    return static_cast<std::uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

// Bytes of a group of pixels that share their colour: 0 and up the luma of a pixel, Cb, Cr.
constexpr int kCb = -1, kCr = -2;

struct GroupLayout {
    std::size_t pixels;
    std::array<int, 6> bytes;
    std::size_t size;
};

GroupLayout layoutOf(std::uint32_t code) {
    switch (code) {
        case 0x1000:
        case 0x1000000: return {4, {0, 1, kCb, 2, 3, kCr}, 6};
        case 0x2000:
        case 0x2000000: return {2, {0, kCb, 1, kCr}, 4};
        default: return {1, {0, kCb, kCr}, 3};
    }
}

void packYcbcr(std::uint32_t code, std::uint32_t from, std::span<const std::uint16_t> samples,
               std::span<std::uint8_t> out) {
    const bool limited = code >= 0x1000000;
    const GroupLayout layout = layoutOf(code);
    const std::size_t width = samples.size() / 3;
    std::size_t at = 0;
    for (std::size_t x = 0; x < width; x += layout.pixels) {
        std::array<double, 4> luma{};
        double cb = 0, cr = 0;
        for (std::size_t i = 0; i < layout.pixels; ++i) {
            // A group that the row cuts off goes on with the last pixel.
            const std::uint16_t* const rgb = &samples[3 * std::min(x + i, width - 1)];
            const double r = scaled(rgb[0], from, 8), g = scaled(rgb[1], from, 8),
                         b = scaled(rgb[2], from, 8);
            const Ycbcr color = limited ? limitedRange(r, g, b) : fullRange(r, g, b);
            luma[i] = color.y;
            cb += color.cb / static_cast<double>(layout.pixels);
            cr += color.cr / static_cast<double>(layout.pixels);
        }
        for (std::size_t i = 0; i < layout.size && at < out.size(); ++i) {
            const int byte = layout.bytes[i];
            out[at++] = byteOf(byte == kCb ? cb : byte == kCr ? cr : luma[static_cast<std::size_t>(byte)]);
        }
    }
}

}  // namespace

std::uint32_t packedRowBytes(std::uint32_t transferBits, std::uint32_t width) {
    return (width * transferBitsStored(transferBits) + 7) / 8;
}

void packRow(std::uint32_t transferBits, std::uint32_t bits, std::span<const std::uint16_t> samples,
             std::span<std::uint8_t> out) {
    const std::uint32_t to = significantBits(transferBits);
    switch (transferBits) {
        case 1:
        case 32:
            for (std::size_t i = 0; i < samples.size(); ++i)
                out[i] = static_cast<std::uint8_t>(scaled(samples[i], bits, 8));
            return;
        case 1024:
            for (std::size_t i = 0; i < samples.size(); ++i) {
                out[i] = static_cast<std::uint8_t>(scaled(samples[i / 3 * 3 + 2 - i % 3], bits, 8));
            }
            return;
        case 2048:
            for (std::size_t i = 0; i + 3 <= samples.size(); i += 3) {
                const std::uint32_t word = scaled(samples[i], bits, to) << 20 |
                                           scaled(samples[i + 1], bits, to) << 10 |
                                           scaled(samples[i + 2], bits, to);
                storeLe32(&out[i / 3 * 4], word);
            }
            return;
        case 0x10000:
        case 0x20000:
        case 0x100000:
        case 0x200000: packBits(to, bits, samples, out); return;
        case 0x1000:
        case 0x2000:
        case 0x4000:
        case 0x1000000:
        case 0x2000000:
        case 0x4000000: packYcbcr(transferBits, bits, samples, out); return;
        default:
            for (std::size_t i = 0; i < samples.size(); ++i) {
                storeLe16(&out[2 * i], static_cast<std::uint16_t>(scaled(samples[i], bits, to)));
            }
    }
}

}  // namespace tavra::usbd
