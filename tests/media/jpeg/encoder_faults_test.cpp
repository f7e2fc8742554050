// Streams that fail at every byte, and memory that is not there.
#include <gtest/gtest.h>

#include "media/jpeg/huffman_state.h"
#include "media/jpeg/jpeg_support.h"
#include "media/jpeg/memory_output.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

JpegJob job(JpegSampling sampling, std::uint32_t size, unsigned quality) {
    std::mt19937 random(1);
    JpegJob result;
    result.width = size;
    result.height = size;
    result.sampling = sampling;
    result.quality = quality;
    result.restartInterval = 3;
    result.fill(random);
    return result;
}

TEST(JpegFaults, AStreamThatFailsAtAnyByteIsFileIo) {
    const JpegJob image = job(JpegSampling::Sampling422, 17, 50);
    const ByteVector whole = encoded(image);
    CJPEGEncoder encoder;
    for (std::size_t limit = 0; limit < whole.size(); ++limit) {
        LimitedStream stream(limit);
        EXPECT_EQ(encode(encoder, image, stream), JpegError::FileIo) << limit;
        EXPECT_EQ(stream.bytes,
                  ByteVector(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(limit)));
    }
    LimitedStream stream(whole.size());
    EXPECT_EQ(encode(encoder, image, stream), JpegError::None) << "the encoder is as good as before";
    EXPECT_EQ(stream.bytes, whole);
}

// Streams of several buffers, where blocks fail too.
TEST(JpegFaults, AStreamThatFailsInTheMiddleOfTheScanIsFileIo) {
    const JpegJob image = job(JpegSampling::Sampling411, 120, 100);
    const ByteVector whole = encoded(image);
    ASSERT_GT(whole.size(), 5u * 4096);
    CJPEGEncoder encoder;
    for (std::size_t limit = 600; limit < whole.size(); limit += 487) {
        LimitedStream stream(limit);
        EXPECT_EQ(encode(encoder, image, stream), JpegError::FileIo) << limit;
        EXPECT_EQ(stream.bytes,
                  ByteVector(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(limit)));
    }
}

// As the callers do who do not look at results.
TEST(JpegFaults, CallsMayGoOnAfterAFailure) {
    const JpegJob image = job(JpegSampling::Sampling444, 40, 90);
    for (const std::size_t capacity : {0u, 1u, 600u, 700u, 3600u}) {
        ByteVector memory(capacity);
        CMemoryOutput output(memory.data(), 0, memory.size());
        CJPEGEncoder encoder;
        ASSERT_EQ(encoder.SetSource(image.pixels.data(), image.step(), 40, 40, 3, JpegColor::Bgr,
                                    JpegSampling::Sampling444),
                  JpegError::None);
        ASSERT_EQ(encoder.SetDestination(&output), JpegError::None);
        ASSERT_EQ(
            encoder.SetParams(JpegMode::Baseline, JpegColor::YCbCr, JpegSampling::Sampling444, 0, false, 90),
            JpegError::None);
        static_cast<void>(encoder.WriteHeader());
        EXPECT_EQ(encoder.WriteData(), JpegError::FileIo);
        EXPECT_EQ(output.length(), capacity);
    }
}

TEST(JpegFaults, WithoutMemoryEveryCallSaysSo) {
    const JpegJob image = job(JpegSampling::Sampling422, 100, 90);
    LimitedStream stream;
    CJPEGEncoder encoder;
    ASSERT_EQ(encoder.SetSource(image.pixels.data(), image.step(), 100, 100, 3, JpegColor::Bgr,
                                JpegSampling::Sampling444),
              JpegError::None);
    ASSERT_EQ(encoder.SetDestination(&stream), JpegError::None);
    const auto params = [&] {
        return encoder.SetParams(JpegMode::Baseline, JpegColor::YCbCr, JpegSampling::Sampling422, 0, false,
                                 90);
    };
    {
        const FailAllocationsFrom all(0);
        EXPECT_EQ(params(), JpegError::OutOfMemory);
        EXPECT_EQ(encoder.WriteHeader(), JpegError::WrongParameters);
    }
    ASSERT_EQ(params(), JpegError::None);
    // The planes have 448 and 896 bytes, the stream's buffer 4096, the coefficients 3584; what is smaller is
    // the bit accumulator.
    for (const std::size_t smallest : {0u, 500u, 900u, 2000u, 4000u}) {
        const FailAllocationsFrom some(smallest);
        EXPECT_EQ(encoder.WriteHeader(), JpegError::OutOfMemory) << smallest;
        EXPECT_GT(FailAllocationsFrom::failures(), 0u);
        EXPECT_EQ(encoder.WriteData(), JpegError::WrongParameters) << "there is nothing to work in";
    }
    EXPECT_TRUE(stream.bytes.empty());
    EXPECT_EQ(encoder.WriteHeader(), JpegError::None);
    EXPECT_EQ(encoder.WriteData(), JpegError::None);
}

struct EntropyCoder : ::testing::Test {
    CJPEGEncoderHuffmanTable dc, ac;
    CJPEGEncoderHuffmanState state;
    LimitedStream stream;
    CBitStreamOutput output;
    std::int16_t last = 0;

    void SetUp() override {
        using Table = CJPEGEncoderHuffmanTable;
        ASSERT_EQ(dc.Load(0, Table::Class::Dc, Table::kDcLuminance), JpegError::None);
        ASSERT_EQ(ac.Load(0, Table::Class::Ac, Table::kAcLuminance), JpegError::None);
        output.Attach(&stream);
        ASSERT_EQ(output.Init(), JpegError::None);
    }
    ByteVector codes(const jpeg::Block& block) {
        EXPECT_EQ(state.Allocate(), JpegError::None);
        last = 0;
        stream.bytes.clear();
        EXPECT_EQ(state.Encode(block, last, dc, ac, output), JpegError::None);
        EXPECT_EQ(state.Flush(output), JpegError::None);
        EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
        return stream.bytes;
    }
};

TEST_F(EntropyCoder, WithoutItsPartsItIsAnInternalError) {
    const jpeg::Block block = {};
    EXPECT_EQ(state.Encode(block, last, dc, ac, output), JpegError::Internal) << "no accumulator";
    EXPECT_EQ(state.Flush(output), JpegError::Internal);
    ASSERT_EQ(state.Allocate(), JpegError::None);
    const CJPEGEncoderHuffmanTable empty;
    EXPECT_EQ(state.Encode(block, last, empty, ac, output), JpegError::Internal);
    EXPECT_EQ(state.Encode(block, last, dc, empty, output), JpegError::Internal);
    EXPECT_EQ(output.position(), 0u);
}

TEST_F(EntropyCoder, CoefficientsThatHaveNoCodeAreAnInternalError) {
    for (const int value : {1024, -1024, 4095, 32767, -32767}) {
        ASSERT_EQ(state.Allocate(), JpegError::None);
        jpeg::Block block = {};
        block[9] = static_cast<std::int16_t>(value);
        EXPECT_EQ(state.Encode(block, last, dc, ac, output), JpegError::Internal) << value;
        EXPECT_EQ(output.position(), 0u);
    }
    for (const int value : {2048, -2048, 32767}) {
        ASSERT_EQ(state.Allocate(), JpegError::None);
        jpeg::Block block = {};
        block[0] = static_cast<std::int16_t>(value);
        last = 0;
        EXPECT_EQ(state.Encode(block, last, dc, ac, output), JpegError::Internal) << value;
    }
}

TEST_F(EntropyCoder, NegativeValuesAreOneLess) {
    jpeg::Block block = {};
    block[0] = -5;  // 100 and three bits: 010
    block[8] = -1;  // run 0, one bit: 00 and 0; frequency 1 across
    // then 1010
    EXPECT_EQ(codes(block), (ByteVector{0b10001000, 0b01010111}));
}

TEST_F(EntropyCoder, LongRunsOfZerosHaveACodeOfTheirOwn) {
    jpeg::Block block = {};
    block[63] = 1;  // the last: 62 zeros are three times sixteen, and fourteen
    // 00; 3 * 11111111001; run 14, one bit: 1111111111101011 and 1; no end of block
    EXPECT_EQ(codes(block), (ByteVector{0b00111111, 0b11001111, 0b11111001, 0b11111111, 0, 0b00111111,
                                        0b11111101, 0b01111111}));
}

// The longest block there is, several times, so that the end of the buffer comes in the middle of one.
TEST_F(EntropyCoder, BlocksLongerThanTheRoomGoThrough) {
    jpeg::Block block;
    for (std::size_t i = 0; i < 64; ++i) block[i] = i % 2 == 0 ? std::int16_t{1023} : std::int16_t{-1023};
    ASSERT_EQ(state.Allocate(), JpegError::None);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(output.FlushBuffer(128), JpegError::None);
        ASSERT_EQ(state.Encode(block, last, dc, ac, output), JpegError::None);
    }
    ASSERT_EQ(state.Flush(output), JpegError::None);
    ASSERT_EQ(output.FlushBuffer(0), JpegError::None);
    std::size_t zeros = 0;
    for (std::size_t i = 1; i < stream.bytes.size(); ++i) {
        if (stream.bytes[i - 1] == 0xFF) {
            ASSERT_EQ(stream.bytes[i], 0);
            ++zeros;
        }
    }
    // The first DC has 8 + 10 bits, the others, 0, have 2; an AC coefficient of ten bits has 16 + 10.
    EXPECT_EQ(stream.bytes.size() - zeros, (18 + 99 * 2 + 100 * 63 * 26 + 7) / 8);
}

}  // namespace
}  // namespace tavra::test
