#include "platform/volume.h"

#include <gtest/gtest.h>

#include "platform/random_access_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::TempFolder;
using test::wideName;

TEST(Volume, TheFolderEndsWithTheLastSlash) {
    EXPECT_EQ(folderOf(u"/data/movies/a.avi"), u"/data/movies/");
    EXPECT_EQ(folderOf(u"/a.avi"), u"/");
    EXPECT_EQ(folderOf(u"movies/"), u"movies/");
    EXPECT_EQ(folderOf(u"a.avi"), u"");
    EXPECT_EQ(folderOf(u""), u"");
}

TEST(Volume, AFilesSizeIsThatOfItsBytes) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie");
    std::uint64_t bytes = 77;
    EXPECT_EQ(fileSize(name, bytes).code(), 2u);
    EXPECT_EQ(bytes, 77u);
    RandomAccessFile file;
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.close().ok());
    ASSERT_TRUE(fileSize(name, bytes).ok());
    EXPECT_EQ(bytes, 0u);
    ASSERT_TRUE(file.create(name).ok());
    ASSERT_TRUE(file.write(0x1'2345'6789, "x", 1).ok());
    ASSERT_TRUE(file.close().ok());
    ASSERT_TRUE(fileSize(name, bytes).ok());
    EXPECT_EQ(bytes, 0x1'2345'678Au);
}

TEST(Volume, AFolderHasAKindAndFreeBytes) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "movie");
    for (const std::u16string_view place : {folderOf(file), std::u16string_view()}) {
        VolumeKind kind{};
        EXPECT_TRUE(volumeKind(place, kind).ok()) << "empty: the current folder";
        std::uint64_t bytes = 0;
        EXPECT_TRUE(freeBytes(place, bytes).ok());
        EXPECT_GT(bytes, 0u);
    }
}

TEST(Volume, AFolderThatIsNotThereHasNoFreeBytes) {
    const TempFolder folder;
    std::uint64_t bytes = 77;
    EXPECT_FALSE(freeBytes(wideName(folder / "missing") + u"/", bytes).ok());
    EXPECT_EQ(bytes, 77u);
}

}  // namespace
}  // namespace tavra::platform
