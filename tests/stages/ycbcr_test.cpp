// Packed YCbCr against the formulas of the two standards, in the fixed-point form of the tables.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "stages/color_interpolation.h"

namespace tavra {
namespace {

struct Yuv {
    int y, cb, cr;
};

long long entry(double value) {
    return std::llround(value * 4194304.0);
}

int channel(long long sum) {
    if (sum <= 0) return 0;
    if (sum >= 0x3FC00000) return 255;
    return static_cast<int>(sum >> 22);
}

bool limited(int colorArray) {
    return colorArray >= 9;
}

long long lumaEntry(int colorArray, int y) {
    if (!limited(colorArray)) return entry(y);
    const int clamped = std::clamp(y, 16, 235);
    return entry(std::min(std::max(1.16438 * (clamped - 16), 0.0), 254.9992));
}

// B, G, R.
std::array<int, 3> plainBgr(int colorArray, Yuv p) {
    const long long y = lumaEntry(colorArray, p.y);
    if (!limited(colorArray)) {
        return {channel(y + entry(1.772 * (p.cb - 128))),
                channel(y + entry(-0.34414 * (p.cb - 128)) + entry(-0.71414 * (p.cr - 128))),
                channel(y + entry(1.402 * (p.cr - 128)))};
    }
    const int cb = std::clamp(p.cb, 16, 240) - 128, cr = std::clamp(p.cr, 16, 240) - 128;
    return {channel(y + entry(2.1124 * cb)), channel(y + entry(-0.21325 * cb) + entry(-0.53291 * cr)),
            channel(y + entry(1.79274 * cr))};
}

// The bytes of a group of pixels, and where pixel k's Y lies.
struct Layout {
    int pixels, bytes;
    int luma[4];
    int cb, cr;
};

Layout layoutOf(int colorArray) {
    switch (colorArray) {
        case 6:
        case 9: return {2, 4, {0, 2, 0, 0}, 1, 3};
        case 7:
        case 10: return {1, 3, {0, 0, 0, 0}, 1, 2};
        default: return {4, 6, {0, 1, 3, 4}, 2, 5};
    }
}

std::size_t rowBytes(int colorArray, std::size_t width) {
    switch (colorArray) {
        case 6:
        case 9: return 2 * width;
        case 7:
        case 10: return 3 * width;
        default: return width + width / 2;
    }
}

// The pixel at column x. Chroma that a cut-off row does not hold is that of the group before, or none.
template <class Sample>
Yuv pixelAt(const Sample* row, int colorArray, std::size_t width, std::size_t x) {
    const Layout layout = layoutOf(colorArray);
    const std::size_t group = x / layout.pixels * layout.bytes;
    const auto chroma = [&](int offset) -> int {
        if (group + offset < rowBytes(colorArray, width)) return row[group + offset];
        return group >= static_cast<std::size_t>(layout.bytes) ? row[group - layout.bytes + offset] : 128;
    };
    return {row[group + layout.luma[x % layout.pixels]], chroma(layout.cb), chroma(layout.cr)};
}

std::uint32_t convert(std::uint32_t w, std::uint32_t h, std::uint32_t sourceStride,
                      const std::uint8_t* source, std::uint32_t stride, std::uint8_t* image,
                      std::uint8_t method, int array, std::uint16_t pitch) {
    CColorInterpolation stage;
    return stage.ConvertEx(w, h, sourceStride, source, stride, image, method,
                           static_cast<std::uint16_t>(array), pitch);
}

std::uint32_t convert(std::uint32_t w, std::uint32_t h, std::uint32_t sourceStride,
                      const std::uint16_t* source, std::uint32_t stride, std::uint16_t* image,
                      std::uint8_t method, int array, std::uint16_t pitch) {
    CColorInterpolation stage;
    return stage.ConvertEx16(w, h, 2 * sourceStride, source, 2 * stride, image, method,
                             static_cast<std::uint16_t>(array), pitch);
}

template <class Sample>
void compare(int array, std::uint8_t method, std::uint16_t pitch, std::uint32_t width, std::uint32_t height,
             std::uint32_t padding, std::mt19937& random) {
    const std::size_t dense = rowBytes(array, width), sourceStride = dense + padding;
    std::vector<Sample> source(sourceStride * (height - 1) + dense);
    for (Sample& s : source) s = static_cast<Sample>(random() & 0xFF);
    const std::size_t stride = std::size_t{width} * pitch + 2 * padding;
    const std::size_t lastRow = method == 0 ? width : std::size_t{width} * pitch;
    std::vector<Sample> image(stride * (height - 1) + lastRow);
    for (Sample& s : image) s = static_cast<Sample>(random());
    std::vector<Sample> wanted = image;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const Yuv p = pixelAt(source.data() + y * sourceStride, array, width, x);
            if (method == 0) {
                wanted[y * stride + x] = static_cast<Sample>(lumaEntry(array, p.y) >> 22);
                continue;
            }
            const auto bgr = plainBgr(array, p);
            for (std::size_t c = 0; c < 3; ++c)
                wanted[y * stride + x * pitch + c] = static_cast<Sample>(bgr[c]);
        }
    }
    ASSERT_EQ(convert(width, height, static_cast<std::uint32_t>(sourceStride), source.data(),
                      static_cast<std::uint32_t>(stride), image.data(), method, array, pitch),
              0u);
    ASSERT_EQ(image, wanted) << "array " << array << ", method " << int{method} << ", " << width << " x "
                             << height << ", pitch " << pitch;
}

class Ycbcr : public ::testing::TestWithParam<int> {};

TEST_P(Ycbcr, EqualsTheFormulaForAllSizesAndStrides) {
    std::mt19937 random(31);
    for (int i = 0; i < 400; ++i) {
        const std::uint32_t width = i < 40 ? static_cast<std::uint32_t>(i + 1) : 1 + random() % 400;
        const std::uint32_t height = 1 + random() % 4, padding = random() % 3;
        const std::uint16_t pitch = static_cast<std::uint16_t>(3 + random() % 2);
        // Any method but 0 converts, also those that a mosaic refuses.
        const std::uint8_t method = static_cast<std::uint8_t>(1 + random() % 9);
        compare<std::uint8_t>(GetParam(), method, pitch, width, height, padding, random);
        compare<std::uint16_t>(GetParam(), method, pitch, width, height, padding, random);
        if (HasFatalFailure()) return;
    }
}

TEST_P(Ycbcr, MethodZeroWritesOneSampleAPixelWhateverTheOutputSize) {
    std::mt19937 random(32);
    for (std::uint16_t pitch : {1, 2, 3, 4}) {
        for (std::uint32_t width = 1; width < 20; ++width) {
            compare<std::uint8_t>(GetParam(), 0, pitch, width, 3, width % 3, random);
            compare<std::uint16_t>(GetParam(), 0, pitch, width, 3, width % 3, random);
            if (HasFatalFailure()) return;
        }
    }
}

// Every luma with every pair of chroma that differs in the limits: all 16 million triples would take
// too long.
TEST_P(Ycbcr, EqualsTheFormulaOverTheColourCube) {
    const Layout layout = layoutOf(GetParam());
    std::vector<std::uint8_t> row(rowBytes(GetParam(), 256));
    std::vector<std::uint8_t> image(256 * 3);
    for (int cb : {0, 1, 15, 16, 17, 64, 127, 128, 129, 200, 239, 240, 241, 255}) {
        for (int cr = 0; cr < 256; cr += 5) {
            for (int x = 0; x < 256; ++x) {
                const int group = x / layout.pixels * layout.bytes;
                row[group + layout.luma[x % layout.pixels]] = static_cast<std::uint8_t>(x);
                row[group + layout.cb] = static_cast<std::uint8_t>(cb);
                row[group + layout.cr] = static_cast<std::uint8_t>(cr);
            }
            ASSERT_EQ(convert(256, 1, 0, row.data(), 0, image.data(), 2, GetParam(), 3), 0u);
            for (int x = 0; x < 256; ++x) {
                const auto wanted = plainBgr(GetParam(), {x, cb, cr});
                for (int c = 0; c < 3; ++c)
                    ASSERT_EQ(image[3 * x + c], wanted[c]) << x << ", " << cb << ", " << cr;
            }
        }
    }
}

// Every pair of chroma at the ends and in the middle of luma: the last bits of the rounded products decide
// some of them.
TEST(YcbcrTables, EqualTheFormulaForEveryPairOfChroma) {
    for (int array : {7, 10}) {
        std::vector<std::uint8_t> row(256 * 3), image(256 * 3), wanted(256 * 3);
        for (int luma : {0, 16, 100, 235, 255}) {
            for (int cb = 0; cb < 256; ++cb) {
                for (int cr = 0; cr < 256; ++cr) {
                    row[3 * cr] = static_cast<std::uint8_t>(luma);
                    row[3 * cr + 1] = static_cast<std::uint8_t>(cb);
                    row[3 * cr + 2] = static_cast<std::uint8_t>(cr);
                    const auto bgr = plainBgr(array, {luma, cb, cr});
                    for (int c = 0; c < 3; ++c) wanted[3 * cr + c] = static_cast<std::uint8_t>(bgr[c]);
                }
                ASSERT_EQ(convert(256, 1, 0, row.data(), 0, image.data(), 2, array, 3), 0u);
                ASSERT_EQ(image, wanted) << "array " << array << ", luma " << luma << ", Cb " << cb;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Array, Ycbcr, ::testing::Range(6, 12));

// The landmarks of the two standards.
TEST(YcbcrLandmarks, GreyHasNoColourAndWhiteIsWhite) {
    const std::uint8_t full[] = {0, 128, 128, 255, 128, 128, 100, 128, 128};
    std::uint8_t image[12] = {};
    ASSERT_EQ(convert(3, 1, 0, full, 0, image, 2, 7, 3), 0u);
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(image[c], 0);
        EXPECT_EQ(image[3 + c], 255);
        EXPECT_EQ(image[6 + c], 100);
    }
    const std::uint8_t limitedRange[] = {16, 128, 128, 235, 128, 128, 0, 128, 128};
    ASSERT_EQ(convert(3, 1, 0, limitedRange, 0, image, 2, 10, 3), 0u);
    for (int c = 0; c < 3; ++c) {
        EXPECT_EQ(image[c], 0);
        EXPECT_EQ(image[3 + c], 254) << "the table ends below 255, and the fraction is cut";
        EXPECT_EQ(image[6 + c], 0) << "below black is black";
    }
}

TEST(YcbcrLandmarks, RowsAreDenseAndTheImageIsPaddedByDefault) {
    // Two rows of five pixels 4:1:1: seven bytes each.
    std::vector<std::uint8_t> source(14, 128);
    for (int i : {0, 1, 3, 4, 6}) source[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(10 + i);
    for (int i : {7, 8, 10, 11, 13}) source[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(50 + i);
    std::vector<std::uint8_t> image(16, 0xEE);
    CColorInterpolation stage;
    ASSERT_EQ(stage.Convert(5, 2, source.data(), image.data(), 0, 8, 1), 0u);
    const std::vector<std::uint8_t> wanted = {10, 11, 13, 14, 16, 0xEE, 0xEE, 0xEE,
                                              57, 58, 60, 61, 63, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(image, wanted);
}

TEST(YcbcrLandmarks, WordsAboveAByteCountAs255) {
    const std::uint16_t source[] = {4095, 128, 128};
    std::uint16_t image[4] = {};
    ASSERT_EQ(convert(1, 1, 0, source, 0, image, 2, 7, 3), 0u);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(image[c], 255);
}

}  // namespace
}  // namespace tavra
