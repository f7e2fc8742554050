// Reading SMF movies: whole ones, cut ones, and ones that lie.
#include "media/movie/read_smf.h"

#include <gtest/gtest.h>

#include "media/movie/smf_builder.h"
#include "platform/last_error.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using movie::CReadSMF;
using Bytes = std::vector<std::uint8_t>;

class ReadSmf : public testing::Test {
  protected:
    // 4 x 2, frames 0, 1 and 5.
    static SmfBuilder threeFrames() {
        SmfBuilder builder(4, 2, 8);
        builder.addFrame(0, 2, {1, 2, 3, 4, 5, 6, 7, 8});
        builder.addFrame(1, 3, {11, 12, 13, 14, 15, 16, 17, 18});
        builder.addFrame(5, 2, {21, 22, 23, 24, 25, 26, 27, 28});
        return builder;
    }
    std::uint32_t open(const Bytes& bytes) {
        reader = std::make_unique<CReadSMF>();  // what was open is closed
        SmfBuilder::write(folder / "a.smf", bytes);
        const Status opened = reader->open(wideName(folder / "a.smf"));
        EXPECT_EQ(reader->lastError(), opened.code());
        return opened.code();
    }

    const TempFolder folder;
    std::unique_ptr<CReadSMF> reader;
};

TEST_F(ReadSmf, FindsTheFramesOfAMovie) {
    ASSERT_EQ(open(threeFrames().bytes()), 0u);
    EXPECT_EQ(reader->frameCount(), 3u);
    EXPECT_EQ(reader->lastFrameNumber(), 5u);
    CReadSMF::FrameHeader frame;
    Bytes image(8);
    ASSERT_TRUE(reader->ReadFrame(1, frame, image.data()).ok());
    EXPECT_EQ(frame.number, 1u);
    EXPECT_EQ(frame.colorArray, 3u);
    EXPECT_EQ(image, (Bytes{11, 12, 13, 14, 15, 16, 17, 18}));
    ASSERT_TRUE(reader->ReadFrame(2, frame, nullptr).ok()) << "the header alone";
    EXPECT_EQ(frame.number, 5u);
}

TEST_F(ReadSmf, HasNoFrameBeyondTheLast) {
    ASSERT_EQ(open(threeFrames().bytes()), 0u);
    for (const std::uint64_t index : {std::uint64_t{3}, std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
        platform::setLastSystemError(0);
        CReadSMF::FrameHeader frame;
        EXPECT_EQ(reader->ReadFrame(index, frame, nullptr).code(), 87u);
        EXPECT_EQ(platform::lastSystemError(), 87u);
    }
}

// Whatever is cut off: as far as whole frames reach.
TEST_F(ReadSmf, OpensAFileThatIsCutAnywhere) {
    const Bytes whole = threeFrames().bytes();
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        const std::uint32_t code =
            open(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        if (size < 376) {
            EXPECT_EQ(code, 13u);
            continue;
        }
        ASSERT_EQ(code, 0u);
        const std::size_t frames = (size - 376) / 32;
        EXPECT_EQ(reader->frameCount(), frames);
        if (frames != 0) {
            EXPECT_EQ(reader->lastFrameNumber(), frames == 3 ? 5 : frames - 1);
        }
    }
}

TEST_F(ReadSmf, WithoutFramesReadsWhatStandsAheadOfTheFirst) {
    SmfBuilder small(4, 2, 8);
    small.put32(376 - 32, 0x12345678);  // where a frame of 24 + 8 bytes would begin: in the colour matrix
    ASSERT_EQ(open(small.bytes()), 0u);
    EXPECT_EQ(reader->frameCount(), 0u);
    EXPECT_EQ(reader->lastFrameNumber(), 0x12345678u);

    ASSERT_EQ(open(SmfBuilder(100, 100, 8).bytes()), 0u);
    EXPECT_EQ(reader->frameCount(), 0u);
    EXPECT_EQ(reader->lastFrameNumber(), 0u) << "ahead of the file there is nothing";
}

TEST_F(ReadSmf, TakesHeadersUpToItsOwnSize) {
    SmfBuilder longer = threeFrames();
    longer.put32(4, 377);
    EXPECT_EQ(open(longer.bytes()), 13u);
    longer.put32(4, 0xFFFFFFFF);
    EXPECT_EQ(open(longer.bytes()), 13u);

    SmfBuilder shorter = threeFrames();
    shorter.put8(99, 0xEE);  // of the gamma table
    shorter.put8(100, 0xEE);
    shorter.put32(4, 100);
    shorter.cutHeader(100);
    ASSERT_EQ(open(shorter.bytes()), 0u);
    EXPECT_EQ(reader->frameCount(), 3u);
    EXPECT_EQ(reader->lastFrameNumber(), 5u);
    EXPECT_EQ(reader->header().gamma().table[19], 0xEE);
    EXPECT_EQ(reader->header().gamma().table[20], 0) << "the rest is zero";
    Bytes image(8);
    CReadSMF::FrameHeader frame;
    ASSERT_TRUE(reader->ReadFrame(0, frame, image.data()).ok());
    EXPECT_EQ(image, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(ReadSmf, RefusesAHeaderTooShortToTellOfFrames) {
    for (std::uint32_t size = 0; size <= 36; ++size) {
        SmfBuilder builder = threeFrames();
        builder.put32(4, size);
        if (size > 32) builder.put32(32, 0);
        EXPECT_EQ(open(builder.bytes()), 13u) << size;
    }
}

TEST_F(ReadSmf, RefusesWhatIsNoMovie) {
    for (std::size_t byte = 0; byte < 4; ++byte) {
        SmfBuilder builder = threeFrames();
        builder.put8(byte, 'x');
        EXPECT_EQ(open(builder.bytes()), 13u) << byte;
    }
}

TEST_F(ReadSmf, RefusesFramesOfNoBytes) {
    SmfBuilder builder = threeFrames();
    builder.put32(32, 0);
    builder.put32(36, 0);
    EXPECT_EQ(open(builder.bytes()), 13u);
}

TEST_F(ReadSmf, DoesNotOverflowOnHugeSizes) {
    for (const auto& [headerSize, dataSize] : {std::pair{0xFFFFFFFFu, 1u},
                                               {1u, 0xFFFFFFFFu},
                                               {0x80000000u, 0x80000000u},
                                               {0xFFFFFFFFu, 0xFFFFFFFFu}}) {
        SmfBuilder builder = threeFrames();
        builder.put32(32, headerSize);
        builder.put32(36, dataSize);
        ASSERT_EQ(open(builder.bytes()), 0u);
        EXPECT_EQ(reader->frameCount(), 0u);
        EXPECT_EQ(reader->lastFrameNumber(), 0u);
    }
}

TEST_F(ReadSmf, ReadsFrameHeadersOfAnyLength) {
    for (const std::uint32_t headerSize : {0u, 1u, 4u, 6u, 100u}) {
        SCOPED_TRACE(headerSize);
        SmfBuilder builder(4, 2, 8);
        builder.put32(32, headerSize);
        Bytes bytes = builder.bytes();
        for (std::uint32_t i = 0; i < 2; ++i) {
            for (std::uint32_t byte = 0; byte < headerSize; ++byte) {
                bytes.push_back(byte == 0 ? static_cast<std::uint8_t>(40 + i) : byte == 4 ? 3 : 0);
            }
            bytes.insert(bytes.end(), 8, static_cast<std::uint8_t>(i));
        }
        ASSERT_EQ(open(bytes), 0u);
        EXPECT_EQ(reader->frameCount(), 2u);
        EXPECT_EQ(reader->lastFrameNumber(), headerSize == 0 ? 0u : 41u);
        CReadSMF::FrameHeader frame;
        Bytes image(8);
        ASSERT_TRUE(reader->ReadFrame(1, frame, image.data()).ok());
        EXPECT_EQ(frame.number, headerSize == 0 ? 0u : 41u);
        EXPECT_EQ(frame.colorArray, headerSize > 4 ? 3u : 0u);
        EXPECT_EQ(image, Bytes(8, 1));
    }
}

TEST_F(ReadSmf, ReadsBeyondFourGibibytes) {
    SmfBuilder builder(4, 2, 8);
    builder.put32(36, 0x90000000);  // 2.25 GiB a frame, of which the disk keeps nothing
    SmfBuilder::write(folder / "a.smf", builder.bytes());
    const std::uint64_t frame = 0x90000000ull + 24, third = 376 + 2 * frame;
    std::error_code failed;
    std::filesystem::resize_file(folder / "a.smf", 376 + 3 * frame, failed);
    if (failed) GTEST_SKIP() << "no room for a sparse file";
    {
        std::fstream file(folder / "a.smf", std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(third));
        file.write("\x07\x01\0\0\x04", 5);
    }
    CReadSMF movie;
    ASSERT_TRUE(movie.open(wideName(folder / "a.smf")).ok());
    EXPECT_EQ(movie.frameCount(), 3u);
    EXPECT_EQ(movie.lastFrameNumber(), 0x107u);
    CReadSMF::FrameHeader header;
    ASSERT_TRUE(movie.ReadFrame(2, header, nullptr).ok());
    EXPECT_EQ(header.number, 0x107u);
    EXPECT_EQ(header.colorArray, 4u);
}

TEST_F(ReadSmf, TellsThatTheFileHasBecomeShorter) {
    ASSERT_EQ(open(threeFrames().bytes()), 0u);
    std::error_code failed;
    std::filesystem::resize_file(folder / "a.smf", 376 + 2 * 32 + 25, failed);
    if (failed) GTEST_SKIP() << "the system does not let anyone cut an open file";
    CReadSMF::FrameHeader frame;
    Bytes image(8);
    EXPECT_TRUE(reader->ReadFrame(1, frame, image.data()).ok());
    EXPECT_TRUE(reader->ReadFrame(2, frame, nullptr).ok());
    EXPECT_EQ(reader->ReadFrame(2, frame, image.data()).code(), 38u);
    EXPECT_EQ(platform::lastSystemError(), 38u);
}

TEST_F(ReadSmf, GivesTheSystemsErrorForAFileThatIsNotThere) {
    CReadSMF movie;
    EXPECT_EQ(movie.open(wideName(folder / "none.smf")).code(), 2u);
    EXPECT_EQ(movie.lastError(), 2u);
    EXPECT_NE(movie.open(wideName(folder / "no folder/none.smf")).code(), 0u);
}

}  // namespace
}  // namespace tavra::test
