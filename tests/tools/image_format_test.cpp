#include "image_format.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

TEST(ImageFormat, WordsAndBytesHaveAStillFormat) {
    const struct {
        std::uint32_t transfer, format;
    } rows[] = {{1, 1},  {32, 1},   {2, 16}, {64, 16}, {4, 32},  {128, 32},
                {8, 64}, {256, 64}, {16, 2}, {512, 2}, {1024, 4}};
    for (const auto& row : rows) EXPECT_EQ(stillFormatOf(row.transfer), row.format) << row.transfer;
}

TEST(ImageFormat, PackedAndYcbcrFramesHaveNone) {
    for (std::uint32_t transfer :
         {0x10000u, 0x20000u, 0x100000u, 0x200000u, 2048u, 4096u, 8192u, 0x4000000u}) {
        EXPECT_FALSE(stillFormatOf(transfer).has_value()) << transfer;
    }
}

TEST(ImageFormat, RawNamesEndInRaw) {
    EXPECT_TRUE(isRawName("a.raw"));
    EXPECT_TRUE(isRawName("A.RAW"));
    EXPECT_FALSE(isRawName("a.raw.png"));
    EXPECT_FALSE(isRawName("raw"));
}

TEST(ImageFormat, JpegNamesEndInABeginningOfItsName) {
    for (const char* name : {"a.jpg", "a.JPEG", "a.j", "a.b.Jpe", ".jp"})
        EXPECT_TRUE(isJpegName(name)) << name;
    for (const char* name : {"a.", "jpg", "a.jpgs", "a.jpg.png", "a.jg", "a.png", ""}) {
        EXPECT_FALSE(isJpegName(name)) << name;
    }
}

}  // namespace
}  // namespace tavra::tool
