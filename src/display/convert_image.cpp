#include "display/convert_image.h"

#include <array>
#include <cstring>

namespace tavra {
namespace {

using Byte = std::uint8_t;

// Words of a surface are little-endian on every machine that has one.
void store16(Byte* to, std::uint32_t value) {
    const auto word = static_cast<std::uint16_t>(value);
    std::memcpy(to, &word, sizeof word);
}

void store32(Byte* to, std::uint32_t value) {
    std::memcpy(to, &value, sizeof value);
}

// What a channel adds to Y, U and V, modulo 256.
struct Terms {
    Byte y, u, v;
};
using TermTable = std::array<Terms, 256>;

constexpr std::int32_t kFull = 255;
constexpr std::int32_t kRedWeight = 299, kGreenWeight = 587, kBlueWeight = 114;  // of luma, in thousandths
constexpr std::int32_t kWeights = 1000;
constexpr std::int32_t kLumaSpan = 219, kChromaHalfSpan = 112;

// value * numerator / denominator, rounded.
constexpr Byte rounded(std::int32_t value, std::int32_t numerator, std::int32_t denominator) {
    return static_cast<Byte>((2 * std::int64_t{value} * numerator + denominator) /
                             (2 * std::int64_t{denominator}));
}

constexpr Byte lumaTerm(std::int32_t value, std::int32_t weight) {
    return rounded(value, kLumaSpan * weight, kFull * kWeights);
}

// Of a channel in the difference from `other`, the channel that the difference is about.
constexpr Byte chromaTerm(std::int32_t value, std::int32_t weight, std::int32_t other) {
    return rounded(value, kChromaHalfSpan * weight, kFull * (kWeights - other));
}

constexpr Byte fullChromaTerm(std::int32_t value) {
    return static_cast<Byte>(rounded(value, kChromaHalfSpan, kFull) + 128);
}

// ITU-R BT.601, clause 2.5: luma from 16 to 235, colour differences from 16 to 240 around 128.
constexpr std::array<TermTable, 3> makeTerms() {
    std::array<TermTable, 3> tables{};
    for (std::int32_t i = 0; i < 256; ++i) {
        const auto at = static_cast<std::size_t>(i);
        tables[0][at] = {lumaTerm(i, kRedWeight), chromaTerm(i, kRedWeight, kBlueWeight), fullChromaTerm(i)};
        tables[1][at] = {lumaTerm(i, kGreenWeight), chromaTerm(i, kGreenWeight, kBlueWeight),
                         chromaTerm(i, kGreenWeight, kRedWeight)};
        tables[2][at] = {static_cast<Byte>(lumaTerm(i, kBlueWeight) + 16), fullChromaTerm(i),
                         chromaTerm(i, kBlueWeight, kRedWeight)};
    }
    return tables;
}

constexpr std::array<TermTable, 3> kTerms = makeTerms();
constexpr const TermTable& kRed = kTerms[0];
constexpr const TermTable& kGreen = kTerms[1];
constexpr const TermTable& kBlue = kTerms[2];

Byte lumaOf(const Byte* bgr) {
    return static_cast<Byte>(kRed[bgr[2]].y + kGreen[bgr[1]].y + kBlue[bgr[0]].y);
}

// By design: the chroma of a pair is that of its first pixel. A last pixel without a partner fills a pair.
template <std::size_t kSourceBytes>
void rowToUyvy(const Byte* source, Byte* destination, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; x += 2, source += 2 * kSourceBytes, destination += 4) {
        const Byte* const second = x + 1 < width ? source + kSourceBytes : source;
        const Byte blue = source[0], green = source[1], red = source[2];
        destination[0] = static_cast<Byte>(kBlue[blue].u - kRed[red].u - kGreen[green].u);
        destination[1] = lumaOf(source);
        destination[2] = static_cast<Byte>(kRed[red].v - kGreen[green].v - kBlue[blue].v);
        destination[3] = lumaOf(second);
    }
}

// Calls `convert(pixel, out)` for each pixel of a row.
template <std::size_t kSourceBytes, std::size_t kBytes, typename Convert>
void convertRow(const Byte* source, Byte* destination, std::uint32_t width, Convert convert) {
    for (std::size_t x = 0; x < width; ++x) convert(source + x * kSourceBytes, destination + x * kBytes);
}

void greyRow(const Byte* source, Byte* destination, std::uint32_t width, std::uint32_t code) {
    switch (code) {
        case kSurface8: std::memcpy(destination, source, width); break;
        case kSurface555:
            convertRow<1, 2>(source, destination, width, [](const Byte* grey, Byte* to) {
                const std::uint32_t five = *grey >> 3;
                store16(to, five << 10 | five << 5 | five);
            });
            break;
        case kSurface565:
            convertRow<1, 2>(source, destination, width, [](const Byte* grey, Byte* to) {
                const std::uint32_t six = *grey >> 2;
                store16(to, (six >> 1) << 11 | six << 5 | six >> 1);
            });
            break;
        case kSurface24Bgr:
        case kSurface24Rgb:
            convertRow<1, 3>(source, destination, width,
                             [](const Byte* grey, Byte* to) { to[0] = to[1] = to[2] = *grey; });
            break;
        case kSurface32Bgr:
        case kSurface32Rgb:
            convertRow<1, 4>(source, destination, width,
                             [](const Byte* grey, Byte* to) { store32(to, *grey * 0x010101u); });
            break;
        case kSurfaceUyvy:
            convertRow<1, 2>(source, destination, width, [](const Byte* grey, Byte* to) {
                to[0] = 128;
                to[1] = *grey;
            });
            // A last pixel without a partner fills a pair here, too: half a pair would have no grey.
            if (width % 2 != 0) {
                Byte* const end = destination + std::size_t{2} * width;
                std::memcpy(end, end - 2, 2);
            }
            break;
        default: break;
    }
}

template <std::size_t kSourceBytes>
void colorRow(const Byte* source, Byte* destination, std::uint32_t width, std::uint32_t code) {
    switch (code) {
        case kSurface555:
            convertRow<kSourceBytes, 2>(source, destination, width, [](const Byte* bgr, Byte* to) {
                store16(to, (bgr[2] & 0xF8u) << 7 | (bgr[1] & 0xF8u) << 2 | bgr[0] >> 3);
            });
            break;
        case kSurface565:
            convertRow<kSourceBytes, 2>(source, destination, width, [](const Byte* bgr, Byte* to) {
                store16(to, (bgr[2] & 0xF8u) << 8 | (bgr[1] & 0xFCu) << 3 | bgr[0] >> 3);
            });
            break;
        case kSurface24Bgr:
            convertRow<kSourceBytes, 3>(source, destination, width,
                                        [](const Byte* bgr, Byte* to) { std::memcpy(to, bgr, 3); });
            break;
        case kSurface24Rgb:
            convertRow<kSourceBytes, 3>(source, destination, width, [](const Byte* bgr, Byte* to) {
                to[0] = bgr[2];
                to[1] = bgr[1];
                to[2] = bgr[0];
            });
            break;
        case kSurface32Bgr:
            convertRow<kSourceBytes, 4>(source, destination, width, [](const Byte* bgr, Byte* to) {
                store32(to, std::uint32_t{bgr[2]} << 16 | std::uint32_t{bgr[1]} << 8 | bgr[0]);
            });
            break;
        case kSurface32Rgb:
            convertRow<kSourceBytes, 4>(source, destination, width, [](const Byte* bgr, Byte* to) {
                store32(to, std::uint32_t{bgr[0]} << 16 | std::uint32_t{bgr[1]} << 8 | bgr[2]);
            });
            break;
        case kSurfaceUyvy: rowToUyvy<kSourceBytes>(source, destination, width); break;
        default: break;
    }
}

// By design: a surface of 8 bits gets the green of all pixels in one run, whatever its pitch is.
template <std::size_t kSourceBytes>
void greenRun(const Byte* source, Byte* destination, std::size_t pixels) {
    for (std::size_t i = 0; i < pixels; ++i) destination[i] = source[i * kSourceBytes + 1];
}

template <std::size_t kSourceBytes>
void convertColors(const Byte* source, Byte* destination, std::uint32_t width, std::uint32_t height,
                   std::size_t pitch, std::uint32_t code) {
    if (code == kSurface8) {
        greenRun<kSourceBytes>(source, destination, std::size_t{width} * height);
        return;
    }
    for (std::uint32_t y = 0; y < height; ++y) {
        colorRow<kSourceBytes>(source, destination, width, code);
        source += width * kSourceBytes;
        destination += pitch;
    }
}

}  // namespace

std::uint32_t surfaceFormatCode(const platform::SurfaceFormat& format) {
    // By design: some drivers describe pixels of UYVY by this mask instead of their name.
    constexpr std::uint32_t kUyvyMask = 0xFF00FF00;
    if (format.fourCc != 0) return format.fourCc == platform::kFourCcUyvy ? kSurfaceUyvy : kSurfaceUnknown;
    switch (format.bits) {
        case 8: return kSurface8;
        case 16:
            if (format.green == 992) return kSurface555;
            if (format.green == 2016) return kSurface565;
            return format.red == kUyvyMask ? kSurfaceUyvy : kSurfaceUnknown;
        case 24:
            if (format.red == 0xFF0000) return kSurface24Bgr;
            return format.red == 255 ? kSurface24Rgb : kSurfaceUnknown;
        case 32:
            if (format.red == 0xFF0000) return kSurface32Bgr;
            return format.red == 255 ? kSurface32Rgb : kSurfaceUnknown;
        default: return kSurfaceUnknown;
    }
}

void ConvertImage(const std::uint8_t* source, std::uint8_t* destination, std::uint32_t width,
                  std::uint32_t height, std::size_t pitch, std::uint32_t sourceBits,
                  std::uint32_t destinationCode) {
    switch (sourceBits) {
        case 1:
            for (std::uint32_t y = 0; y < height; ++y, source += width, destination += pitch) {
                greyRow(source, destination, width, destinationCode);
            }
            break;
        case 8: convertColors<3>(source, destination, width, height, pitch, destinationCode); break;
        case 32: convertColors<4>(source, destination, width, height, pitch, destinationCode); break;
        default: break;
    }
}

std::uint32_t convertColor(std::uint32_t color, std::uint32_t destinationCode) {
    const Byte pixel[4] = {static_cast<Byte>(color), static_cast<Byte>(color >> 8),
                           static_cast<Byte>(color >> 16), 0};
    Byte converted[4] = {};
    ConvertImage(pixel, converted, 1, 1, sizeof converted, 32, destinationCode);
    std::uint32_t value = 0;
    std::memcpy(&value, converted, sizeof value);
    return value;
}

}  // namespace tavra
