#include "settings/setting_text.h"

#include <gtest/gtest.h>

namespace tavra {
namespace {

constexpr std::uint32_t kPresent = 777;

std::uint32_t negative(std::uint32_t magnitude) {
    return 0 - magnitude;
}

TEST(SettingText, NumbersAreWrittenInDecimal) {
    EXPECT_EQ(textOf(Form::Number, 0), u"0");
    EXPECT_EQ(textOf(Form::Number, 24545455), u"24545455");
    EXPECT_EQ(textOf(Form::Number, 0x80000000), u"-2147483648") << "32 bits signed";
    EXPECT_EQ(textOf(Form::Number, 0xFFFFFFFF), u"-1");
    EXPECT_EQ(textOf(Form::Unsigned, 0xFFFFFFFF), u"4294967295");
    EXPECT_EQ(textOf(Form::ProfileNumber, 0x80000000), u"2147483648");
    EXPECT_EQ(textOf(Form::Position, negative(12)), u"-12");
    EXPECT_EQ(textOf(Form::Byte, 255), u"255");
    EXPECT_EQ(textOf(Form::UnsignedByte, 255), u"255");
    EXPECT_EQ(textOf(Form::Signed16, 0xFF9C), u"-100");
    EXPECT_EQ(textOf(Form::Signed16, 100), u"100");
}

TEST(SettingText, DigitsAreANumberAndNothingElseIs) {
    for (const Form form : {Form::Number, Form::Unsigned}) {
        EXPECT_EQ(valueOf(form, u"0", kPresent), 0u);
        EXPECT_EQ(valueOf(form, u"00012", kPresent), 12u);
        EXPECT_EQ(valueOf(form, u"", kPresent), 0u) << "no digits";
        EXPECT_EQ(valueOf(form, u"2147483647", kPresent), 2147483647u);
        for (const std::u16string_view text : {u"12abc", u"-1", u"+1", u" 1", u"1.5", u"0x10", u"１"}) {
            EXPECT_EQ(valueOf(form, text, kPresent), kPresent);
        }
    }
}

TEST(SettingText, ANumberThatTurnsNegativeOnItsWayIsNone) {
    EXPECT_EQ(valueOf(Form::Number, u"2147483648", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Unsigned, u"4294967295", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Unsigned, u"3000000000", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Unsigned, u"30000000000", kPresent), kPresent) << "the digit before was negative";
    // 2^32 + 5: from 429496730 to 5 without being negative between.
    EXPECT_EQ(valueOf(Form::Unsigned, u"4294967301", kPresent), 5u);
}

TEST(SettingText, AByteWrapsInEightBits) {
    for (const Form form : {Form::Byte, Form::UnsignedByte}) {
        EXPECT_EQ(valueOf(form, u"255", kPresent), 255u);
        EXPECT_EQ(valueOf(form, u"256", kPresent), 0u);
        EXPECT_EQ(valueOf(form, u"300", kPresent), 44u);
        EXPECT_EQ(valueOf(form, u"99999999999", kPresent), 99999999999u % 256);
        EXPECT_EQ(valueOf(form, u"", kPresent), 0u);
        EXPECT_EQ(valueOf(form, u"-1", kPresent), kPresent);
        EXPECT_EQ(valueOf(form, u"1x", kPresent), kPresent);
    }
}

TEST(SettingText, PositionsTakeAMinusAnywhereAndStayBelowBit30) {
    EXPECT_EQ(valueOf(Form::Position, u"12", kPresent), 12u);
    EXPECT_EQ(valueOf(Form::Position, u"-12", kPresent), negative(12));
    EXPECT_EQ(valueOf(Form::Position, u"1-2", kPresent), negative(12));
    EXPECT_EQ(valueOf(Form::Position, u"12--", kPresent), negative(12));
    EXPECT_EQ(valueOf(Form::Position, u"-", kPresent), 0u);
    EXPECT_EQ(valueOf(Form::Position, u"", kPresent), 0u);
    EXPECT_EQ(valueOf(Form::Position, u"1073741823", kPresent), 1073741823u);
    EXPECT_EQ(valueOf(Form::Position, u"1073741824", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Position, u"-1073741824", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Position, u"99999999999999999999", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Position, u"+1", kPresent), kPresent);
}

TEST(SettingText, Signed16EndsAt32768) {
    EXPECT_EQ(valueOf(Form::Signed16, u"32767", kPresent), 32767u);
    EXPECT_EQ(valueOf(Form::Signed16, u"32768", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Signed16, u"-32768", kPresent), 0x8000u);
    EXPECT_EQ(valueOf(Form::Signed16, u"-32769", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Signed16, u"4294967296", kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Signed16, u"-1", kPresent), 0xFFFFu);
    EXPECT_EQ(valueOf(Form::Signed16, u"", kPresent), 0u);
    EXPECT_EQ(valueOf(Form::Signed16, u"1a", kPresent), kPresent);
}

// The number is watched in 32 bits, and its low half is what the camera is given.
TEST(SettingText, AWordIsTheLowHalfOfANumber) {
    for (const Form form : {Form::Word, Form::UnsignedWord}) {
        EXPECT_EQ(valueOf(form, u"65535", 7), 65535u);
        EXPECT_EQ(valueOf(form, u"65545", 7), 9u);
        EXPECT_EQ(valueOf(form, u"2147483647", 7), 0xFFFFu);
        EXPECT_EQ(valueOf(form, u"2147483648", 7), 7u);
        EXPECT_EQ(valueOf(form, u"9x", 7), 7u);
        EXPECT_EQ(textOf(form, 65535), u"65535");
    }
    EXPECT_EQ(valueOf(Form::ProfileWord, u"65545x", 7), 9u);
    EXPECT_EQ(valueOf(Form::ProfileWord, u"-1", 7), 0xFFFFu);
    EXPECT_EQ(textOf(Form::ProfileWord, 65535), u"65535");
}

TEST(SettingText, TheTailIsReadLikeAProfileNumber) {
    EXPECT_EQ(valueOf(Form::ProfileNumber, u"12abc", kPresent), 12u);
    EXPECT_EQ(valueOf(Form::ProfileNumber, u"-1", kPresent), 0xFFFFFFFFu);
    EXPECT_EQ(valueOf(Form::ProfileNumber, u"", kPresent), 0u);
}

TEST(SettingText, WhatIsWrittenComesBackUnlessBit31IsSet) {
    for (const std::uint32_t value : {0u, 1u, 255u, 40000u, 24545455u, 0x3FFFFFFFu}) {
        EXPECT_EQ(valueOf(Form::Number, textOf(Form::Number, value), kPresent), value);
        EXPECT_EQ(valueOf(Form::Unsigned, textOf(Form::Unsigned, value), kPresent), value);
        EXPECT_EQ(valueOf(Form::Position, textOf(Form::Position, negative(value)), kPresent),
                  negative(value));
    }
    EXPECT_EQ(valueOf(Form::Number, textOf(Form::Number, 0x80000000), kPresent), kPresent);
    EXPECT_EQ(valueOf(Form::Unsigned, textOf(Form::Unsigned, 0x80000000), kPresent), kPresent);
    for (std::uint32_t value = 0; value < 65536; value += 97) {
        EXPECT_EQ(valueOf(Form::Signed16, textOf(Form::Signed16, value), kPresent), value);
    }
}

}  // namespace
}  // namespace tavra
