#include "platform/text.h"

#include <gtest/gtest.h>

namespace tavra::platform {
namespace {

TEST(Text, AsciiGoesBothWays) {
    EXPECT_EQ(toWide("Camera 7"), u"Camera 7");
    EXPECT_EQ(toNarrow(u"Camera 7"), "Camera 7");
    EXPECT_EQ(toWide(""), u"");
    EXPECT_EQ(toNarrow(u""), "");
}

TEST(Text, LongTextIsWhole) {
    const std::string narrow(100'000, 'x');
    const std::u16string wide(100'000, u'x');
    EXPECT_EQ(toWide(narrow), wide);
    EXPECT_EQ(toNarrow(wide), narrow);
}

TEST(Text, AUnitWithoutCounterpartBecomesAQuestionMark) {
    const std::u16string loneSurrogate = {u'a', char16_t{0xD800}, u'b'};
    EXPECT_EQ(toNarrow(loneSurrogate), "a?b");
}

TEST(Text, EmbeddedZerosAreKept) {
    EXPECT_EQ(toWide(std::string_view("a\0b", 3)), std::u16string(u"a\0b", 3));
}

}  // namespace
}  // namespace tavra::platform
