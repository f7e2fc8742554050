#include "media/jpeg/bit_stream_output.h"

#include <gtest/gtest.h>

#include "media/jpeg/jpeg_support.h"

namespace tavra::test {
namespace {

struct BitStreamOutput : ::testing::Test {
    LimitedStream stream;
    CBitStreamOutput output;

    void init(std::size_t size) {
        output.Attach(&stream);
        ASSERT_EQ(output.Init(size), JpegError::None);
    }
};

TEST_F(BitStreamOutput, NumbersAreBigEndian) {
    init(16);
    EXPECT_EQ(output.Write8(0x112), JpegError::None);
    EXPECT_EQ(output.Write16(0x2345), JpegError::None);
    EXPECT_EQ(output.Write32(0x6789ABCD), JpegError::None);
    EXPECT_TRUE(stream.bytes.empty()) << "still in the buffer";
    EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
    EXPECT_EQ(stream.bytes, (ByteVector{0x12, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD}));
    EXPECT_EQ(output.total(), 7u);
    EXPECT_EQ(output.position(), 0u);
}

TEST_F(BitStreamOutput, AFullBufferIsWrittenOutByTheNextByte) {
    init(3);
    for (unsigned i = 0; i < 3; ++i) EXPECT_EQ(output.Write8(i), JpegError::None);
    EXPECT_TRUE(stream.writes.empty());
    EXPECT_EQ(output.Write8(3), JpegError::None);
    EXPECT_EQ(stream.writes, std::vector<std::size_t>{3});
    EXPECT_EQ(output.position(), 1u);
    const ByteVector many = {4, 5, 6, 7, 8, 9, 10};
    EXPECT_EQ(output.WriteBytes(many), JpegError::None);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
    EXPECT_EQ(stream.bytes, (ByteVector{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(output.total(), 11u);
}

TEST_F(BitStreamOutput, FlushWritesOnlyIfAtMostSoMuchRoomIsLeft) {
    init(10);
    EXPECT_EQ(output.Write32(1), JpegError::None);  // 6 bytes are left
    EXPECT_EQ(output.FlushBuffer(5), JpegError::None);
    EXPECT_TRUE(stream.writes.empty());
    EXPECT_EQ(output.FlushBuffer(6), JpegError::None);
    EXPECT_EQ(stream.writes, std::vector<std::size_t>{4});
    EXPECT_EQ(output.room().size(), 10u);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
    EXPECT_EQ(stream.writes.size(), 1u) << "there is nothing left to write";
}

TEST_F(BitStreamOutput, RoomIsFilledByOthers) {
    init(4);
    output.room()[0] = 7;
    output.room()[1] = 8;
    EXPECT_EQ(output.Advance(2), JpegError::None);
    EXPECT_EQ(output.room().size(), 2u);
    EXPECT_EQ(output.Advance(3), JpegError::BufferTooSmall);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
    EXPECT_EQ(stream.bytes, (ByteVector{7, 8}));
}

TEST_F(BitStreamOutput, WithoutABufferItIsTooSmall) {
    output.Attach(&stream);
    EXPECT_EQ(output.Write8(1), JpegError::BufferTooSmall);
    EXPECT_EQ(output.Write16(1), JpegError::BufferTooSmall);
    EXPECT_EQ(output.Write32(1), JpegError::BufferTooSmall);
    EXPECT_EQ(output.Advance(1), JpegError::BufferTooSmall);
}

TEST_F(BitStreamOutput, AShortWriteIsFileIo) {
    LimitedStream shortStream(2);
    output.Attach(&shortStream);
    ASSERT_EQ(output.Init(4), JpegError::None);
    EXPECT_EQ(output.Write32(0x01020304), JpegError::None);
    EXPECT_EQ(output.Write8(5), JpegError::FileIo);
    EXPECT_EQ(shortStream.bytes, (ByteVector{1, 2}));
    EXPECT_EQ(output.total(), 2u);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::FileIo);
}

TEST_F(BitStreamOutput, AStreamThatSaysNoneAndTakesLessIsFileIoToo) {
    struct Liar final : CBaseStreamOutput {
        JpegError Open() override { return JpegError::None; }
        JpegError Close() override { return JpegError::None; }
        JpegError Write(const void*, std::size_t size, std::size_t& written) override {
            written = size - 1;
            return JpegError::None;
        }
    } liar;
    output.Attach(&liar);
    ASSERT_EQ(output.Init(4), JpegError::None);
    EXPECT_EQ(output.Write16(1), JpegError::None);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::FileIo);
}

TEST_F(BitStreamOutput, DetachedItHasNowhereToWrite) {
    init(4);
    output.Detach();
    EXPECT_EQ(output.Write16(1), JpegError::None);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::FileIo);
    EXPECT_TRUE(stream.bytes.empty());
}

TEST_F(BitStreamOutput, InitBeginsAgain) {
    init(4);
    EXPECT_EQ(output.Write16(1), JpegError::None);
    EXPECT_EQ(output.FlushBuffer(0), JpegError::None);
    EXPECT_EQ(output.Write16(2), JpegError::None);
    ASSERT_EQ(output.Init(), JpegError::None);
    EXPECT_EQ(output.position(), 0u);
    EXPECT_EQ(output.total(), 0u);
    EXPECT_EQ(output.room().size(), 4096u);
}

}  // namespace
}  // namespace tavra::test
