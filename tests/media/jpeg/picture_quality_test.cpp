// What comes out of a decoder: as good a picture as libjpeg's accurate transform gives.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "media/jpeg/jpeg_support.h"
#include "media/jpeg/libjpeg.h"

namespace tavra::test {
namespace {

// Gradients, edges, texture and noise.
JpegJob chart(unsigned channels) {
    std::mt19937 random(9);
    std::normal_distribution<double> noise(0, 3);
    JpegJob job;
    job.width = 203;
    job.height = 157;
    job.channels = channels;
    job.source = channels == 1 ? JpegColor::Gray : JpegColor::Bgr;
    job.color = channels == 1 ? JpegColor::Gray : JpegColor::YCbCr;
    job.fill(0);
    for (std::uint32_t y = 0; y < job.height; ++y) {
        for (std::uint32_t x = 0; x < job.width; ++x) {
            for (unsigned c = 0; c < channels; ++c) {
                double light = 120 + 70 * std::sin(x / 60.0 + c) * std::cos(y / 45.0);
                if (std::hypot(x - 60.0, y - 70.0) < 40) light += c == 1 ? 60 : -40;
                if (y > 120) light = x % 16 < 8 ? 30 : 220;
                if (x > 150) light += 30 * std::sin(x * y / 300.0);
                job.pixels[y * job.step() + x * channels + c] =
                    static_cast<std::uint8_t>(std::clamp(light + noise(random), 0.0, 255.0));
            }
        }
    }
    return job;
}

double psnr(const JpegJob& job, const ByteVector& stream) {
    const Decoded read = decode(stream);
    EXPECT_EQ(read.warnings, 0);
    EXPECT_EQ(read.width, job.width);
    EXPECT_EQ(read.height, job.height);
    double sum = 0;
    for (std::uint32_t y = 0; y < job.height; ++y) {
        for (std::uint32_t x = 0; x < job.width; ++x) {
            for (unsigned c = 0; c < job.channels; ++c) {
                const unsigned place = job.channels == 1 ? 0 : 2 - c;  // libjpeg gives R first
                const double difference =
                    read.samples[(std::size_t{y} * job.width + x) * read.components + place] -
                    job.pixel(x, y)[c];
                sum += difference * difference;
            }
        }
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(job.pixels.size()) / sum);
}

TEST(JpegPicture, IsAsGoodAsLibjpegs) {
    for (const unsigned channels : {1u, 3u}) {
        for (const JpegSampling sampling :
             {JpegSampling::Sampling444, JpegSampling::Sampling422, JpegSampling::Sampling411}) {
            if (channels == 1 && sampling != JpegSampling::Sampling444) continue;
            JpegJob job = chart(channels);
            job.sampling = sampling;
            for (const unsigned quality : {25u, 50u, 75u, 90u, 95u, 100u}) {
                job.quality = quality;
                const ByteVector ours = encoded(job), theirs = encodedByLibjpeg(job);
                const double difference = psnr(job, ours) - psnr(job, theirs);
                EXPECT_GT(difference, -0.05) << channels << " channels, sampling "
                                             << static_cast<int>(sampling) << ", quality " << quality;
                EXPECT_LT(static_cast<double>(ours.size()), 1.02 * static_cast<double>(theirs.size()));
                RecordProperty("dB_" + std::to_string(channels) + "_" +
                                   std::to_string(static_cast<int>(sampling)) + "_" + std::to_string(quality),
                               std::to_string(difference));
            }
        }
    }
}

TEST(JpegPicture, RestartIntervalsDecodeToTheSamePicture) {
    JpegJob job = chart(3);
    job.sampling = JpegSampling::Sampling422;
    const Decoded without = decode(encoded(job));
    for (const unsigned interval : {1u, 2u, 7u, 13u, 260u, 65535u}) {
        job.restartInterval = interval;
        const Decoded with = decode(encoded(job));
        EXPECT_EQ(with.warnings, 0) << interval;
        EXPECT_EQ(with.samples, without.samples) << interval;
    }
}

TEST(JpegPicture, AtFullQualityItIsNearlyThePixels) {
    JpegJob job = chart(1);
    job.quality = 100;
    const Decoded read = decode(encoded(job));
    for (std::size_t i = 0; i < read.samples.size(); ++i) ASSERT_NEAR(read.samples[i], job.pixels[i], 2) << i;
}

TEST(JpegPicture, AGrayFrameAsYCbCrHasNoColour) {
    JpegJob job = chart(1);
    job.color = JpegColor::YCbCr;
    job.sampling = JpegSampling::Sampling422;
    const Decoded read = decode(encoded(job));
    ASSERT_EQ(read.components, 3u);
    for (std::size_t i = 0; i < read.samples.size(); i += 3) {
        ASSERT_EQ(read.samples[i], read.samples[i + 1]);
        ASSERT_EQ(read.samples[i], read.samples[i + 2]);
    }
}

// As wide and as high as the header can say.
TEST(JpegPicture, TheLargestSizesDecode) {
    for (const bool wide : {true, false}) {
        JpegJob job;
        job.width = wide ? 65500 : 1;  // libjpeg stops at 65500
        job.height = wide ? 1 : 65500;
        job.sampling = JpegSampling::Sampling411;
        job.fill(90);
        const Decoded read = decode(encoded(job));
        EXPECT_EQ(read.warnings, 0);
        EXPECT_EQ(read.width, job.width);
        EXPECT_EQ(read.height, job.height);
        EXPECT_NEAR(read.samples.back(), 90, 2);
    }
}

}  // namespace
}  // namespace tavra::test
