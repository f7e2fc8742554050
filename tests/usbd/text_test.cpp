#include "text.h"

#include <gtest/gtest.h>

namespace tavra::usbd {
namespace {

TEST(Text, BothWaysForEveryLength) {
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x93\xB7z";
    const std::u16string utf16 = u"a\u00E9\u20AC\U0001F4F7z";
    EXPECT_EQ(utf16FromUtf8(utf8), utf16);
    EXPECT_EQ(utf8FromUtf16(utf16), utf8);
    EXPECT_EQ(utf16FromUtf8(""), u"");
}

TEST(Text, WhatIsNotUtf8BecomesTheReplacementCharacter) {
    EXPECT_EQ(utf16FromUtf8("\x80"), u"\uFFFD");
    EXPECT_EQ(utf16FromUtf8("\xC3"), u"\uFFFD") << "cut off";
    EXPECT_EQ(utf16FromUtf8("\xC0\xAF"), u"\uFFFD\uFFFD") << "overlong";
    EXPECT_EQ(utf16FromUtf8("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD") << "a surrogate";
    EXPECT_EQ(utf16FromUtf8("\xF5\x80\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD") << "beyond Unicode";
}

TEST(Text, ALoneSurrogateBecomesTheReplacementCharacter) {
    const std::u16string lone{u'x', char16_t{0xD800}, u'y'};
    EXPECT_EQ(utf8FromUtf16(lone), "x\xEF\xBF\xBDy");
    EXPECT_EQ(utf8FromUtf16(std::u16string(1, char16_t{0xDC00})), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace tavra::usbd
