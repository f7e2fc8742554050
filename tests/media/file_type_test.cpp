#include "media/stills/file_type.h"

#include <gtest/gtest.h>

namespace tavra::stills {
namespace {

TEST(StillFileType, TheExtensionIsBehindTheLastDotOfTheWholeName) {
    EXPECT_EQ(extensionOf(u"a.b.bmp"), u"bmp");
    EXPECT_EQ(extensionOf(u"name."), u"");
    EXPECT_EQ(extensionOf(u"."), u"");
    EXPECT_EQ(extensionOf(u".png"), u"png");
    EXPECT_EQ(extensionOf(u"folder.d/name"), u"d/name") << "a folder's dot counts when the name has none";
    EXPECT_EQ(extensionOf(u"name"), std::nullopt);
    EXPECT_EQ(extensionOf(u""), std::nullopt);
}

TEST(StillFileType, EveryBeginningOfAKnownExtensionCounts) {
    const std::pair<const char16_t*, FileType> known[] = {
        {u"", FileType::Raw},      {u"r", FileType::Raw},    {u"rA", FileType::Raw},
        {u"raw", FileType::Raw},   {u"b", FileType::Bmp},    {u"bm", FileType::Bmp},
        {u"bMp", FileType::Bmp},   {u"BMP", FileType::Bmp},  {u"t", FileType::Tiff},
        {u"Ti", FileType::Tiff},   {u"TIF", FileType::Tiff}, {u"tiff", FileType::Tiff},
        {u"TIFF", FileType::Tiff}, {u"j", FileType::Jpeg},   {u"jp", FileType::Jpeg},
        {u"jPg", FileType::Jpeg},  {u"jpe", FileType::Jpeg}, {u"JPEG", FileType::Jpeg},
        {u"p", FileType::Png},     {u"PN", FileType::Png},   {u"png", FileType::Png},
    };
    for (const auto& [extension, type] : known) {
        SCOPED_TRACE(::testing::PrintToString(std::u16string(extension)));
        EXPECT_TRUE(isStillExtension(extension));
        EXPECT_EQ(fileTypeOf(extension), type);
    }
}

TEST(StillFileType, LongerOrOtherExtensionsAreNone) {
    for (const char16_t* extension : {u"bmpx", u"raws", u"tiffs", u"jpegs", u"jpgs", u"pngs", u"gif", u"x",
                                      u"tf", u"b/name", u"t/name", u" ", u"bmp ", u"ｂｍｐ", u"\u0130"}) {
        SCOPED_TRACE(::testing::PrintToString(std::u16string(extension)));
        EXPECT_FALSE(isStillExtension(extension));
        EXPECT_EQ(fileTypeOf(extension), FileType::Bmp) << "without the first check, all else is a bitmap";
    }
}

}  // namespace
}  // namespace tavra::stills
