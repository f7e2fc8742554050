// Values worked by hand, the selection of a conversion, and what is refused.
#include "stages/color_interpolation.h"

#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "platform/last_error.h"

namespace tavra {
namespace {

using Pixel = std::array<unsigned, 3>;  // B, G, R

// A frame, and what the stage makes of it.
template <class Sample>
struct Picture {
    std::uint32_t width, height;
    std::vector<Sample> samples;
    std::vector<Sample> image = {};
    std::uint16_t pitch = 3;

    Picture(std::uint32_t w, std::uint32_t h, Sample value = 0)
        : width(w), height(h), samples(w * h, value) {}

    Sample& at(std::uint32_t x, std::uint32_t y) { return samples[y * width + x]; }

    std::uint32_t convert(std::uint8_t method, std::uint16_t colorArray, std::uint16_t outputPitch = 3) {
        pitch = outputPitch;
        image.assign(strideSamples() * height, 0xEE);
        CColorInterpolation stage;
        if constexpr (sizeof(Sample) == 1) {
            return stage.Convert(width, height, samples.data(), image.data(), method, colorArray, pitch);
        } else {
            return stage.Convert16(width, height, samples.data(), image.data(), method, colorArray, pitch);
        }
    }

    Pixel pixel(std::uint32_t x, std::uint32_t y) const {
        const Sample* const p = image.data() + y * strideSamples() + x * pitch;
        return {p[0], p[1], p[2]};
    }

    std::size_t strideSamples() const {
        return (width * pitch * sizeof(Sample) + 3) / 4 * 4 / sizeof(Sample);
    }

    bool untouched() const {
        for (Sample s : image) {
            if (s != 0xEE) return false;
        }
        return true;
    }
};

// S(x, y) = 10 * y + x, so that a sample tells where it came from.
template <class Sample>
Picture<Sample> places(std::uint32_t width, std::uint32_t height) {
    Picture<Sample> picture(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) picture.at(x, y) = static_cast<Sample>(10 * y + x);
    }
    return picture;
}

// The channel of a site (0 B, 1 G, 2 R), from the cells as they are drawn, row by row.
std::size_t channelAt(std::uint16_t array, std::uint32_t x, std::uint32_t y) {
    constexpr const char* kCells[] = {"RGGB", "GRBG", "GBRG", "BGGR"};
    const char color = kCells[(array >= 16 ? array - 16 : array - 2)][2 * (y % 2) + x % 2];
    return color == 'B' ? 0 : color == 'G' ? 1 : 2;
}

template <class Sample>
void flatFrame() {
    for (std::uint16_t array : {2, 3, 4, 5, 16, 17, 18, 19}) {
        for (std::uint8_t method = 1; method <= 6; ++method) {
            Picture<Sample> flat(10, 10, 100);
            ASSERT_EQ(flat.convert(method, array), 0u);
            for (std::uint32_t y = 0; y < 10; ++y) {
                for (std::uint32_t x = 0; x < 10; ++x) {
                    const Pixel p = flat.pixel(x, y);
                    if (method == 1) {
                        Pixel wanted = {0, 0, 0};
                        wanted[channelAt(array, x, y)] = 100;
                        EXPECT_EQ(p, wanted) << "array " << array << " at " << x << ", " << y;
                    } else {
                        EXPECT_EQ(p, (Pixel{100, 100, 100})) << int{method} << ", array " << array;
                    }
                }
            }
        }
    }
}

TEST(ColorInterpolation, AFlatFrameStaysFlat) {
    flatFrame<std::uint8_t>();
}

TEST(ColorInterpolation, AFlatFrameOfWordsStaysFlat) {
    flatFrame<std::uint16_t>();
}

TEST(ColorInterpolation, RawColourPutsEachSampleInItsChannel) {
    auto picture = places<std::uint8_t>(4, 4);
    ASSERT_EQ(picture.convert(1, 3), 0u);  // G R / B G
    EXPECT_EQ(picture.pixel(2, 2), (Pixel{0, 22, 0}));
    EXPECT_EQ(picture.pixel(3, 2), (Pixel{0, 0, 23}));
    EXPECT_EQ(picture.pixel(2, 3), (Pixel{32, 0, 0}));
    EXPECT_EQ(picture.pixel(3, 3), (Pixel{0, 33, 0}));
}

TEST(ColorInterpolation, NearestSharesTheCellsRedAndBlue) {
    auto picture = places<std::uint8_t>(4, 4);
    ASSERT_EQ(picture.convert(2, 2), 0u);  // R G / G B
    EXPECT_EQ(picture.pixel(2, 2), (Pixel{33, 23, 22}));
    EXPECT_EQ(picture.pixel(3, 2), (Pixel{33, 23, 22}));
    EXPECT_EQ(picture.pixel(2, 3), (Pixel{33, 32, 22}));
    EXPECT_EQ(picture.pixel(3, 3), (Pixel{33, 32, 22}));
}

TEST(ColorInterpolation, NearestAtAnOddLastColumnAndRowTakesFromTheCellBefore) {
    auto picture = places<std::uint8_t>(5, 5);
    ASSERT_EQ(picture.convert(2, 2), 0u);
    // The cell at (4, 4) has R inside; G would lie at (5, 4) and B at (5, 5).
    EXPECT_EQ(picture.pixel(4, 4), (Pixel{33, 43, 44}));
    EXPECT_EQ(picture.pixel(4, 3), (Pixel{33, 34, 24}));
    EXPECT_EQ(picture.pixel(3, 4), (Pixel{33, 43, 42}));
}

TEST(ColorInterpolation, BilinearCorner) {
    auto picture = places<std::uint8_t>(6, 6);
    ASSERT_EQ(picture.convert(3, 2), 0u);
    EXPECT_EQ(picture.pixel(0, 0), (Pixel{11, 1, 0}));  // S(1,1), S(1,0), S(0,0)
}

TEST(ColorInterpolation, BilinearNeverAveragesGreenVertically) {
    Picture<std::uint8_t> picture(6, 6);
    for (std::uint32_t x = 0; x < 6; ++x) picture.at(x, 2) = 200;
    ASSERT_EQ(picture.convert(3, 2), 0u);
    EXPECT_EQ(picture.pixel(2, 2), (Pixel{0, 200, 200}));
    EXPECT_EQ(picture.pixel(2, 1)[1], 0u);
    EXPECT_EQ(picture.pixel(2, 1)[2], 100u) << "red of row 1 lies between rows 0 and 2";
}

TEST(ColorInterpolation, BilinearTruncatesEachMean) {
    Picture<std::uint8_t> picture(4, 4);
    // Blue around (2, 2) of R G / G B: 1, 0 above and 1, 2 below. The means across are 0 and 1, and
    // theirs is 0.
    picture.at(1, 1) = 1;
    picture.at(3, 1) = 0;
    picture.at(1, 3) = 1;
    picture.at(3, 3) = 2;
    ASSERT_EQ(picture.convert(3, 2), 0u);
    EXPECT_EQ(picture.pixel(2, 2)[0], 0u);
}

TEST(ColorInterpolation, BilinearLastRowCopiesTheLackingColour) {
    // R G / G B. Row 5 of six lacks red, and takes that of row 4: S(2, 4), and S(2, 4), S(4, 4) averaged.
    auto even = places<std::uint8_t>(6, 6);
    ASSERT_EQ(even.convert(3, 2), 0u);
    EXPECT_EQ(even.pixel(2, 5)[2], 42u);
    EXPECT_EQ(even.pixel(3, 5)[2], 43u);
    // Row 6 of seven lacks blue, and takes that of row 5: S(1, 5), S(3, 5) averaged, and S(3, 5).
    auto odd = places<std::uint8_t>(6, 7);
    ASSERT_EQ(odd.convert(3, 2), 0u);
    EXPECT_EQ(odd.pixel(2, 6)[0], 52u);
    EXPECT_EQ(odd.pixel(3, 6)[0], 53u);
}

TEST(ColorInterpolation, FourTapWeighsMinusOneFiveFiveMinusOneEighths) {
    Picture<std::uint8_t> picture(12, 12);
    for (std::uint32_t y = 0; y < 12; ++y) {
        picture.at(1, y) = 40;  // outer pair of the missing site at x = 4: columns 1 and 7
        picture.at(7, y) = 41;
        picture.at(3, y) = 100;  // inner pair: 3 and 5
        picture.at(5, y) = 103;
    }
    ASSERT_EQ(picture.convert(4, 2), 0u);
    // Outer: 81 / 8 = 10.125, 10. Inner: 203 * 5 / 8 = 126.875, 127.
    EXPECT_EQ(picture.pixel(4, 4)[1], 117u);
    // At x = 2 the pair beside it alone counts: (40 + 100) / 2.
    EXPECT_EQ(picture.pixel(2, 4)[1], 70u);
}

TEST(ColorInterpolation, FourTapRoundsHalvesOfBothPairsUp) {
    Picture<std::uint8_t> picture(12, 12);
    picture.at(1, 4) = 4;  // outer sum 4: 0.5 rounds to 1
    picture.at(3, 4) = 4;  // inner sum 4: 2.5 rounds to 3
    ASSERT_EQ(picture.convert(4, 2), 0u);
    EXPECT_EQ(picture.pixel(4, 4)[1], 2u);
}

TEST(ColorInterpolation, FourTapClampsTheFarSideOfAPeakToZero) {
    Picture<std::uint8_t> picture(16, 16);
    picture.at(8, 8) = 255;  // red of R G / G B
    ASSERT_EQ(picture.convert(4, 2), 0u);
    EXPECT_EQ(picture.pixel(8, 8)[2], 255u);
    EXPECT_EQ(picture.pixel(7, 8)[2], 159u);  // 255 * 5 / 8 = 159.375
    EXPECT_EQ(picture.pixel(9, 8)[2], 159u);
    EXPECT_EQ(picture.pixel(5, 8)[2], 0u);
    EXPECT_EQ(picture.pixel(11, 8)[2], 0u);
    EXPECT_EQ(picture.pixel(8, 5)[2], 0u);
    EXPECT_EQ(picture.pixel(8, 11)[2], 0u);
}

TEST(ColorInterpolation, FourTapClampsWordsAt255InsideTheImage) {
    Picture<std::uint16_t> picture(16, 16, 1000);
    ASSERT_EQ(picture.convert(4, 2), 0u);
    EXPECT_EQ(picture.pixel(8, 8), (Pixel{255, 255, 1000}));
    EXPECT_EQ(picture.pixel(7, 8), (Pixel{255, 1000, 255}));
    EXPECT_EQ(picture.pixel(7, 7), (Pixel{1000, 255, 255}));
    EXPECT_EQ(picture.pixel(8, 7), (Pixel{255, 1000, 255}));
    // Means at the edge are not clamped.
    EXPECT_EQ(picture.pixel(1, 8)[2], 1000u);
}

TEST(ColorInterpolation, CellCentreCorner) {
    Picture<std::uint8_t> picture(6, 6);
    picture.at(0, 0) = 250;
    picture.at(2, 0) = 17;
    picture.at(0, 2) = 101;
    picture.at(2, 2) = 33;
    picture.at(1, 0) = 7;
    picture.at(0, 1) = 8;
    picture.at(1, 1) = 77;
    ASSERT_EQ(picture.convert(5, 2), 0u);
    // R: (2250 + 51 + 303 + 33) >> 4 = 2637 >> 4; G: 15 >> 1; B alone is near, side and far.
    EXPECT_EQ(picture.pixel(0, 0), (Pixel{77, 7, 164}));
}

TEST(ColorInterpolation, CellCentreKeepsTheGreenOfAnEvenLastColumn) {
    auto picture = places<std::uint8_t>(6, 6);
    for (std::uint8_t method : {5, 6}) {
        ASSERT_EQ(picture.convert(method, 2), 0u);  // R G / G B: green at (5, 0), blue at (5, 1)
        EXPECT_EQ(picture.pixel(5, 2)[1], 25u) << "its own sample alone";
        EXPECT_EQ(picture.pixel(5, 3)[1], (34u + 45u) / 2) << "column 6 is read as column 4";
    }
}

TEST(ColorInterpolation, CellCentreBilinearDoesNotReadTheLastRowOfAnOddHeight) {
    for (std::uint16_t array : {2, 3, 4, 5}) {
        Picture<std::uint8_t> picture(8, 7, 60);
        for (std::uint32_t x = 0; x < 8; ++x) picture.at(x, 6) = 255;
        ASSERT_EQ(picture.convert(5, array), 0u);
        for (std::uint32_t y = 0; y < 7; ++y) {
            for (std::uint32_t x = 0; x < 8; ++x)
                ASSERT_EQ(picture.pixel(x, y), (Pixel{60, 60, 60})) << x << ", " << y;
        }
    }
}

TEST(ColorInterpolation, CellCentreNearestReadsTheLastRowOfAnOddHeight) {
    auto picture = places<std::uint8_t>(6, 7);
    ASSERT_EQ(picture.convert(6, 2), 0u);
    EXPECT_EQ(picture.pixel(2, 6), (Pixel{53, (63 + 52) / 2, 62}));
}

TEST(ColorInterpolation, CellCentreNearestSlidesByOneSample) {
    auto picture = places<std::uint8_t>(6, 6);
    ASSERT_EQ(picture.convert(6, 2), 0u);
    EXPECT_EQ(picture.pixel(1, 1), (Pixel{11, (12 + 21) / 2, 22}));
    EXPECT_EQ(picture.pixel(2, 1), (Pixel{13, (12 + 23) / 2, 22}));
}

TEST(ColorInterpolation, AQuadBlockBecomesItsMean) {
    Picture<std::uint8_t> picture(8, 8);
    picture.at(0, 0) = 10;
    picture.at(1, 0) = 20;
    picture.at(0, 1) = 30;
    picture.at(1, 1) = 40;
    ASSERT_EQ(picture.convert(1, 16), 0u);
    for (std::uint32_t y : {0u, 2u}) {
        for (std::uint32_t x : {0u, 2u}) EXPECT_EQ(picture.pixel(x, y), (Pixel{0, 0, 25})) << x << ", " << y;
    }
    EXPECT_EQ(picture.pixel(4, 0), (Pixel{0, 0, 0}));
}

TEST(ColorInterpolation, MonoAndSamplePatternsAreGreyUnderEveryMethod) {
    for (std::uint16_t array : {1, 12, 13, 14, 15}) {
        for (std::uint8_t method : {0, 1, 2, 3, 4, 5, 6, 7, 255}) {
            auto picture = places<std::uint8_t>(5, 4);
            ASSERT_EQ(picture.convert(method, array), 0u);
            EXPECT_EQ(picture.pixel(3, 2), (Pixel{23, 23, 23}));
        }
    }
}

TEST(ColorInterpolation, MethodZeroShowsAMosaicAsGrey) {
    for (std::uint16_t array : {2, 5, 16, 19}) {
        auto picture = places<std::uint16_t>(5, 4);
        ASSERT_EQ(picture.convert(0, array, 4), 0u);
        EXPECT_EQ(picture.pixel(4, 3), (Pixel{34, 34, 34}));
        EXPECT_EQ(picture.image[3], 0xEE) << "the fourth word stays";
    }
}

TEST(ColorInterpolation, OneByteAPixelCopiesRows) {
    auto picture = places<std::uint8_t>(5, 3);
    ASSERT_EQ(picture.convert(3, 1, 1), 0u);
    for (std::size_t y = 0; y < 3; ++y) {
        for (std::size_t x = 0; x < 5; ++x) EXPECT_EQ(picture.image[8 * y + x], 10 * y + x);
        EXPECT_EQ(picture.image[8 * y + 5], 0xEE);
    }
}

TEST(ColorInterpolation, OneWordAPixelWithEqualStridesCopiesOneBlock) {
    const std::uint16_t source[] = {1, 2, 3, 4, 5, 6};
    std::uint16_t image[] = {9, 9, 9, 9, 9, 9, 9};
    CColorInterpolation stage;
    // Rows of two words, four words apart: the block ends with the last sample.
    ASSERT_EQ(stage.ConvertEx16(2, 2, 8, source, 8, image, 0, 1, 1), 0u);
    const std::uint16_t wanted[] = {1, 2, 3, 4, 5, 6, 9};
    for (std::size_t i = 0; i < 7; ++i) EXPECT_EQ(image[i], wanted[i]) << i;
}

TEST(ColorInterpolation, OneWordAPixelWithUnequalStridesCopiesTheSamplesOfEachRow) {
    // Two rows of three words, four words apart.
    const std::uint16_t source[] = {1, 2, 3, 4, 5, 6, 7};
    CColorInterpolation stage;
    std::uint16_t image[] = {9, 9, 9, 9, 9, 9, 9, 9, 9};
    ASSERT_EQ(stage.ConvertEx16(3, 2, 8, source, 10, image, 0, 1, 1), 0u);  // to five words apart
    const std::uint16_t wanted[] = {1, 2, 3, 9, 9, 5, 6, 7, 9};
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(image[i], wanted[i]) << i;
}

TEST(ColorInterpolation, OneWordAPixelGoesToRowsPaddedToFourBytesByDefault) {
    auto picture = places<std::uint16_t>(3, 2);  // six bytes a row, eight in the image
    ASSERT_EQ(picture.convert(0, 1, 1), 0u);
    const std::uint16_t wanted[] = {0, 1, 2, 0xEE, 10, 11, 12, 0xEE};
    ASSERT_EQ(picture.image.size(), 8u);
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(picture.image[i], wanted[i]) << i;
}

TEST(ColorInterpolation, ArraysOutsideTheTableAreRefusedWithTheLastErrorSet) {
    for (std::uint16_t array : {0, 20, 0xFFFF}) {
        for (std::uint8_t method : {0, 3, 7}) {
            auto picture = places<std::uint8_t>(6, 6);
            platform::setLastSystemError(0);
            EXPECT_EQ(picture.convert(method, array), 87u);
            EXPECT_EQ(platform::lastSystemError(), 87u);
            EXPECT_TRUE(picture.untouched());
        }
    }
}

TEST(ColorInterpolation, MethodsAboveSixAreRefusedOnAMosaic) {
    for (std::uint16_t array : {2, 5, 16, 19}) {
        for (std::uint8_t method : {7, 8, 255}) {
            auto picture = places<std::uint16_t>(6, 6);
            platform::setLastSystemError(0);
            EXPECT_EQ(picture.convert(method, array), 87u);
            EXPECT_EQ(platform::lastSystemError(), 87u);
            EXPECT_TRUE(picture.untouched());
        }
    }
}

TEST(ColorInterpolation, OutputSizesThatAConversionDoesNotHaveAreRefused) {
    const struct {
        std::uint8_t method;
        std::uint16_t array, pitch;
    } refused[] = {{0, 1, 2}, {0, 2, 2},  {0, 1, 0}, {3, 12, 2}, {3, 2, 1},
                   {1, 5, 2}, {6, 16, 1}, {2, 6, 1}, {2, 10, 2}};
    for (const auto& r : refused) {
        auto picture = places<std::uint8_t>(6, 6);
        EXPECT_EQ(picture.convert(r.method, r.array, r.pitch), 87u) << int{r.method} << ", " << r.array;
        EXPECT_TRUE(picture.untouched());
    }
}

TEST(ColorInterpolation, AQuadMosaicWithoutMemoryForItsReductionIsCodeEight) {
    CColorInterpolation stage;
    const std::uint16_t sample = 0;
    std::uint16_t pixel[3] = {9, 9, 9};
    EXPECT_EQ(stage.Convert16(0xFFFFFFFF, 0xFFFFFFFF, &sample, pixel, 3, 16, 3), 8u);
    EXPECT_EQ(pixel[0], 9);
    const std::uint8_t byte = 0;
    std::uint8_t bytePixel[3] = {9, 9, 9};
    EXPECT_EQ(stage.Convert(0xFFFFFFFF, 0xFFFFFFFF, &byte, bytePixel, 3, 19, 3), 8u);
    EXPECT_EQ(bytePixel[0], 9);
}

TEST(ColorInterpolation, NoPixelsIsSuccess) {
    CColorInterpolation stage;
    for (std::uint16_t array = 1; array <= 19; ++array) {
        for (std::uint8_t method : {0, 1, 3, 6}) {
            EXPECT_EQ(stage.Convert(0, 9, nullptr, nullptr, method, array, 3), 0u) << array;
            EXPECT_EQ(stage.Convert16(9, 0, nullptr, nullptr, method, array, 3), 0u) << array;
        }
    }
}

TEST(ColorInterpolation, NoPixelsIsSuccessWithOneSampleAPixelToo) {
    CColorInterpolation stage;
    for (std::uint16_t array = 1; array <= 19; ++array) {
        for (std::uint32_t stride : {0u, 12u}) {
            EXPECT_EQ(stage.ConvertEx(0, 9, stride, nullptr, stride, nullptr, 0, array, 1), 0u) << array;
            EXPECT_EQ(stage.ConvertEx(9, 0, stride, nullptr, stride, nullptr, 0, array, 1), 0u) << array;
            EXPECT_EQ(stage.ConvertEx16(0, 9, stride, nullptr, stride, nullptr, 0, array, 1), 0u) << array;
            EXPECT_EQ(stage.ConvertEx16(9, 0, stride, nullptr, stride, nullptr, 0, array, 1), 0u) << array;
        }
    }
}

}  // namespace
}  // namespace tavra
