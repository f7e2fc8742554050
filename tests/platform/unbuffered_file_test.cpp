#include "platform/unbuffered_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "platform/page_memory.h"
#include "platform/random_access_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::readFile;
using test::TempFolder;
using test::wideName;

struct UnbufferedFileTest : testing::Test {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie");
    PageBlock block;
    UnbufferedFile file;

    UnbufferedFileTest() { EXPECT_TRUE(block.allocate(65536).ok()); }

    // Fills the block with bytes of its own for each `seed`.
    Bytes fill(std::size_t size, std::uint8_t seed) {
        for (std::size_t i = 0; i < size; ++i) block.data()[i] = static_cast<std::uint8_t>(i * 7 + seed);
        return {block.data(), block.data() + size};
    }
};

TEST_F(UnbufferedFileTest, WritesOneAfterTheOther) {
    ASSERT_TRUE(file.create(name).ok());
    Bytes expected;
    for (const std::size_t size : {2048u, 4096u, 65536u, 6144u}) {
        const Bytes piece = fill(size, static_cast<std::uint8_t>(expected.size() / 2048));
        ASSERT_TRUE(file.startWrite(expected.size(), block.data(), size).ok());
        ASSERT_TRUE(file.wait().ok());
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_TRUE(file.close().ok());
    EXPECT_EQ(readFile(folder / "movie"), expected);
}

TEST_F(UnbufferedFileTest, AStartWaitsForTheWriteBeforeIt) {
    PageBlock other;
    ASSERT_TRUE(other.allocate(4096).ok());
    std::fill_n(other.data(), 4096, std::uint8_t{9});
    const Bytes first = fill(4096, 1);
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.startWrite(4096, block.data(), 4096).ok());
    ASSERT_TRUE(file.startWrite(0, other.data(), 4096).ok());
    fill(4096, 77);  // the first write has ended: its memory is free
    EXPECT_TRUE(file.close().ok()) << "waits for the second";
    Bytes expected(4096, 9);
    expected.insert(expected.end(), first.begin(), first.end());
    EXPECT_EQ(readFile(folder / "movie"), expected);
}

TEST_F(UnbufferedFileTest, PositionsAreWiderThan32Bits) {
    constexpr std::uint64_t kFar = 0x1'4000'0800;
    const Bytes piece = fill(2048, 3);
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.startWrite(kFar, block.data(), 2048).ok());
    ASSERT_TRUE(file.wait().ok());
    EXPECT_EQ(std::filesystem::file_size(folder / "movie"), kFar + 2048);
    RandomAccessFile reader;
    ASSERT_TRUE(reader.openForWriting(name).ok()) << "others may write the file";
    Bytes found(2048);
    std::size_t got = 0;
    ASSERT_TRUE(reader.read(kFar, found.data(), found.size(), got).ok());
    EXPECT_EQ(found, piece);
}

// A movie's headers are written through a second handle, while the first is open.
TEST_F(UnbufferedFileTest, OrdinaryWritesBesideItAreSeen) {
    const Bytes frames = fill(4096, 5);
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.startWrite(2048, block.data(), 4096).ok());
    ASSERT_TRUE(file.wait().ok());
    RandomAccessFile headers;
    ASSERT_TRUE(headers.openForWriting(name).ok());
    EXPECT_TRUE(headers.write(0, "RIFF", 4).ok());
    EXPECT_TRUE(headers.close().ok());
    EXPECT_TRUE(file.close().ok());
    Bytes expected(2048);
    std::copy_n("RIFF", 4, expected.begin());
    expected.insert(expected.end(), frames.begin(), frames.end());
    EXPECT_EQ(readFile(folder / "movie"), expected);
}

TEST_F(UnbufferedFileTest, CreateEmptiesWhatWasThere) {
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(file.create(name).ok());
        EXPECT_EQ(std::filesystem::file_size(folder / "movie"), 0u);
        ASSERT_TRUE(file.startWrite(0, block.data(), 2048).ok());
        ASSERT_TRUE(file.close().ok());
    }
    EXPECT_EQ(std::filesystem::file_size(folder / "movie"), 2048u);
}

TEST_F(UnbufferedFileTest, WithNothingInFlightThereIsNothingToWaitFor) {
    EXPECT_TRUE(file.wait().ok()) << "no file at all";
    EXPECT_TRUE(file.close().ok());
    ASSERT_TRUE(file.create(name).ok());
    EXPECT_TRUE(file.wait().ok());
    EXPECT_TRUE(file.close().ok());
    EXPECT_TRUE(file.wait().ok());
    EXPECT_TRUE(file.close().ok());
}

TEST_F(UnbufferedFileTest, ItsEndWaitsForTheWriteInFlight) {
    const Bytes piece = fill(65536, 8);
    {
        UnbufferedFile shortLived;
        ASSERT_TRUE(shortLived.create(name).ok());
        ASSERT_TRUE(shortLived.startWrite(0, block.data(), 65536).ok());
    }
    fill(65536, 99);
    EXPECT_EQ(readFile(folder / "movie"), piece);
}

TEST_F(UnbufferedFileTest, MovesWithItsWrite) {
    const Bytes piece = fill(2048, 4);
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.startWrite(0, block.data(), 2048).ok());
    UnbufferedFile second(std::move(file));
    EXPECT_TRUE(second.wait().ok());
    UnbufferedFile third;
    third = std::move(second);
    EXPECT_TRUE(third.close().ok());
    EXPECT_EQ(readFile(folder / "movie"), piece);
}

TEST_F(UnbufferedFileTest, APlaceThatTakesNoFileFails) {
    std::filesystem::create_directory(folder / "movie");
    EXPECT_EQ(file.create(name).code(), 5u) << "a folder";
    const std::uint32_t code = file.create(wideName(folder / "missing" / "movie")).code();
    EXPECT_TRUE(code == 2 || code == 3) << code;
    EXPECT_FALSE(file.create(u"").ok());
    EXPECT_TRUE(file.close().ok());
}

}  // namespace
}  // namespace tavra::platform
