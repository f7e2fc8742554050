// What the encoder's calls take and refuse, and in which order they come.
#include <gtest/gtest.h>

#include <algorithm>

#include "media/jpeg/jpeg_support.h"
#include "media/jpeg/memory_output.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

struct EncoderCalls : ::testing::Test {
    CJPEGEncoder encoder;
    LimitedStream stream;
    ByteVector pixels = ByteVector(4096, 77);

    JpegError source(std::uint32_t width, std::uint32_t height, unsigned channels, JpegColor color,
                     JpegSampling sampling = JpegSampling::Sampling444, unsigned precision = 8,
                     std::size_t step = 64) {
        return encoder.SetSource(pixels.data(), step, width, height, channels, color, sampling, precision);
    }
    JpegError params(JpegColor color = JpegColor::YCbCr, JpegSampling sampling = JpegSampling::Sampling444) {
        return encoder.SetParams(JpegMode::Baseline, color, sampling, 0, false, 75);
    }
    void good() {
        ASSERT_EQ(source(16, 16, 3, JpegColor::Bgr), JpegError::None);
        ASSERT_EQ(encoder.SetDestination(&stream), JpegError::None);
        ASSERT_EQ(params(), JpegError::None);
    }
};

TEST_F(EncoderCalls, SourcesWithoutPixelsOrBeyondTheHeaderAreRefused) {
    EXPECT_EQ(encoder.SetSource(nullptr, 64, 1, 1, 1, JpegColor::Gray, JpegSampling::Sampling444),
              JpegError::WrongParameters);
    EXPECT_EQ(source(0, 1, 1, JpegColor::Gray), JpegError::WrongParameters);
    EXPECT_EQ(source(1, 0, 1, JpegColor::Gray), JpegError::WrongParameters);
    EXPECT_EQ(source(65536, 1, 1, JpegColor::Gray, JpegSampling::Sampling444, 8, 65536),
              JpegError::WrongParameters);
    EXPECT_EQ(source(1, 65536, 1, JpegColor::Gray), JpegError::WrongParameters);
    EXPECT_EQ(source(65535, 65535, 1, JpegColor::Gray, JpegSampling::Sampling444, 8, 65535), JpegError::None);
}

TEST_F(EncoderCalls, ARowStepHoldsTheRow) {
    const auto step = [&](std::size_t bytes) {
        return source(5, 2, 3, JpegColor::Bgr, JpegSampling::Sampling444, 8, bytes);
    };
    EXPECT_EQ(step(14), JpegError::WrongParameters);
    EXPECT_EQ(step(15), JpegError::None);
    EXPECT_EQ(step(0), JpegError::WrongParameters);
    EXPECT_EQ(step(SIZE_MAX), JpegError::WrongParameters) << "rows that memory cannot hold";
    const auto pairs = [&](std::size_t bytes) {
        return source(5, 2, 2, JpegColor::YCbCr, JpegSampling::Sampling422, 8, bytes);
    };
    EXPECT_EQ(pairs(11), JpegError::WrongParameters);
    EXPECT_EQ(pairs(12), JpegError::None) << "three pairs of four bytes";
}

TEST_F(EncoderCalls, ChannelsGoWithTheColour) {
    EXPECT_EQ(source(4, 4, 1, JpegColor::Gray), JpegError::None);
    for (const JpegColor color : {JpegColor::Rgb, JpegColor::Bgr}) {
        EXPECT_EQ(source(4, 4, 3, color), JpegError::None);
        EXPECT_EQ(source(4, 4, 4, color), JpegError::None);
        for (const unsigned channels : {0U, 1U, 2U, 5U})
            EXPECT_EQ(source(4, 4, channels, color), JpegError::WrongParameters);
    }
    EXPECT_EQ(source(4, 4, 3, JpegColor::Gray), JpegError::WrongParameters);
    EXPECT_EQ(source(4, 4, 2, JpegColor::YCbCr, JpegSampling::Sampling422), JpegError::None);
    EXPECT_EQ(source(4, 4, 3, JpegColor::YCbCr, JpegSampling::Sampling422), JpegError::WrongParameters);
    EXPECT_EQ(source(4, 4, 5, JpegColor::Cmyk), JpegError::WrongParameters);
    EXPECT_EQ(source(4, 4, 0, JpegColor::Unknown), JpegError::WrongParameters);
    for (const int number : {-1, 7}) {
        EXPECT_EQ(source(4, 4, 3, static_cast<JpegColor>(number)), JpegError::WrongParameters);
    }
    EXPECT_EQ(source(4, 4, 3, JpegColor::Bgr, JpegSampling::Sampling422), JpegError::WrongParameters);
    EXPECT_EQ(source(4, 4, 1, JpegColor::Gray, JpegSampling::Sampling444, 12), JpegError::WrongParameters);
}

TEST_F(EncoderCalls, ModesOtherThanBaselineAreNotImplemented) {
    good();
    const auto mode = [&](int number) {
        return encoder.SetParams(static_cast<JpegMode>(number), JpegColor::YCbCr, JpegSampling::Sampling444,
                                 0, false, 75);
    };
    EXPECT_EQ(mode(0), JpegError::WrongParameters);
    EXPECT_EQ(mode(1), JpegError::None);
    for (const int number : {2, 3, 4}) EXPECT_EQ(mode(number), JpegError::NotImplemented);
    EXPECT_EQ(mode(5), JpegError::WrongParameters);
    EXPECT_EQ(mode(-1), JpegError::WrongParameters);
    EXPECT_EQ(encoder.WriteHeader(), JpegError::WrongParameters) << "the last call was refused";
}

TEST_F(EncoderCalls, ParametersOutsideTheirRangeAreRefused) {
    good();
    const auto set = [&](int color, int sampling, unsigned restart, bool optimize, unsigned quality) {
        return encoder.SetParams(JpegMode::Baseline, static_cast<JpegColor>(color),
                                 static_cast<JpegSampling>(sampling), restart, optimize, quality);
    };
    EXPECT_EQ(set(4, 0, 65535, false, 100), JpegError::None);
    EXPECT_EQ(set(4, 0, 65536, false, 100), JpegError::WrongParameters);
    EXPECT_EQ(set(4, 0, 0, false, 101), JpegError::WrongParameters);
    EXPECT_EQ(set(4, 0, 0, true, 100), JpegError::NotImplemented);
    for (const int sampling : {-1, 2, 4, 5})
        EXPECT_EQ(set(4, sampling, 0, false, 50), JpegError::WrongParameters);
    for (const int color : {-1, 7}) EXPECT_EQ(set(color, 0, 0, false, 50), JpegError::WrongParameters);
}

TEST_F(EncoderCalls, ComeInTheirOrder) {
    EXPECT_EQ(encoder.SetDestination(nullptr), JpegError::WrongParameters);
    EXPECT_EQ(params(), JpegError::WrongParameters) << "no source yet";
    EXPECT_EQ(encoder.WriteHeader(), JpegError::WrongParameters);
    EXPECT_EQ(encoder.WriteData(), JpegError::WrongParameters);
    good();
    EXPECT_EQ(encoder.WriteData(), JpegError::WrongParameters) << "no header yet";
    EXPECT_TRUE(stream.bytes.empty());
    EXPECT_EQ(encoder.WriteHeader(), JpegError::None);
    EXPECT_EQ(encoder.WriteData(), JpegError::None);
    EXPECT_EQ(encoder.WriteData(), JpegError::WrongParameters) << "once for each header";
}

TEST_F(EncoderCalls, ANewSourceAsksForNewParameters) {
    good();
    ASSERT_EQ(source(8, 8, 1, JpegColor::Gray), JpegError::None);
    EXPECT_EQ(encoder.WriteHeader(), JpegError::WrongParameters);
    ASSERT_EQ(params(JpegColor::Gray), JpegError::None);
    EXPECT_EQ(encoder.WriteHeader(), JpegError::None);
    ASSERT_EQ(source(16, 16, 1, JpegColor::Gray), JpegError::None);
    EXPECT_EQ(encoder.WriteData(), JpegError::WrongParameters) << "buffers are those of another image";
    EXPECT_EQ(source(0, 0, 1, JpegColor::Gray), JpegError::WrongParameters);
    EXPECT_EQ(params(JpegColor::Gray), JpegError::WrongParameters) << "no source";
}

TEST_F(EncoderCalls, WithoutADestinationNothingCanBeWritten) {
    ASSERT_EQ(source(16, 16, 3, JpegColor::Bgr), JpegError::None);
    ASSERT_EQ(params(), JpegError::None);
    EXPECT_EQ(encoder.WriteHeader(), JpegError::FileIo);
}

TEST_F(EncoderCalls, PairsOfColoursThatDoNotGoTogetherAreNotImplemented) {
    const struct {
        unsigned channels;
        JpegColor source, color;
    } rows[] = {{1, JpegColor::Gray, JpegColor::Rgb},    {3, JpegColor::Bgr, JpegColor::Gray},
                {3, JpegColor::Bgr, JpegColor::Bgr},     {3, JpegColor::Rgb, JpegColor::Unknown},
                {3, JpegColor::Rgb, JpegColor::Cmyk},    {4, JpegColor::Rgb, JpegColor::Ycck},
                {2, JpegColor::YCbCr, JpegColor::Gray},  {2, JpegColor::YCbCr, JpegColor::Rgb},
                {2, JpegColor::YCbCr, JpegColor::YCbCr}, {1, JpegColor::Gray, JpegColor::Unknown},
                {3, JpegColor::YCbCr, JpegColor::YCbCr}, {4, JpegColor::Cmyk, JpegColor::Cmyk},
                {4, JpegColor::Ycck, JpegColor::Ycck},   {2, JpegColor::Unknown, JpegColor::Unknown}};
    for (const auto& row : rows) {
        ASSERT_EQ(source(16, 16, row.channels, row.source,
                         row.channels == 2 && row.source == JpegColor::YCbCr ? JpegSampling::Sampling422
                                                                             : JpegSampling::Sampling444),
                  JpegError::None);
        ASSERT_EQ(encoder.SetDestination(&stream), JpegError::None);
        ASSERT_EQ(params(row.color), JpegError::None);
        EXPECT_EQ(encoder.WriteHeader(), JpegError::None);
        EXPECT_EQ(encoder.WriteData(), JpegError::NotImplemented)
            << static_cast<int>(row.source) << " to " << static_cast<int>(row.color);
    }
}

// Brightness and colour apart already, and the colour halved: only a stream of the same sampling fits.
TEST_F(EncoderCalls, PairsOfYCbCrBecomeYCbCr422Only) {
    ASSERT_EQ(encoder.SetDestination(&stream), JpegError::None);
    for (const JpegSampling sampling :
         {JpegSampling::Sampling444, JpegSampling::Sampling422, JpegSampling::Sampling411}) {
        ASSERT_EQ(source(16, 16, 2, JpegColor::YCbCr, JpegSampling::Sampling422), JpegError::None);
        ASSERT_EQ(params(JpegColor::YCbCr, sampling), JpegError::None);
        ASSERT_EQ(encoder.WriteHeader(), JpegError::None);
        EXPECT_EQ(encoder.WriteData(),
                  sampling == JpegSampling::Sampling422 ? JpegError::None : JpegError::NotImplemented);
    }
}

// The blocks of a single component are not put together to MCUs, so that it cannot be 2 by 2.
TEST_F(EncoderCalls, GrayIsNeverSubsampled) {
    for (const JpegSampling sampling : {JpegSampling::Sampling422, JpegSampling::Sampling411}) {
        JpegJob job;
        job.width = job.height = 40;
        job.channels = 1;
        job.source = job.color = JpegColor::Gray;
        job.fill(90);
        const ByteVector whole = encoded(job);
        job.sampling = sampling;
        EXPECT_EQ(encoded(job), whole);
    }
}

TEST_F(EncoderCalls, OneEncoderMakesManyImages) {
    std::mt19937 random(1);
    for (int i = 0; i < 30; ++i) {
        JpegJob job;
        job.width = 1 + random() % 40;
        job.height = 1 + random() % 40;
        job.channels = i % 2 == 0 ? 3 : 1;
        job.source = i % 2 == 0 ? JpegColor::Rgb : JpegColor::Gray;
        job.color = i % 3 == 0 && i % 2 == 1 ? JpegColor::Gray : JpegColor::YCbCr;
        job.sampling = i % 4 == 0 ? JpegSampling::Sampling411 : JpegSampling::Sampling422;
        job.quality = random() % 101;
        job.fill(random);
        LimitedStream again;
        EXPECT_EQ(encode(encoder, job, again), JpegError::None);
        EXPECT_EQ(again.bytes, encoded(job)) << "what came before leaves no trace";
    }
}

// Of a movie's frames, only what WriteHeader makes anew is allocated: the planes of 8 x 1600 bytes, the
// stream's buffer, the bit accumulator.
TEST_F(EncoderCalls, TheCoefficientsAreKeptFromImageToImage) {
    constexpr std::size_t kCoefficients = 100 * 4 * 64 * sizeof(std::int16_t);
    std::mt19937 random(3);
    JpegJob job;
    job.width = 1600;
    job.height = 20;
    job.sampling = JpegSampling::Sampling422;
    job.fill(random);
    ByteVector memory(1 << 20);
    CMemoryOutput output(memory.data(), 0, memory.size());
    ASSERT_EQ(encode(encoder, job, output), JpegError::None);
    const ByteVector first(memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(output.length()));
    JpegJob higher = job, wider = job;
    higher.height = 50;
    higher.fill(random);
    wider.width = 1601;
    wider.fill(random);
    {
        const FailAllocationsFrom none(kCoefficients);
        output.Reset();
        EXPECT_EQ(encode(encoder, higher, output), JpegError::None);
        output.Reset();
        EXPECT_EQ(encode(encoder, job, output), JpegError::None);
        EXPECT_TRUE(std::equal(first.begin(), first.end(), memory.begin())) << "and none of them shows";
        EXPECT_EQ(encode(encoder, wider, output), JpegError::OutOfMemory) << "a row has more of them";
    }
    EXPECT_EQ(encode(encoder, wider, output), JpegError::None);
}

TEST_F(EncoderCalls, WritesComeInPiecesOfTheBuffer) {
    std::mt19937 random(2);
    JpegJob job;
    job.width = job.height = 200;
    job.quality = 100;
    job.fill(random);
    EXPECT_EQ(encode(encoder, job, stream), JpegError::None);
    ASSERT_GT(stream.writes.size(), 10u);
    for (std::size_t i = 1; i + 1 < stream.writes.size(); ++i) {
        EXPECT_LE(stream.writes[i], 4096u);
        EXPECT_GE(stream.writes[i], 4096u - 512u);
    }
}

}  // namespace
}  // namespace tavra::test
