// The converter from preview images to surfaces, against a plain reference that takes every pixel by itself.
#include "display/convert_image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace tavra::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using platform::SurfaceFormat;

constexpr std::uint8_t kUntouched = 0xA5;

struct Pixel {
    std::uint32_t red, green, blue;
};

Pixel pixelAt(const Bytes& source, std::uint32_t bits, std::size_t index) {
    if (bits == 1) return {source[index], source[index], source[index]};
    const std::size_t at = index * (bits == 8 ? 3 : 4);
    return {source[at + 2], source[at + 1], source[at]};
}

int nearest(double value) {
    return static_cast<int>(std::floor(value + 0.5));
}

// The studio-range matrix of ITU-R BT.601, each product rounded by itself.
int lumaOf(const Pixel& p) {
    return nearest(219 * 0.299 * p.red / 255) + nearest(219 * 0.587 * p.green / 255) +
           nearest(219 * 0.114 * p.blue / 255) + 16;
}
int blueDifferenceOf(const Pixel& p) {
    return 128 + nearest(112.0 * p.blue / 255) - nearest(112 * 0.299 / 0.886 * p.red / 255) -
           nearest(112 * 0.587 / 0.886 * p.green / 255);
}
int redDifferenceOf(const Pixel& p) {
    return 128 + nearest(112.0 * p.red / 255) - nearest(112 * 0.587 / 0.701 * p.green / 255) -
           nearest(112 * 0.114 / 0.701 * p.blue / 255);
}

void put(Bytes& to, std::size_t at, std::uint32_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i) to[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::size_t pixelBytes(std::uint32_t code) {
    if (code == 1) return 1;
    if (code == 8 || code == 16) return 3;
    return code == 32 || code == 64 ? 4 : 2;
}

// Width is even where the destination is UYVY and the source has colours.
Bytes reference(const Bytes& source, std::uint32_t width, std::uint32_t height, std::size_t pitch,
                std::uint32_t bits, std::uint32_t code) {
    Bytes to(pitch * height, kUntouched);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const Pixel p = pixelAt(source, bits, y * width + x);
            const std::size_t at = y * pitch + x * pixelBytes(code);
            switch (code) {
                case 1: to[bits == 1 ? at : y * width + x] = static_cast<std::uint8_t>(p.green); break;
                case 2: put(to, at, p.red / 8 * 1024 + p.green / 8 * 32 + p.blue / 8, 2); break;
                case 4: put(to, at, p.red / 8 * 2048 + p.green / 4 * 32 + p.blue / 8, 2); break;
                case 8: put(to, at, p.red * 65536 + p.green * 256 + p.blue, 3); break;
                case 16: put(to, at, p.blue * 65536 + p.green * 256 + p.red, 3); break;
                case 32: put(to, at, p.red * 65536 + p.green * 256 + p.blue, 4); break;
                case 64: put(to, at, p.blue * 65536 + p.green * 256 + p.red, 4); break;
                case 256:
                    if (bits == 1) {
                        put(to, at, 128 + p.green * 256, 2);
                    } else {
                        const Pixel first = pixelAt(source, bits, y * width + x - x % 2);
                        const int chroma = x % 2 == 0 ? blueDifferenceOf(first) : redDifferenceOf(first);
                        put(to, at, static_cast<std::uint32_t>(chroma + 256 * lumaOf(p)), 2);
                    }
                    break;
                default: break;
            }
        }
    }
    return to;
}

constexpr std::uint32_t kCodes[] = {1, 2, 4, 8, 16, 32, 64, 256};

TEST(ConvertImage, EverySourceBecomesEveryDestination) {
    std::mt19937 random(1);
    for (const std::uint32_t bits : {1u, 8u, 32u}) {
        for (const std::uint32_t code : kCodes) {
            for (const auto& [width, height, more] :
                 {std::tuple(2u, 1u, 0u), std::tuple(34u, 3u, 0u), std::tuple(70u, 5u, 6u)}) {
                Bytes source(std::size_t{width} * height * (bits == 1 ? 1 : bits == 8 ? 3 : 4));
                for (auto& byte : source) byte = static_cast<std::uint8_t>(random());
                const std::size_t pitch = width * pixelBytes(code) + more;
                Bytes converted(pitch * height, kUntouched);
                ConvertImage(source.data(), converted.data(), width, height, pitch, bits, code);
                EXPECT_EQ(converted, reference(source, width, height, pitch, bits, code))
                    << bits << " to " << code << ", " << width << " x " << height;
            }
        }
    }
}

// Every value of a channel, so that every entry of the tables is seen.
TEST(ConvertImage, UyvyOfEveryValueOfAChannel) {
    for (const std::size_t channel : {0u, 1u, 2u}) {
        Bytes source(256 * 2 * 3, 0);
        for (std::size_t i = 0; i < 256; ++i) {
            source[i * 6 + channel] = source[i * 6 + 3 + channel] = static_cast<std::uint8_t>(i);
        }
        Bytes converted(256 * 4);
        ConvertImage(source.data(), converted.data(), 512, 1, converted.size(), 8, 256);
        EXPECT_EQ(converted, reference(source, 512, 1, converted.size(), 8, 256)) << channel;
    }
}

TEST(ConvertImage, UyvyOfKnownColors) {
    const Bytes source = {0, 0, 0, 255, 255, 255, 0, 0, 255, 255, 0, 0};  // black, white; red, blue
    Bytes converted(8);
    ConvertImage(source.data(), converted.data(), 4, 1, 8, 8, 256);
    // Red: U 128 - 38, Y 16 + 65, V 240; the blue beside it has its own Y alone.
    EXPECT_EQ(converted, (Bytes{128, 16, 128, 235, 90, 81, 240, 41}));
}

TEST(ConvertImage, UyvyOfAnOddWidthFillsTheLastPair) {
    const Bytes source = {0, 0, 0, 0, 0, 0, 255, 255, 255};
    Bytes converted(9, kUntouched);
    ConvertImage(source.data(), converted.data(), 3, 1, 8, 8, 256);
    // White: the rounded terms of U are 128 + 112 - 38 - 74, those of V 128 + 112 - 94 - 18.
    EXPECT_EQ(converted, (Bytes{128, 16, 128, 16, 128, 235, 128, 235, kUntouched}));
}

TEST(ConvertImage, UyvyOfAnOddWidthOfGreyFillsTheLastPair) {
    const Bytes source = {10, 20, 30, 40, 50, 60};
    Bytes converted(20, kUntouched);
    ConvertImage(source.data(), converted.data(), 3, 2, 10, 1, 256);
    EXPECT_EQ(converted, (Bytes{128, 10, 128, 20, 128, 30, 128, 30, kUntouched, kUntouched,  //
                                128, 40, 128, 50, 128, 60, 128, 60, kUntouched, kUntouched}));
    Bytes alone(5, kUntouched);
    ConvertImage(source.data(), alone.data(), 1, 1, 4, 1, 256);
    EXPECT_EQ(alone, (Bytes{128, 10, 128, 10, kUntouched}));
}

TEST(ConvertImage, GreenRunHasNoPitch) {
    const Bytes source = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    Bytes converted(12, kUntouched);
    ConvertImage(source.data(), converted.data(), 2, 2, 6, 8, 1);
    EXPECT_EQ(Bytes(converted.begin(), converted.begin() + 5), (Bytes{2, 5, 8, 11, kUntouched}));
}

TEST(ConvertImage, UnknownFormatsWriteNothing) {
    const Bytes source(64, 7);
    Bytes converted(64, kUntouched);
    for (const std::uint32_t bits : {0u, 2u, 8u, 32u, 1u}) {
        ConvertImage(source.data(), converted.data(), 2, 2, 16, bits, 0);
        ConvertImage(source.data(), converted.data(), 2, 2, 16, bits, 128);
    }
    ConvertImage(source.data(), converted.data(), 2, 2, 16, 24, 32);
    ConvertImage(source.data(), converted.data(), 0, 2, 16, 8, 32);
    ConvertImage(source.data(), converted.data(), 2, 0, 16, 8, 32);
    EXPECT_EQ(converted, Bytes(64, kUntouched));
}

TEST(ConvertColor, IsOnePixelOfTheFormat) {
    EXPECT_EQ(convertColor(0x123456, 1), 0x34u);
    EXPECT_EQ(convertColor(0xFF00FF, 2), 0x7C1Fu);
    EXPECT_EQ(convertColor(0xFF00FF, 4), 0xF81Fu);
    EXPECT_EQ(convertColor(0x123456, 8), 0x123456u);
    EXPECT_EQ(convertColor(0x123456, 16), 0x563412u);
    EXPECT_EQ(convertColor(0x123456, 32), 0x123456u);
    EXPECT_EQ(convertColor(0x123456, 64), 0x563412u);
    EXPECT_EQ(convertColor(0x123456, 0), 0u);
}

TEST(ExchangeRedAndBlue, LeavesGreenAndDropsTheRest) {
    EXPECT_EQ(exchangeRedAndBlue(0x99123456), 0x563412u);
}

TEST(SurfaceFormatCode, GoesByBitsAndOneMask) {
    EXPECT_EQ(surfaceFormatCode({8, 0, 1, 2, 3}), 1u);
    EXPECT_EQ(surfaceFormatCode({16, 0, 0x7C00, 992, 31}), 2u);
    EXPECT_EQ(surfaceFormatCode({16, 0, 31, 992, 0xEC00}), 2u);
    EXPECT_EQ(surfaceFormatCode({16, 0, 0xF800, 2016, 31}), 4u);
    EXPECT_EQ(surfaceFormatCode({24, 0, 0xFF0000, 0xFF00, 255}), 8u);
    EXPECT_EQ(surfaceFormatCode({24, 0, 255, 0xFF00, 0xFF0000}), 16u);
    EXPECT_EQ(surfaceFormatCode({32, 0, 0xFF0000, 0xFF00, 255}), 32u);
    EXPECT_EQ(surfaceFormatCode({32, 0, 255, 0xFF00, 0xFF0000}), 64u);
    EXPECT_EQ(surfaceFormatCode({16, 0x59565955, 0, 0, 0}), 256u);
    EXPECT_EQ(surfaceFormatCode({16, 0, 0xFF00FF00, 0, 0}), 256u);
}

TEST(SurfaceFormatCode, AnythingElseIsNone) {
    for (const SurfaceFormat& format :
         {SurfaceFormat{}, SurfaceFormat{16, 0, 0xF800, 0x0F0, 31}, SurfaceFormat{24, 0, 0xFF00, 0, 0},
          SurfaceFormat{32, 0, 0xFF000000, 0, 0}, SurfaceFormat{16, 0x32595559, 0, 992, 0},
          SurfaceFormat{15, 0, 0, 992, 0}}) {
        EXPECT_EQ(surfaceFormatCode(format), 0u) << format.bits;
    }
}

}  // namespace
}  // namespace tavra::test
