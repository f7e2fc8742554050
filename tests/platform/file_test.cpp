#include "platform/file.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::readFile;
using test::TempFolder;
using test::wideName;

TEST(OutputFile, WritesAndReplaces) {
    const TempFolder folder;
    for (const auto buffering : {OutputFile::Buffering::None, OutputFile::Buffering::Stream}) {
        {
            OutputFile file = OutputFile::open(wideName(folder / "a"), buffering);
            ASSERT_TRUE(file.isOpen());
            EXPECT_TRUE(file.write("one\r\n", 5));
            EXPECT_TRUE(file.write("", 0));
            EXPECT_TRUE(file.write("two\n", 4));
        }
        EXPECT_EQ(readFile(folder / "a"),
                  (std::vector<std::uint8_t>{'o', 'n', 'e', '\r', '\n', 't', 'w', 'o', '\n'}))
            << "bytes are not touched";
    }
    OutputFile::open(wideName(folder / "a"), OutputFile::Buffering::None).close();
    EXPECT_EQ(readFile(folder / "a").size(), 0u);
}

TEST(OutputFile, WithoutBufferAWriteIsThereAtOnce) {
    const TempFolder folder;
    OutputFile file = OutputFile::open(wideName(folder / "a"), OutputFile::Buffering::None);
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(file.write("abc", 3));
    EXPECT_EQ(readFile(folder / "a").size(), 3u);
}

TEST(OutputFile, FlushHandsOverWhatIsBuffered) {
    const TempFolder folder;
    OutputFile file = OutputFile::open(wideName(folder / "a"), OutputFile::Buffering::Stream);
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(file.write("abc", 3));
    EXPECT_TRUE(file.flush());
    EXPECT_EQ(readFile(folder / "a").size(), 3u);
}

TEST(OutputFile, APlaceThatDoesNotExistCannotBeOpened) {
    const TempFolder folder;
    EXPECT_FALSE(OutputFile::open(wideName(folder / "missing/a"), OutputFile::Buffering::None).isOpen());
    EXPECT_FALSE(OutputFile::open(wideName(folder.path()), OutputFile::Buffering::None).isOpen())
        << "a folder";
    EXPECT_FALSE(OutputFile::open(u"", OutputFile::Buffering::None).isOpen());
}

TEST(OutputFile, WithoutAFileFlushHasNothingToDo) {
    const TempFolder folder;
    OutputFile other = OutputFile::open(wideName(folder / "a"), OutputFile::Buffering::Stream);
    EXPECT_TRUE(other.write("abc", 3));
    EXPECT_TRUE(OutputFile().flush());
    EXPECT_EQ(readFile(folder / "a").size(), 0u) << "another file's bytes stay where they are";
}

TEST(OutputFile, MovesAndClosesOnce) {
    const TempFolder folder;
    OutputFile file = OutputFile::open(wideName(folder / "a"), OutputFile::Buffering::Stream);
    ASSERT_TRUE(file.isOpen());
    EXPECT_TRUE(file.write("abc", 3));
    OutputFile second(std::move(file));
    EXPECT_TRUE(second.isOpen());
    second = OutputFile::open(wideName(folder / "b"), OutputFile::Buffering::None);
    EXPECT_EQ(readFile(folder / "a").size(), 3u) << "what was assigned over is closed";
    second.close();
    EXPECT_FALSE(second.isOpen());
    second.close();
}

}  // namespace
}  // namespace tavra::platform
