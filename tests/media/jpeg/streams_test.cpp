// The destinations of the encoder, and its blocks of memory.
#include <gtest/gtest.h>

#include <memory>

#include "media/jpeg/memory_buffer.h"
#include "media/jpeg/memory_output.h"
#include "media/jpeg/std_file_output.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

TEST(StdFileOutput, WritesThroughTheFileAndLeavesItOpen) {
    const TempFolder folder;
    auto file = platform::OutputFile::open(wideName(folder / "a"), platform::OutputFile::Buffering::None);
    ASSERT_TRUE(file.isOpen());
    {
        CStdFileOutput2 output(file);
        EXPECT_EQ(output.Open(), JpegError::None);
        std::size_t written = 99;
        EXPECT_EQ(output.Write("abcd", 3, written), JpegError::None);
        EXPECT_EQ(written, 3u);
        EXPECT_EQ(output.Close(), JpegError::None);
        EXPECT_EQ(output.Write("x", 1, written), JpegError::FileIo) << "it has forgotten the file";
        EXPECT_EQ(written, 0u);
    }
    EXPECT_TRUE(file.write("e", 1));
    file.close();
    EXPECT_EQ(readFile(folder / "a"), (std::vector<std::uint8_t>{'a', 'b', 'c', 'e'}));
}

TEST(StdFileOutput, AFileThatTakesNothingIsToldAsFileIo) {
    const TempFolder folder;
    { auto made = platform::OutputFile::open(wideName(folder / "a"), platform::OutputFile::Buffering::None); }
    std::FILE* const file = std::fopen((folder / "a").string().c_str(), "rb");  // not for writing
    ASSERT_NE(file, nullptr);
    CStdFileOutput2 output(file);
    std::size_t written = 99;
    EXPECT_EQ(output.Write("abc", 3, written), JpegError::FileIo);
    EXPECT_EQ(written, 0u);
    std::fclose(file);
}

TEST(MemoryOutput, BeginsBehindTheRoomInFront) {
    std::uint8_t block[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    CMemoryOutput output(block, 3, 4);
    std::size_t written = 0;
    EXPECT_EQ(output.Write("ab", 2, written), JpegError::None);
    EXPECT_EQ(written, 2u);
    EXPECT_EQ(output.length(), 2u);
    EXPECT_EQ(std::vector<std::uint8_t>(block, block + 8),
              (std::vector<std::uint8_t>{1, 2, 3, 'a', 'b', 6, 7, 8}));
}

TEST(MemoryOutput, TakesWhatFitsAndFailsThen) {
    std::uint8_t block[6] = {};
    CMemoryOutput output(block, 1, 4);
    std::size_t written = 0;
    EXPECT_EQ(output.Write("abc", 3, written), JpegError::None);
    EXPECT_EQ(output.Write("def", 3, written), JpegError::FileIo);
    EXPECT_EQ(written, 1u);
    EXPECT_EQ(output.length(), 4u);
    EXPECT_EQ(block[5], 0) << "behind the end";
    EXPECT_EQ(output.Write("g", 1, written), JpegError::FileIo);
    EXPECT_EQ(output.Write("g", 0, written), JpegError::None);
}

TEST(MemoryOutput, ResetBeginsAgain) {
    std::uint8_t block[4] = {};
    CMemoryOutput output(block, 0, 4);
    std::size_t written = 0;
    EXPECT_EQ(output.Write("abcd", 4, written), JpegError::None);
    output.Reset();
    EXPECT_EQ(output.length(), 0u);
    EXPECT_EQ(output.Write("x", 1, written), JpegError::None);
    EXPECT_EQ(output.length(), 1u);
    EXPECT_EQ(std::vector<std::uint8_t>(block, block + 4), (std::vector<std::uint8_t>{'x', 'b', 'c', 'd'}));
}

TEST(MemoryOutput, WithoutMemoryItTakesNothing) {
    CMemoryOutput output;
    std::size_t written = 9;
    EXPECT_EQ(output.Write("a", 1, written), JpegError::FileIo);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(output.Open(), JpegError::None);
    EXPECT_EQ(output.Close(), JpegError::None);
}

TEST(BaseStream, IsDestroyedThroughItsBase) {
    std::unique_ptr<CBaseStream> stream = std::make_unique<CMemoryOutput>();
    EXPECT_EQ(stream->Open(), JpegError::None);
    EXPECT_EQ(stream->Close(), JpegError::None);
}

TEST(MemoryBuffer, IsAlignedAndReplaced) {
    CMemoryBuffer buffer;
    EXPECT_EQ(buffer.size(), 0u);
    for (const std::size_t size : {1u, 63u, 64u, 1000u, 0u}) {
        ASSERT_EQ(buffer.Allocate(size), JpegError::None);
        EXPECT_EQ(buffer.size(), size);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(buffer.data()) % 64, 0u);
        if (size != 0) buffer.data()[0] = buffer.data()[size - 1] = 1;
    }
    buffer.Free();
    EXPECT_EQ(buffer.data(), nullptr);
}

TEST(MemoryBuffer, WithoutMemoryNothingIsLeft) {
    CMemoryBuffer buffer;
    ASSERT_EQ(buffer.Allocate(100), JpegError::None);
    {
        const FailAllocationsFrom all(0);
        EXPECT_EQ(buffer.Allocate(10), JpegError::OutOfMemory);
    }
    EXPECT_EQ(buffer.size(), 0u);
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_EQ(buffer.Allocate(SIZE_MAX), JpegError::OutOfMemory)
        << "with the room for aligning it would wrap";
}

}  // namespace
}  // namespace tavra::test
