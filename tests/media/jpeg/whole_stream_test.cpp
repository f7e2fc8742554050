// Streams put together by hand, byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

#include "media/jpeg/jpeg_support.h"

namespace tavra::test {
namespace {

// Annex K as it stands in a stream, typed in once more.
const ByteVector kLuminanceSteps = {16, 11, 12,  14,  12,  10, 16, 14,  13,  14,  18,  17,  16, 19,  24,  40,
                                    26, 24, 22,  22,  24,  49, 35, 37,  29,  40,  58,  51,  61, 60,  57,  51,
                                    56, 55, 64,  72,  92,  78, 64, 68,  87,  69,  55,  56,  80, 109, 81,  87,
                                    95, 98, 103, 104, 103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};
const ByteVector kDcLuminance = {0x00, 0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0,  0, 0,
                                 0,    0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
const ByteVector kDcChrominance = {0x01, 0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0,  0, 0,
                                   0,    0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
const ByteVector kAcLuminanceStart = {0x10, 0, 2, 1, 3,   3,    2,    4,    3,    5,    5,   4,
                                      4,    0, 0, 1, 125, 0x01, 0x02, 0x03, 0x00, 0x04, 0x11};
const ByteVector kAcChrominanceStart = {0x11, 0, 2, 1, 2,   4,    4,    3,    4,    7,    5,   4,
                                        4,    0, 1, 2, 119, 0x00, 0x01, 0x02, 0x03, 0x11, 0x04};

ByteVector joined(std::initializer_list<ByteVector> parts) {
    ByteVector all;
    for (const ByteVector& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The stream without its AC tables, which are looked at for themselves.
ByteVector withoutAcTables(ByteVector stream) {
    for (const int id : {0x10, 0x11}) {
        const ByteVector head = {0xFF, 0xC4, 0, 181, static_cast<std::uint8_t>(id)};
        const auto found = std::search(stream.begin(), stream.end(), head.begin(), head.end());
        if (found != stream.end()) stream.erase(found, found + 2 + 181);
    }
    return stream;
}

const ByteVector kStart = {0xFF, 0xD8};
const ByteVector kJfif = {0xFF, 0xE0, 0, 16, 'J', 'F', 'I', 'F', 0, 1, 2, 0, 0, 1, 0, 1, 0, 0};
const ByteVector kEnd = {0xFF, 0xD9};
const ByteVector kSteps0 = {0xFF, 0xDB, 0, 67, 0};
const ByteVector kHuffman = {0xFF, 0xC4, 0, 31};

// 200 - 128 = 72 in all samples: DC 8 * 72 / 16 = 36, which has six bits: code 1110, value 100100. Then the
// end of the block, 1010, and ones.
TEST(JpegStream, OneGrayPixel) {
    JpegJob job;
    job.channels = 1;
    job.source = job.color = JpegColor::Gray;
    job.fill(200);
    EXPECT_EQ(withoutAcTables(encoded(job)), joined({kStart,
                                                     kJfif,
                                                     kSteps0,
                                                     kLuminanceSteps,
                                                     {0xFF, 0xC0, 0, 11, 8, 0, 1, 0, 1, 1, 0, 0x11, 0},
                                                     kHuffman,
                                                     kDcLuminance,
                                                     {0xFF, 0xDA, 0, 8, 1, 0, 0x00, 0, 63, 0},
                                                     {0b11101001, 0b00101011},
                                                     kEnd}));
}

// A gray frame of a movie. The MCU: two blocks of Y, the second with DC difference 0 (00 1010), and a block
// each of Cb and Cr, both 128: 00 and the end of the block, 00.
TEST(JpegStream, OneGrayPixelAsYCbCr422) {
    JpegJob job;
    job.channels = 1;
    job.source = JpegColor::Gray;
    job.sampling = JpegSampling::Sampling422;
    job.fill(200);
    const ByteVector stream = encoded(job);
    ByteVector chrominanceSteps = {17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66};
    chrominanceSteps.resize(64, 99);
    EXPECT_EQ(withoutAcTables(stream),
              joined({kStart,
                      kJfif,
                      kSteps0,
                      kLuminanceSteps,
                      {0xFF, 0xDB, 0, 67, 1},
                      chrominanceSteps,
                      {0xFF, 0xC0, 0, 17, 8, 0, 1, 0, 1, 3, 0, 0x21, 0, 1, 0x11, 1, 2, 0x11, 1},
                      kHuffman,
                      kDcLuminance,
                      kHuffman,
                      kDcChrominance,
                      {0xFF, 0xDA, 0, 12, 3, 0, 0x00, 1, 0x11, 2, 0x11, 0, 63, 0},
                      {0b11101001, 0b00101000, 0b10100000, 0b00001111},
                      kEnd}));
    const ByteVector order = {segment(stream, 0xC4, 0)[0], segment(stream, 0xC4, 1)[0],
                              segment(stream, 0xC4, 2)[0], segment(stream, 0xC4, 3)[0]};
    EXPECT_EQ(order, (ByteVector{0x00, 0x10, 0x01, 0x11})) << "DC 0, AC 0, DC 1, AC 1";
}

TEST(JpegStream, AcTablesBeginAsAnnexKSays) {
    JpegJob job;
    job.fill(0);
    const ByteVector stream = encoded(job);
    for (const auto& [n, start] : {std::pair(1, kAcLuminanceStart), std::pair(3, kAcChrominanceStart)}) {
        const ByteVector table = segment(stream, 0xC4, n);
        ASSERT_EQ(table.size(), 1u + 16 + 162);
        EXPECT_EQ(ByteVector(table.begin(), table.begin() + static_cast<std::ptrdiff_t>(start.size())),
                  start);
    }
}

TEST(JpegStream, SizeAndFactorsStandInTheFrameHeader) {
    JpegJob job;
    job.width = 17;
    job.height = 9;
    job.fill(0);
    const struct {
        JpegSampling sampling;
        std::uint8_t factors;
    } rows[] = {{JpegSampling::Sampling444, 0x11},
                {JpegSampling::Sampling422, 0x21},
                {JpegSampling::Sampling411, 0x22}};
    for (const auto& row : rows) {
        job.sampling = row.sampling;
        EXPECT_EQ(segment(encoded(job), 0xC0),
                  (ByteVector{8, 0, 9, 0, 17, 3, 0, row.factors, 0, 1, 0x11, 1, 2, 0x11, 1}));
    }
    JpegJob tall;
    tall.width = 1;
    tall.height = 0xFFFF;
    tall.fill(0);
    const ByteVector header = segment(encoded(tall), 0xC0);
    EXPECT_EQ(ByteVector(header.begin(), header.begin() + 5), (ByteVector{8, 0xFF, 0xFF, 0, 1}));
}

TEST(JpegStream, RgbIsMarkedByAdobesSegmentAndHasOneTableOfEach) {
    JpegJob job;
    job.color = JpegColor::Rgb;
    job.fill(0);
    const ByteVector stream = encoded(job);
    EXPECT_EQ(segment(stream, 0xEE), (ByteVector{'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0, 0}));
    EXPECT_TRUE(segment(stream, 0xE0).empty());
    EXPECT_TRUE(segment(stream, 0xDB, 1).empty());
    EXPECT_TRUE(segment(stream, 0xC4, 2).empty());
    EXPECT_EQ(segment(stream, 0xC0), (ByteVector{8, 0, 1, 0, 1, 3, 0, 0x11, 0, 1, 0x11, 0, 2, 0x11, 0}));
    EXPECT_EQ(segment(stream, 0xDA), (ByteVector{3, 0, 0, 1, 0, 2, 0, 0, 63, 0}));
}

// Four components have a header, and no source that could become them.
TEST(JpegStream, FourComponentsHaveTheFourthLikeTheFirst) {
    for (const JpegColor color : {JpegColor::Cmyk, JpegColor::Ycck}) {
        const bool ycck = color == JpegColor::Ycck;
        const std::uint8_t table = ycck ? 1 : 0;
        JpegJob job;
        job.color = color;
        job.sampling = JpegSampling::Sampling411;
        job.fill(0);
        CJPEGEncoder encoder;
        LimitedStream stream;
        EXPECT_EQ(encode(encoder, job, stream), JpegError::NotImplemented);
        EXPECT_EQ(segment(stream.bytes, 0xEE), (ByteVector{'A', 'd', 'o', 'b', 'e', 0, 100, 0, 0, 0, 0,
                                                           static_cast<std::uint8_t>(ycck ? 2 : 0)}));
        EXPECT_EQ(segment(stream.bytes, 0xC0),
                  (ByteVector{8, 0, 1, 0, 1, 4, 0, 0x22, 0, 1, 0x11, table, 2, 0x11, table, 3, 0x22, 0}));
    }
}

TEST(JpegStream, ThereIsNoComment) {
    JpegJob job;
    job.fill(0);
    EXPECT_TRUE(segment(encoded(job), 0xFE).empty());
}

// Three MCUs, one value: the first of each interval has its DC whole, 36 once more.
TEST(JpegStream, RestartMarkersStandBetweenTheIntervals) {
    JpegJob job;
    job.channels = 1;
    job.source = job.color = JpegColor::Gray;
    job.width = 24;
    job.restartInterval = 2;
    job.fill(200);
    const ByteVector stream = encoded(job);
    EXPECT_EQ(segment(stream, 0xDD), (ByteVector{0, 2}));
    // 1110100100 1010, 00 1010, ones; the marker; 1110100100 1010, ones
    const ByteVector end = {0b11101001, 0b00101000, 0b10101111, 0xFF, 0xD0,
                            0b11101001, 0b00101011, 0xFF,       0xD9};
    EXPECT_EQ(ByteVector(stream.end() - static_cast<std::ptrdiff_t>(end.size()), stream.end()), end);
}

TEST(JpegStream, RestartMarkersCountToSevenAndTheLastIntervalHasNone) {
    JpegJob job;
    job.channels = 1;
    job.source = job.color = JpegColor::Gray;
    job.width = 8 * 18;
    job.restartInterval = 1;
    job.fill(128);
    const ByteVector stream = encoded(job);
    ByteVector scan(stream.end() - (18 + 17 * 2 + 2), stream.end());
    for (std::size_t i = 0; i < 18; ++i) {
        EXPECT_EQ(scan[3 * i], 0b00101011) << "DC 0, end of the block, ones";
        if (i < 17) {
            EXPECT_EQ(scan[3 * i + 1], 0xFF);
            EXPECT_EQ(scan[3 * i + 2], 0xD0 + i % 8);
        }
    }
    EXPECT_EQ(scan[52], 0xFF);
    EXPECT_EQ(scan[53], 0xD9);
}

// By design.
TEST(JpegStream, QualityZeroIsTheSameAsFifty) {
    std::mt19937 random(1);
    JpegJob job;
    job.width = 30;
    job.height = 20;
    job.fill(random);
    job.quality = 50;
    const ByteVector fifty = encoded(job);
    job.quality = 0;
    EXPECT_EQ(encoded(job), fifty);
    job.quality = 49;
    EXPECT_NE(encoded(job), fifty);
}

TEST(JpegStream, StepsFollowTheQuality) {
    JpegJob job;
    job.fill(0);
    const auto steps = [&](unsigned quality, int table) {
        job.quality = quality;
        const ByteVector content = segment(encoded(job), 0xDB, table);
        return ByteVector(content.begin() + 1, content.end());
    };
    EXPECT_EQ(steps(100, 0), ByteVector(64, 1));
    EXPECT_EQ(steps(100, 1), ByteVector(64, 1));
    EXPECT_EQ(steps(1, 0), ByteVector(64, 255));
    EXPECT_EQ(steps(0, 0), kLuminanceSteps);
    EXPECT_EQ(steps(50, 0), kLuminanceSteps);
    ByteVector half;
    for (const std::uint8_t step : kLuminanceSteps)
        half.push_back(static_cast<std::uint8_t>((step * 50 + 50) / 100));
    EXPECT_EQ(steps(75, 0), half);
}

// What ends in 0xFF in the scan is followed by a zero, so that no marker comes about there.
TEST(JpegStream, NoMarkerComesAboutInTheScan) {
    std::mt19937 random(4);
    JpegJob job;
    job.width = job.height = 64;
    job.quality = 100;
    job.fill(random);
    const ByteVector stream = encoded(job);
    const ByteVector head = {0xFF, 0xDA, 0, 12};
    auto at = std::search(stream.begin(), stream.end(), head.begin(), head.end()) + 14;
    int stuffed = 0;
    for (; at != stream.end() - 2; ++at) {
        if (*at != 0xFF) continue;
        ASSERT_EQ(at[1], 0);
        ++stuffed;
    }
    EXPECT_GT(stuffed, 0);
}

TEST(JpegStream, PaddingRepeatsTheLastColumnAndRow) {
    std::mt19937 random(5);
    for (const JpegSampling sampling :
         {JpegSampling::Sampling444, JpegSampling::Sampling422, JpegSampling::Sampling411}) {
        JpegJob job;
        job.width = 17;
        job.height = 9;
        job.sampling = sampling;
        job.quality = 95;
        job.fill(random);
        JpegJob whole = job;  // with the padding as pixels
        whole.width = 32;
        whole.height = 16;
        whole.fill(0);
        for (std::uint32_t y = 0; y < 16; ++y) {
            for (std::uint32_t x = 0; x < 32; ++x) {
                std::copy_n(job.pixel(std::min(x, 16U), std::min(y, 8U)), 3,
                            &whole.pixels[y * whole.step() + 3 * x]);
            }
        }
        if (sampling == JpegSampling::Sampling444) {  // MCUs of 8 columns: 24 are enough
            whole.rowStep = whole.step();
            whole.width = 24;
        }
        const ByteVector stream = encoded(job), other = encoded(whole);
        const ByteVector head = {0xFF, 0xDA};
        const auto scan = [&](const ByteVector& bytes) {
            return ByteVector(std::search(bytes.begin(), bytes.end(), head.begin(), head.end()), bytes.end());
        };
        EXPECT_EQ(scan(stream), scan(other));
    }
}

TEST(JpegStream, RowsAreSteppedByTheirStepAndTheFourthByteDoesNotCount) {
    std::mt19937 random(6);
    JpegJob dense;
    dense.width = 19;
    dense.height = 11;
    dense.sampling = JpegSampling::Sampling422;
    dense.fill(random);
    const ByteVector wanted = encoded(dense);
    for (const unsigned channels : {3U, 4U}) {
        JpegJob padded = dense;
        padded.channels = channels;
        padded.rowStep = 19 * channels + 5;
        padded.fill(random);
        for (std::uint32_t y = 0; y < 11; ++y) {
            for (std::uint32_t x = 0; x < 19; ++x) {
                std::copy_n(dense.pixel(x, y), 3, &padded.pixels[y * padded.step() + x * channels]);
            }
        }
        EXPECT_EQ(encoded(padded), wanted) << channels;
    }
}

TEST(JpegStream, BgrAndRgbOfTheSameColoursAreTheSame) {
    std::mt19937 random(7);
    for (const JpegColor color : {JpegColor::YCbCr, JpegColor::Rgb}) {
        JpegJob bgr;
        bgr.width = 33;
        bgr.height = 10;
        bgr.color = color;
        bgr.fill(random);
        JpegJob rgb = bgr;
        rgb.source = JpegColor::Rgb;
        for (std::size_t i = 0; i < rgb.pixels.size(); i += 3) std::swap(rgb.pixels[i], rgb.pixels[i + 2]);
        EXPECT_EQ(encoded(rgb), encoded(bgr));
    }
}

}  // namespace
}  // namespace tavra::test
