#include "support/movie_files_double.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/page_memory.h"

namespace tavra::test {
namespace {

using Bytes = MovieFilesDouble::Bytes;

struct MovieFilesDoubleTest : testing::Test {
    MovieFilesDoubleTest() { EXPECT_TRUE(page.allocate(4096).ok()); }

    std::unique_ptr<movie::MovieFile> create(const std::u16string& name) {
        std::unique_ptr<movie::MovieFile> file;
        EXPECT_TRUE(files.create(name, file).ok());
        return file;
    }
    std::unique_ptr<movie::UnbufferedMovieFile> createUnbuffered(const std::u16string& name) {
        std::unique_ptr<movie::UnbufferedMovieFile> file;
        EXPECT_TRUE(files.createUnbuffered(name, file).ok());
        return file;
    }

    MovieFilesDouble files;
    platform::PageBlock page;
};

TEST_F(MovieFilesDoubleTest, BytesStandWhereTheyWereWritten) {
    const auto file = create(u"a");
    const Bytes piece = {1, 2, 3, 0, 5};
    ASSERT_TRUE(file->write(3, piece.data(), piece.size()).ok());
    ASSERT_TRUE(file->write(65534, piece.data(), piece.size()).ok());
    EXPECT_EQ(files.size(u"a"), 65539u);
    EXPECT_EQ(files.bytes(u"a", 0, 10), (Bytes{0, 0, 0, 1, 2, 3, 0, 5, 0, 0}));
    EXPECT_EQ(files.bytes(u"a", 65533, 8), (Bytes{0, 1, 2, 3, 0, 5, 0, 0}));
    ASSERT_TRUE(file->write(0x500000000, piece.data(), 1).ok());
    EXPECT_EQ(files.size(u"a"), 0x500000001u);
    EXPECT_EQ(files.bytes(u"a", 0x4FFFFFFFF, 2), (Bytes{0, 1}));
}

TEST_F(MovieFilesDoubleTest, AnUnbufferedWriteIsDoneWhenItIsWaitedFor) {
    const auto file = createUnbuffered(u"a");
    page.data()[0] = 1;
    ASSERT_TRUE(file->startWrite(2048, page.data(), 2048).ok());
    page.data()[0] = 2;
    EXPECT_EQ(files.size(u"a"), 0u);
    EXPECT_TRUE(file->wait().ok());
    EXPECT_EQ(files.bytes(u"a", 2048, 1), Bytes{2}) << "the buffer as it is at the end of the write";
    EXPECT_EQ(files.writes(), (std::vector<MovieFilesDouble::Write>{{u"a", 2048, 2048, true}}));
}

TEST_F(MovieFilesDoubleTest, TheNthWriteFails) {
    files.failWrite(2, 29);
    files.failWrite(3, 5);
    files.failWrite(4, 6, true);
    const auto plain = create(u"a");
    EXPECT_TRUE(plain->write(0, "x", 1).ok());
    EXPECT_EQ(plain->write(1, "x", 1).code(), 29u);
    EXPECT_EQ(files.size(u"a"), 1u);
    const auto unbuffered = createUnbuffered(u"b");
    EXPECT_TRUE(unbuffered->startWrite(0, page.data(), 2048).ok());
    EXPECT_EQ(unbuffered->wait().code(), 5u);
    EXPECT_EQ(unbuffered->startWrite(0, page.data(), 2048).code(), 6u);
    EXPECT_TRUE(unbuffered->startWrite(0, page.data(), 2048).ok());
    EXPECT_TRUE(unbuffered->close().ok());
    EXPECT_EQ(files.size(u"b"), 2048u);
}

TEST_F(MovieFilesDoubleTest, AFullDiskTakesWhatFits) {
    files.setRoom(10);
    files.put(u"old", Bytes(3));
    const auto file = create(u"a");
    EXPECT_TRUE(file->write(0, "12345", 5).ok());
    EXPECT_EQ(file->write(5, "678", 3).code(), 112u);
    EXPECT_EQ(files.bytes(u"a"), (Bytes{'1', '2', '3', '4', '5', '6', '7'}));
    EXPECT_TRUE(file->write(1, "x", 1).ok()) << "what is there can be written over";
    EXPECT_EQ(file->write(100, "x", 1).code(), 112u);
    EXPECT_EQ(files.size(u"a"), 7u);
}

TEST_F(MovieFilesDoubleTest, AStalledWriteWaitsForItsRelease) {
    files.stallWrites();
    const auto file = create(u"a");
    std::thread writer([&] { EXPECT_TRUE(file->write(0, "x", 1).ok()); });
    EXPECT_TRUE(files.stalled().wait(platform::kWaitForever));
    EXPECT_EQ(files.size(u"a"), 0u);
    files.releaseWrites();
    writer.join();
    EXPECT_EQ(files.size(u"a"), 1u);
}

TEST_F(MovieFilesDoubleTest, OpeningAndClosingFailOnOrder) {
    files.failCreate(2, 5);
    files.failClose(29);
    const auto first = create(u"a");
    std::unique_ptr<movie::MovieFile> other;
    EXPECT_EQ(files.create(u"b", other).code(), 5u);
    EXPECT_EQ(files.createCount(), 2u);
    EXPECT_FALSE(files.exists(u"b"));
    EXPECT_EQ(files.openAgain(u"a", other).code(), 32u) << "the first has it for itself";
    EXPECT_EQ(files.openFiles(), 1u);
    EXPECT_EQ(first->close().code(), 29u);
    EXPECT_EQ(files.openFiles(), 0u);
    EXPECT_EQ(files.openAgain(u"b", other).code(), 2u);
    EXPECT_TRUE(files.openAgain(u"a", other).ok());
    files.failOpenAgain(3);
    EXPECT_EQ(files.openAgain(u"a", other).code(), 3u);
}

TEST_F(MovieFilesDoubleTest, TheVolumeAnswersAsToldAndKnowsItsFiles) {
    std::uint64_t bytes = 7;
    EXPECT_EQ(files.fileSize(u"a", bytes).code(), 2u);
    EXPECT_EQ(bytes, 7u);
    files.put(u"a", Bytes(5, 1));
    EXPECT_TRUE(files.fileSize(u"a", bytes).ok());
    EXPECT_EQ(bytes, 5u);
    const auto replaced = create(u"a");
    EXPECT_TRUE(files.fileSize(u"a", bytes).ok());
    EXPECT_EQ(bytes, 0u);
    files.existing = {.value = 9};
    EXPECT_TRUE(files.fileSize(u"b", bytes).ok());
    EXPECT_EQ(bytes, 9u);
    files.free = {.value = 0, .error = 3};
    EXPECT_EQ(files.freeBytes(u"a", bytes).code(), 3u);
    files.kind = {.value = platform::VolumeKind::Fat32};
    platform::VolumeKind kind{};
    EXPECT_TRUE(files.volumeKind(u"a", kind).ok());
    EXPECT_EQ(kind, platform::VolumeKind::Fat32);
}

}  // namespace
}  // namespace tavra::test
