// Who may open a movie's file beside its writer.
#include <gtest/gtest.h>

#include "platform/random_access_file.h"
#include "platform/unbuffered_file.h"
#include "platform/volume.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::TempFolder;
using test::wideName;

constexpr std::uint32_t kSharingViolation = 32;

TEST(WindowsMovieFile, ACreatedFileIsNotReadMeanwhile) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie");
    RandomAccessFile first, second;
    ASSERT_TRUE(first.create(name).ok());
    EXPECT_EQ(second.openForReading(name).code(), kSharingViolation);
    ASSERT_TRUE(first.close().ok());
    EXPECT_TRUE(second.openForReading(name).ok());
}

TEST(WindowsMovieFile, AnUnbufferedWriteOfMoreThanOneTransferTakesIsRefused) {
    const TempFolder folder;
    UnbufferedFile file;
    ASSERT_TRUE(file.create(wideName(folder / "movie")).ok());
    EXPECT_EQ(file.startWrite(0, &file, 0x4000'0800).code(), 87u);
    EXPECT_TRUE(file.close().ok());
}

TEST(WindowsVolume, TheFolderEndsWithTheLastSeparatorOfEitherKind) {
    EXPECT_EQ(folderOf(u"C:\\movies\\a.avi"), u"C:\\movies\\");
    EXPECT_EQ(folderOf(u"C:\\movies/a.avi"), u"C:\\movies/");
    EXPECT_EQ(folderOf(u"C:/movies\\a.avi"), u"C:/movies\\");
}

}  // namespace
}  // namespace tavra::platform
