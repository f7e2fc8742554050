#include "platform/random_access_file.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "platform/unbuffered_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::readFile;
using test::TempFolder;
using test::wideName;

constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kFolderNotFound = 3;
constexpr std::uint32_t kSharingViolation = 32;

struct RandomAccessFileTest : testing::Test {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie");
    RandomAccessFile file;

    static Bytes read(RandomAccessFile& from, std::uint64_t position, std::size_t size) {
        Bytes bytes(size, 0xEE);
        std::size_t got = 0;
        EXPECT_TRUE(from.read(position, bytes.data(), size, got).ok());
        bytes.resize(got);
        return bytes;
    }
    std::uint64_t size() const {
        std::uint64_t bytes = 77;
        EXPECT_TRUE(file.size(bytes).ok());
        return bytes;
    }
};

TEST_F(RandomAccessFileTest, WritesAndReadsAtAnyPosition) {
    ASSERT_TRUE(file.create(name).ok());
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(size(), 0u);
    EXPECT_TRUE(file.write(10, "world", 5).ok());
    EXPECT_TRUE(file.write(2, "hello", 5).ok());
    EXPECT_TRUE(file.write(3, "E", 1).ok());
    EXPECT_TRUE(file.write(100, nullptr, 0).ok());
    EXPECT_EQ(size(), 15u);
    const Bytes whole = {0, 0, 'h', 'E', 'l', 'l', 'o', 0, 0, 0, 'w', 'o', 'r', 'l', 'd'};
    EXPECT_EQ(read(file, 0, 15), whole);
    EXPECT_EQ(read(file, 3, 4), (Bytes{'E', 'l', 'l', 'o'}));
    EXPECT_TRUE(file.close().ok());
    EXPECT_EQ(readFile(folder / "movie"), whole);
}

TEST_F(RandomAccessFileTest, AReadIsShortAtTheEndAlone) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "abc", 3).ok());
    EXPECT_EQ(read(file, 1, 100), (Bytes{'b', 'c'}));
    EXPECT_EQ(read(file, 3, 1), Bytes());
    EXPECT_EQ(read(file, 1'000'000, 8), Bytes());
    EXPECT_EQ(read(file, 0, 0), Bytes());
}

TEST_F(RandomAccessFileTest, PositionsAreWiderThan32Bits) {
    constexpr std::uint64_t kFar = 0x1'4000'0003;
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(kFar, "far", 3).ok());
    EXPECT_EQ(size(), kFar + 3);
    EXPECT_EQ(read(file, kFar, 10), (Bytes{'f', 'a', 'r'}));
    EXPECT_EQ(read(file, 0x4000'0003, 3), Bytes(3, 0)) << "the same position without its upper half";
}

TEST_F(RandomAccessFileTest, ALargeTransferIsWhole) {
    Bytes large(5'000'001);
    std::iota(large.begin(), large.end(), std::uint8_t{1});
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(1, large.data(), large.size()).ok());
    EXPECT_EQ(size(), large.size() + 1);
    EXPECT_EQ(read(file, 1, large.size() + 10), large);
}

TEST_F(RandomAccessFileTest, CreateEmptiesWhatWasThere) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "long content", 12).ok());
    ASSERT_TRUE(file.create(name).ok()) << "the object closes what it had open";
    EXPECT_EQ(size(), 0u);
    EXPECT_TRUE(file.write(0, "x", 1).ok());
    ASSERT_TRUE(file.close().ok());
    EXPECT_EQ(readFile(folder / "movie"), Bytes{'x'});
}

TEST_F(RandomAccessFileTest, OpeningForWritingKeepsTheContent) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "header and frames", 17).ok());
    ASSERT_TRUE(file.close().ok());
    ASSERT_TRUE(file.openForWriting(name).ok());
    EXPECT_TRUE(file.write(0, "HEADER", 6).ok());
    EXPECT_EQ(read(file, 0, 9), (Bytes{'H', 'E', 'A', 'D', 'E', 'R', ' ', 'a', 'n'}));
    EXPECT_EQ(size(), 17u);
}

TEST_F(RandomAccessFileTest, OpenedForReadingItTakesNoWrites) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "abc", 3).ok());
    ASSERT_TRUE(file.openForReading(name).ok());
    EXPECT_EQ(read(file, 0, 3), (Bytes{'a', 'b', 'c'}));
    EXPECT_FALSE(file.write(0, "x", 1).ok());
    EXPECT_EQ(read(file, 0, 1), Bytes{'a'});
}

TEST_F(RandomAccessFileTest, WhatDoesNotExistIsNotOpened) {
    EXPECT_EQ(file.openForReading(name).code(), kFileNotFound);
    EXPECT_EQ(file.openForWriting(name).code(), kFileNotFound);
    EXPECT_FALSE(file.isOpen());
    EXPECT_TRUE(folder.isEmpty());
    const std::uint32_t code = file.create(wideName(folder / "missing" / "movie")).code();
    EXPECT_TRUE(code == kFileNotFound || code == kFolderNotFound) << code;
    EXPECT_FALSE(file.create(u"").ok());
    EXPECT_FALSE(file.isOpen());
}

TEST_F(RandomAccessFileTest, AFailedOpeningLeavesTheObjectClosed) {
    ASSERT_TRUE(file.create(name).ok());
    EXPECT_FALSE(file.openForReading(wideName(folder / "other")).ok());
    EXPECT_FALSE(file.isOpen());
}

TEST_F(RandomAccessFileTest, AFolderIsNoFile) {
    std::filesystem::create_directory(folder / "movie");
    EXPECT_EQ(file.create(name).code(), 5u);
    EXPECT_EQ(file.openForReading(name).code(), 5u);
    EXPECT_EQ(file.openForWriting(name).code(), 5u);
    EXPECT_FALSE(file.isOpen());
}

TEST_F(RandomAccessFileTest, AClosedFileFailsWithItsCodeAndClosesAgain) {
    std::uint64_t bytes = 5;
    std::size_t got = 5;
    char byte = 'x';
    EXPECT_EQ(file.write(0, &byte, 1).code(), 6u);
    EXPECT_EQ(file.read(0, &byte, 1, got).code(), 6u);
    EXPECT_EQ(got, 0u);
    EXPECT_EQ(file.size(bytes).code(), 6u);
    EXPECT_TRUE(file.close().ok());
}

TEST_F(RandomAccessFileTest, AFileThatIsWrittenIsItsWritersAlone) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "frames", 6).ok());
    RandomAccessFile second;
    UnbufferedFile unbuffered;
    EXPECT_EQ(second.create(name).code(), kSharingViolation);
    EXPECT_FALSE(second.isOpen());
    EXPECT_EQ(unbuffered.create(name).code(), kSharingViolation);
    EXPECT_EQ(read(file, 0, 10), (Bytes{'f', 'r', 'a', 'm', 'e', 's'})) << "nobody emptied it";
    ASSERT_TRUE(file.close().ok());
    EXPECT_TRUE(second.create(name).ok()) << "an old file is anybody's";
}

TEST_F(RandomAccessFileTest, AFileThatIsReadIsNotMadeAnew) {
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0, "frames", 6).ok());
    ASSERT_TRUE(file.openForReading(name).ok());
    RandomAccessFile second, writer;
    UnbufferedFile unbuffered;
    EXPECT_TRUE(second.openForReading(name).ok()) << "several may read it";
    EXPECT_EQ(writer.create(name).code(), kSharingViolation);
    ASSERT_TRUE(file.close().ok());
    EXPECT_EQ(writer.create(name).code(), kSharingViolation);
    EXPECT_EQ(unbuffered.create(name).code(), kSharingViolation);
    EXPECT_EQ(read(second, 0, 10), (Bytes{'f', 'r', 'a', 'm', 'e', 's'}));
    ASSERT_TRUE(second.close().ok());
    EXPECT_TRUE(writer.create(name).ok());
}

TEST_F(RandomAccessFileTest, MovesWithItsFile) {
    ASSERT_TRUE(file.create(name).ok());
    RandomAccessFile second(std::move(file));
    EXPECT_TRUE(second.isOpen());
    EXPECT_TRUE(second.write(0, "a", 1).ok());
    RandomAccessFile third;
    ASSERT_TRUE(third.create(wideName(folder / "other")).ok());
    third = std::move(second);
    EXPECT_TRUE(third.write(1, "b", 1).ok());
    ASSERT_TRUE(third.close().ok());
    EXPECT_EQ(readFile(folder / "movie"), (Bytes{'a', 'b'}));
    EXPECT_EQ(readFile(folder / "other"), Bytes());
}

}  // namespace
}  // namespace tavra::platform
