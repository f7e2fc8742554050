// The stage beside the plain reference, over many sizes, strides, arrays, depths and pixel sizes. Buffers end
// with the last sample and the last pixel, so that the address sanitizer sees a read or a write beyond.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "stages/color_interpolation.h"
#include "stages/plain_interpolation.h"

namespace tavra {
namespace {

using test::Bgr;
using test::PlainMosaic;

struct Case {
    std::uint32_t width, height;
    std::uint32_t sourceStride, destinationStride;  // bytes, 0 for the default
    std::uint8_t method;
    std::uint16_t colorArray, pitch;

    friend std::ostream& operator<<(std::ostream& out, const Case& c) {
        return out << c.width << " x " << c.height << ", strides " << c.sourceStride << " and "
                   << c.destinationStride << ", method " << int{c.method} << ", array " << c.colorArray
                   << ", pitch " << c.pitch;
    }
};

std::uint32_t convert(const Case& c, const std::uint8_t* source, std::uint8_t* destination) {
    CColorInterpolation stage;
    return stage.ConvertEx(c.width, c.height, c.sourceStride, source, c.destinationStride, destination,
                           c.method, c.colorArray, c.pitch);
}

std::uint32_t convert(const Case& c, const std::uint16_t* source, std::uint16_t* destination) {
    CColorInterpolation stage;
    return stage.ConvertEx16(c.width, c.height, c.sourceStride, source, c.destinationStride, destination,
                             c.method, c.colorArray, c.pitch);
}

// Pixels over what the buffer held, so that everything else in it is seen to stay.
template <class Sample>
std::vector<Sample> expected(const Case& c, const std::vector<unsigned>& samples, std::vector<Sample> image,
                             std::size_t strideSamples) {
    const bool quad = c.colorArray >= 16;
    const PlainMosaic mosaic(c.width, c.height, quad ? c.colorArray - 14 : c.colorArray,
                             quad ? test::plainReduceQuad(c.width, c.height, samples) : samples);
    for (std::uint32_t y = 0; y < c.height; ++y) {
        for (std::uint32_t x = 0; x < c.width; ++x) {
            const Bgr pixel = test::plainPixel(c.method, mosaic, x, y);
            Sample* const out = image.data() + y * strideSamples + std::size_t{x} * c.pitch;
            out[0] = static_cast<Sample>(pixel.b);
            out[1] = static_cast<Sample>(pixel.g);
            out[2] = static_cast<Sample>(pixel.r);
        }
    }
    return image;
}

template <class Sample>
void compare(const Case& c, unsigned bits, std::mt19937& random) {
    SCOPED_TRACE(::testing::Message() << c << ", " << bits << " bits");
    // Noise with many samples at the ends of the range, where rounding and clamps show.
    const unsigned maximum = (1u << bits) - 1;
    std::vector<unsigned> samples(std::size_t{c.width} * c.height);
    for (unsigned& s : samples) {
        const unsigned roll = random();
        s = (roll & 7) == 0 ? 0 : (roll & 7) == 1 ? maximum : (roll >> 3) & maximum;
    }
    const std::size_t sourceStride = c.sourceStride != 0 ? c.sourceStride / sizeof(Sample) : c.width;
    std::vector<Sample> source(sourceStride * (c.height - 1) + c.width, 0x5A);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        source[i / c.width * sourceStride + i % c.width] = static_cast<Sample>(samples[i]);
    }
    const std::size_t rowBytes = (std::size_t{c.width} * c.pitch * sizeof(Sample) + 3) / 4 * 4;
    const std::size_t stride = (c.destinationStride != 0 ? c.destinationStride : rowBytes) / sizeof(Sample);
    std::vector<Sample> image(stride * (c.height - 1) + std::size_t{c.width} * c.pitch);
    for (Sample& s : image) s = static_cast<Sample>(random());
    const std::vector<Sample> wanted = expected(c, samples, image, stride);

    ASSERT_EQ(convert(c, source.data(), image.data()), 0u);
    if (image == wanted) return;
    const std::size_t at = static_cast<std::size_t>(
        std::mismatch(image.begin(), image.end(), wanted.begin()).first - image.begin());
    FAIL() << "at row " << at / stride << ", column " << at % stride / c.pitch << ", channel "
           << at % stride % c.pitch << ": " << +image[at] << ", wanted " << +wanted[at];
}

void compareBothDepths(const Case& c, std::mt19937& random) {
    compare<std::uint8_t>(c, 8, random);
    Case wide = c;
    wide.sourceStride *= 2;
    wide.destinationStride *= 2;
    compare<std::uint16_t>(wide, 8 + random() % 5, random);
}

class Interpolation : public ::testing::TestWithParam<int> {};

// Every size from one sample up, which takes in all sizes below the smallest that a method is meant for.
TEST_P(Interpolation, EqualsThePlainRuleForEverySmallSizeAndArray) {
    std::mt19937 random(7);
    for (std::uint32_t height = 1; height <= 11; ++height) {
        for (std::uint32_t width = 1; width <= 13; ++width) {
            for (std::uint16_t array : {2, 3, 4, 5, 16, 17, 18, 19}) {
                for (std::uint16_t pitch : {3, 4}) {
                    compareBothDepths(
                        {width, height, 0, 0, static_cast<std::uint8_t>(GetParam()), array, pitch}, random);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

TEST_P(Interpolation, EqualsThePlainRuleForRandomSizesAndStrides) {
    std::mt19937 random(11);
    const std::uint16_t arrays[] = {2, 3, 4, 5, 16, 17, 18, 19};
    for (int i = 0; i < 600; ++i) {
        Case c{};
        c.width = 1 + random() % (i % 4 == 0 ? 600 : 150);
        c.height = 1 + random() % 20;
        c.method = static_cast<std::uint8_t>(GetParam());
        c.colorArray = arrays[random() % 8];
        c.pitch = random() % 8 == 0 ? 6 : 3 + random() % 2;
        if (random() % 2 == 0) c.sourceStride = c.width + random() % 9;
        if (random() % 2 == 0) c.destinationStride = c.width * c.pitch + random() % 9;
        compareBothDepths(c, random);
        if (HasFatalFailure()) return;
    }
}

// The walk goes in pieces of 128 columns: sizes around their seams.
TEST_P(Interpolation, EqualsThePlainRuleAroundTheSeamsOfItsPieces) {
    std::mt19937 random(13);
    for (std::uint32_t base : {128u, 256u, 384u}) {
        for (std::uint32_t width = base - 7; width <= base + 7; ++width) {
            for (std::uint16_t array : {2, 3, 4, 5}) {
                compareBothDepths(
                    {width, 8 + width % 2, 0, 0, static_cast<std::uint8_t>(GetParam()), array, 3}, random);
                if (HasFatalFailure()) return;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Method, Interpolation, ::testing::Range(1, 7));

}  // namespace
}  // namespace tavra
