// Whole streams, read back by libjpeg to their coefficients, against a plain path from pixels to
// coefficients.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "media/jpeg/jpeg_reference.h"
#include "media/jpeg/jpeg_support.h"
#include "media/jpeg/libjpeg.h"

namespace tavra::test {
namespace {

// Samples of one component at full size, the padding included.
using Plane = std::vector<std::vector<int>>;

// A component of a pixel before rounding.
double exactSample(const JpegJob& job, std::uint32_t x, std::uint32_t y, std::size_t component) {
    const std::uint8_t* const pixel = job.pixel(x, y);
    if (job.source == JpegColor::Gray) return component == 0 ? pixel[0] : 128;
    if (job.source == JpegColor::YCbCr)
        return component == 0 ? pixel[0] : job.pixel(x / 2 * 2, y)[component == 1 ? 1 : 3];
    const bool blueFirst = job.source == JpegColor::Bgr;
    const double red = pixel[blueFirst ? 2 : 0], green = pixel[1], blue = pixel[blueFirst ? 0 : 2];
    if (job.color == JpegColor::Rgb) return component == 0 ? red : component == 1 ? green : blue;
    const ExactYCbCr exact(red, green, blue);
    return component == 0 ? exact.y : component == 1 ? exact.cb : exact.cr;
}

bool isTie(double value) {
    return std::abs(value - std::floor(value) - 0.5) < 1e-6;
}

// Ties of the colour conversion may fall either way, so the pixels have none.
void fillWithoutTies(JpegJob& job, std::mt19937& random) {
    job.fill(random);
    if (job.color == JpegColor::Rgb || job.channels < 3) return;
    for (std::uint32_t y = 0; y < job.height; ++y) {
        for (std::uint32_t x = 0; x < job.width; ++x) {
            while (isTie(exactSample(job, x, y, 0)) || isTie(exactSample(job, x, y, 1)) ||
                   isTie(exactSample(job, x, y, 2))) {
                job.pixels[y * job.step() + x * job.channels + 1] = static_cast<std::uint8_t>(random());
            }
        }
    }
}

struct Mcu {
    std::uint32_t width, height;
};

Mcu mcuOf(const JpegJob& job) {
    if (job.color == JpegColor::Gray || job.sampling == JpegSampling::Sampling444) return {8, 8};
    return {16, job.sampling == JpegSampling::Sampling411 ? 16U : 8U};
}

Plane planeOf(const JpegJob& job, std::size_t component) {
    const Mcu mcu = mcuOf(job);
    const std::uint32_t width = (job.width + mcu.width - 1) / mcu.width * mcu.width;
    const std::uint32_t height = (job.height + mcu.height - 1) / mcu.height * mcu.height;
    Plane plane(height, std::vector<int>(width));
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            plane[y][x] = static_cast<int>(std::floor(
                exactSample(job, std::min(x, job.width - 1), std::min(y, job.height - 1), component) + 0.5));
        }
    }
    if (component == 0 || mcu.width == 8) return plane;

    Plane small(height * 8 / mcu.height, std::vector<int>(width / 2));
    for (std::size_t y = 0; y < small.size(); ++y) {
        for (std::size_t x = 0; x < small[y].size(); ++x) {
            const int odd = static_cast<int>(x % 2);
            if (job.source == JpegColor::YCbCr) {
                small[y][x] = plane[y][2 * x];
            } else if (mcu.height == 8) {
                small[y][x] = (plane[y][2 * x] + plane[y][2 * x + 1] + odd) / 2;
            } else {
                small[y][x] = (plane[2 * y][2 * x] + plane[2 * y][2 * x + 1] + plane[2 * y + 1][2 * x] +
                               plane[2 * y + 1][2 * x + 1] + 1 + odd) /
                              4;
            }
        }
    }
    return small;
}

void expectCoefficients(const JpegJob& job) {
    const Coefficients read = readCoefficients(encoded(job));
    ASSERT_EQ(read.warnings, 0);
    ASSERT_EQ(read.components.size(), job.color == JpegColor::Gray ? 1u : 3u);
    for (std::size_t c = 0; c < read.components.size(); ++c) {
        const Coefficients::Component& component = read.components[c];
        const Plane plane = planeOf(job, c);
        ASSERT_EQ(component.across, plane[0].size() / 8);
        ASSERT_EQ(component.down, plane.size() / 8);
        for (std::size_t b = 0; b < component.blocks.size(); ++b) {
            const std::size_t left = b % component.across * 8, top = b / component.across * 8;
            const ReferenceBlock wanted =
                referenceDct([&](std::size_t x, std::size_t y) { return plane[top + y][left + x]; });
            for (std::size_t i = 0; i < 64; ++i) {
                ASSERT_TRUE(isQuantized(component.blocks[b][i], wanted[i / 8][i % 8], component.steps[i]))
                    << "component " << c << ", block " << b << ", coefficient " << i << ": "
                    << component.blocks[b][i] << " for " << wanted[i / 8][i % 8] << " / "
                    << component.steps[i];
            }
        }
    }
}

constexpr JpegSampling kSamplings[] = {JpegSampling::Sampling444, JpegSampling::Sampling422,
                                       JpegSampling::Sampling411};

struct ColorPath {
    unsigned channels;
    JpegColor source, color;
};
constexpr ColorPath kPaths[] = {
    {1, JpegColor::Gray, JpegColor::Gray}, {1, JpegColor::Gray, JpegColor::YCbCr},
    {3, JpegColor::Rgb, JpegColor::Gray},  {4, JpegColor::Rgb, JpegColor::Gray},
    {3, JpegColor::Rgb, JpegColor::Rgb},   {4, JpegColor::Rgb, JpegColor::Rgb},
    {3, JpegColor::Bgr, JpegColor::Rgb},   {3, JpegColor::Rgb, JpegColor::YCbCr},
    {4, JpegColor::Rgb, JpegColor::YCbCr}, {3, JpegColor::Bgr, JpegColor::YCbCr},
    {4, JpegColor::Bgr, JpegColor::YCbCr}, {2, JpegColor::YCbCr, JpegColor::YCbCr}};

JpegJob randomJob(std::mt19937& random, const ColorPath& path, JpegSampling sampling) {
    JpegJob job;
    job.width = 1 + random() % 40;
    job.height = 1 + random() % 40;
    job.channels = path.channels;
    job.source = path.source;
    job.color = path.color;
    job.sampling = path.source == JpegColor::YCbCr ? JpegSampling::Sampling422 : sampling;
    job.quality = random() % 4 == 0 ? 100 : random() % 101;
    job.restartInterval = random() % 3 == 0 ? 1 + random() % 5 : 0;
    return job;
}

TEST(JpegCoefficients, EveryPathOfColourAndSampling) {
    std::mt19937 random(1);
    for (const ColorPath& path : kPaths) {
        for (const JpegSampling sampling : kSamplings) {
            for (int i = 0; i < 4; ++i) {
                JpegJob job = randomJob(random, path, sampling);
                SCOPED_TRACE(::testing::Message()
                             << job.channels << " channels, " << static_cast<int>(path.source) << " to "
                             << static_cast<int>(path.color) << ", sampling " << static_cast<int>(sampling)
                             << ", " << job.width << "x" << job.height << ", quality " << job.quality
                             << ", restart " << job.restartInterval);
                fillWithoutTies(job, random);
                expectCoefficients(job);
            }
        }
    }
}

TEST(JpegCoefficients, SizesAroundTheBlock) {
    std::mt19937 random(2);
    for (const JpegSampling sampling : kSamplings) {
        for (const std::uint32_t width : {1u, 2u, 7u, 8u, 9u, 15u, 16u, 17u, 64u, 65u, 130u}) {
            for (const std::uint32_t height : {1u, 8u, 9u, 16u, 17u}) {
                JpegJob job;
                job.width = width;
                job.height = height;
                job.sampling = sampling;
                job.quality = 95;
                SCOPED_TRACE(::testing::Message()
                             << width << "x" << height << ", sampling " << static_cast<int>(sampling));
                fillWithoutTies(job, random);
                expectCoefficients(job);
            }
        }
    }
}

TEST(JpegCoefficients, EdgesOfTheQuality) {
    std::mt19937 random(3);
    for (const unsigned quality : {0u, 1u, 49u, 50u, 51u, 99u, 100u}) {
        JpegJob job;
        job.width = 24;
        job.height = 16;
        job.quality = quality;
        SCOPED_TRACE(quality);
        fillWithoutTies(job, random);
        expectCoefficients(job);
    }
}

// The tables that a stream carries are those that libjpeg has by itself.
TEST(JpegTables, AreThoseOfLibjpeg) {
    JpegJob job;
    job.fill(0);
    for (job.quality = 1; job.quality <= 100; ++job.quality) {
        const ByteVector ours = encoded(job), theirs = encodedByLibjpeg(job);
        for (int i = 0; i < 2; ++i)
            ASSERT_EQ(segment(ours, 0xDB, i), segment(theirs, 0xDB, i)) << job.quality;
        for (int i = 0; i < 4; ++i) ASSERT_EQ(segment(ours, 0xC4, i), segment(theirs, 0xC4, i)) << i;
    }
}

}  // namespace
}  // namespace tavra::test
