#include "media/jpeg/color_conversion.h"

#include <gtest/gtest.h>

#include <random>

#include "media/jpeg/jpeg_reference.h"
#include "media/jpeg/jpeg_support.h"

namespace tavra::test {
namespace {

using jpeg::PixelLayout;

constexpr PixelLayout kLayouts[] = {{3, false}, {3, true}, {4, false}, {4, true}};
constexpr std::size_t kWidths[] = {1, 2, 3, 15, 16, 17, 47, 48, 127, 128, 129, 300};

// A row of pixels in memory that holds nothing else, and a row of each plane.
struct Row {
    std::size_t width;
    PixelLayout layout;
    ByteVector pixels;
    ByteVector planes[3];

    Row(std::size_t rowWidth, PixelLayout rowLayout, std::mt19937& random)
        : width(rowWidth), layout(rowLayout), pixels(rowWidth * rowLayout.bytes) {
        for (std::uint8_t& byte : pixels) byte = static_cast<std::uint8_t>(random());
        for (ByteVector& plane : planes) plane.resize(width);
    }
    jpeg::PlaneRows rows() { return {planes[0].data(), planes[1].data(), planes[2].data()}; }
    int red(std::size_t x) const { return pixels[x * layout.bytes + (layout.blueFirst ? 2 : 0)]; }
    int green(std::size_t x) const { return pixels[x * layout.bytes + 1]; }
    int blue(std::size_t x) const { return pixels[x * layout.bytes + (layout.blueFirst ? 0 : 2)]; }
};

template <class Check>
void forAllRows(const Check& check) {
    std::mt19937 random(1);
    for (const PixelLayout layout : kLayouts) {
        for (const std::size_t width : kWidths) {
            SCOPED_TRACE(::testing::Message()
                         << layout.bytes << " bytes, blue first " << layout.blueFirst << ", width " << width);
            Row row(width, layout, random);
            check(row);
        }
    }
}

TEST(JpegColors, SplitsIntoRedGreenAndBlue) {
    forAllRows([](Row& row) {
        jpeg::splitRgb(row.pixels.data(), row.width, row.layout, row.rows());
        for (std::size_t x = 0; x < row.width; ++x) {
            ASSERT_EQ(row.planes[0][x], row.red(x));
            ASSERT_EQ(row.planes[1][x], row.green(x));
            ASSERT_EQ(row.planes[2][x], row.blue(x));
        }
    });
}

TEST(JpegColors, YCbCrIsTheNearest) {
    forAllRows([](Row& row) {
        jpeg::convertToYCbCr(row.pixels.data(), row.width, row.layout, row.rows());
        for (std::size_t x = 0; x < row.width; ++x) {
            const ExactYCbCr exact(row.red(x), row.green(x), row.blue(x));
            ASSERT_TRUE(isRounded(row.planes[0][x], exact.y)) << x;
            ASSERT_TRUE(isRounded(row.planes[1][x], exact.cb)) << x;
            ASSERT_TRUE(isRounded(row.planes[2][x], exact.cr)) << x;
        }
    });
}

TEST(JpegColors, GrayIsTheNearest) {
    forAllRows([](Row& row) {
        jpeg::convertToGray(row.pixels.data(), row.width, row.layout, row.planes[0].data());
        for (std::size_t x = 0; x < row.width; ++x) {
            ASSERT_TRUE(isRounded(row.planes[0][x], ExactYCbCr(row.red(x), row.green(x), row.blue(x)).y))
                << x;
        }
    });
}

// All colours of a grid that has the corners of the cube, among them those whose sums are ties.
TEST(JpegColors, YCbCrIsTheNearestAllOverTheCube) {
    ByteVector pixels, planes[3];
    for (int red = 0; red < 256; red += 3) {
        for (int green = 0; green < 256; green += 5) {
            pixels.clear();
            for (int blue = 0; blue < 256; ++blue) {
                for (const int sample : {red, green, blue})
                    pixels.push_back(static_cast<std::uint8_t>(sample));
            }
            for (ByteVector& plane : planes) plane.resize(256);
            jpeg::convertToYCbCr(pixels.data(), 256, {3, false},
                                 {planes[0].data(), planes[1].data(), planes[2].data()});
            for (int blue = 0; blue < 256; ++blue) {
                const ExactYCbCr exact(red, green, blue);
                const auto i = static_cast<std::size_t>(blue);
                ASSERT_TRUE(isRounded(planes[0][i], exact.y) && isRounded(planes[1][i], exact.cb) &&
                            isRounded(planes[2][i], exact.cr))
                    << red << " " << green << " " << blue;
            }
        }
    }
}

TEST(JpegColors, GreysHaveNoColour) {
    ByteVector pixels, planes[3];
    for (int level = 0; level < 256; ++level)
        pixels.insert(pixels.end(), 3, static_cast<std::uint8_t>(level));
    for (ByteVector& plane : planes) plane.resize(256);
    jpeg::convertToYCbCr(pixels.data(), 256, {3, true},
                         {planes[0].data(), planes[1].data(), planes[2].data()});
    for (std::size_t level = 0; level < 256; ++level) {
        EXPECT_EQ(planes[0][level], level);
        EXPECT_EQ(planes[1][level], 128);
        EXPECT_EQ(planes[2][level], 128);
    }
}

TEST(JpegColors, PairsAreSplit) {
    const ByteVector pairs = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};  // Y Cb Y Cr
    for (const std::size_t width : {5u, 6u}) {
        ByteVector planes[3] = {ByteVector(width), ByteVector(3), ByteVector(3)};
        jpeg::splitYCbCr422(pairs.data(), width, {planes[0].data(), planes[1].data(), planes[2].data()});
        EXPECT_EQ(planes[0], width == 6 ? (ByteVector{1, 3, 5, 7, 9, 11}) : (ByteVector{1, 3, 5, 7, 9}));
        EXPECT_EQ(planes[1], (ByteVector{2, 6, 10}));
        EXPECT_EQ(planes[2], (ByteVector{4, 8, 12}));
    }
}

}  // namespace
}  // namespace tavra::test
