#include "settings/reg_key.h"

#include <gtest/gtest.h>

#include <array>

#include "support/user_tree.h"

namespace tavra {
namespace {

using Access = CwRegKey::Access;

class RegKey : public testing::Test {
  protected:
    const test::UserTree tree_;
    CwRegKey key_{u"SOFTWARE\\test", Access::All, true};
};

TEST_F(RegKey, NumbersOfEveryWidthAreStoredAsFourBytes) {
    EXPECT_EQ(key_.WriteByte(u"byte", 0xAB), 0u);
    EXPECT_EQ(key_.WriteWord(u"word", 0xABCD), 0u);
    EXPECT_EQ(key_.WriteDword(u"dword", 0x89ABCDEF), 0u);
    platform::TreeValue value;
    for (std::uint32_t i = 0; i < 3; ++i) {
        ASSERT_EQ(key_.EnumValue(i, value), 0u);
        EXPECT_EQ(value.data.size(), 4u);
        EXPECT_EQ(value.type, platform::ValueType::Dword);
    }
    std::uint8_t byte = 0;
    std::uint16_t word = 0;
    std::uint32_t dword = 0;
    std::int32_t number = 0;
    EXPECT_EQ(key_.ReadByte(u"byte", byte), 0u);
    EXPECT_EQ(key_.ReadWord(u"word", word), 0u);
    EXPECT_EQ(key_.ReadDword(u"dword", dword), 0u);
    EXPECT_EQ(key_.ReadDwordSigned(u"dword", number), 0u);
    EXPECT_EQ(byte, 0xAB);
    EXPECT_EQ(word, 0xABCD);
    EXPECT_EQ(dword, 0x89ABCDEFu);
    EXPECT_EQ(number, static_cast<std::int32_t>(0x89ABCDEF));
    EXPECT_EQ(key_.ReadByte(u"dword", byte), 0u);
    EXPECT_EQ(byte, 0xEF) << "narrowed";
}

TEST_F(RegKey, AMissingValueLeavesTheCallersOwn) {
    std::uint8_t byte = 7;
    std::uint32_t dword = 8;
    std::u16string text = u"mine";
    EXPECT_EQ(key_.ReadByte(u"none", byte), 2u);
    EXPECT_EQ(key_.ReadDword(u"none", dword), 2u);
    EXPECT_EQ(key_.ReadBinary(u"none", &dword, 4), 2u);
    EXPECT_EQ(key_.ReadString(u"none", text), 2u);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(dword, 8u);
    EXPECT_EQ(text, u"mine");
}

TEST_F(RegKey, OtherSizesThanTheReadersAreHarmless) {
    const std::uint8_t five[] = {1, 2, 3, 4, 5};
    ASSERT_EQ(key_.WriteBinary(u"five", five, 5), 0u);
    ASSERT_EQ(key_.WriteBinary(u"two", five, 2), 0u);
    std::uint32_t dword = 0xAAAAAAAA;
    EXPECT_EQ(key_.ReadDword(u"five", dword), 234u);
    EXPECT_EQ(dword, 0xAAAAAAAAu);
    EXPECT_EQ(key_.ReadDword(u"two", dword), 0u);
    EXPECT_EQ(dword, 0xAAAA0201u) << "over the caller's bytes";
    std::array<std::uint8_t, 4> four{9, 9, 9, 9};
    EXPECT_EQ(key_.ReadBinary(u"five", four.data(), 4), 234u);
    EXPECT_EQ(four, (std::array<std::uint8_t, 4>{9, 9, 9, 9}));
    EXPECT_EQ(key_.ReadBinary(u"two", four.data(), 4), 0u);
    EXPECT_EQ(four, (std::array<std::uint8_t, 4>{1, 2, 0, 0}));
}

TEST_F(RegKey, TextEndsAtItsZeroOrAtItsEnd) {
    ASSERT_EQ(key_.WriteString(u"plain", u"abc"), 0u);
    ASSERT_EQ(key_.WriteString(u"zero", std::u16string(u"abc\0def", 7)), 0u);
    ASSERT_EQ(key_.WriteBinary(u"odd", "a\0b", 3), 0u);
    std::u16string text;
    EXPECT_EQ(key_.ReadString(u"plain", text), 0u);
    EXPECT_EQ(text, u"abc");
    EXPECT_EQ(key_.ReadString(u"zero", text), 0u);
    EXPECT_EQ(text, u"abc");
    EXPECT_EQ(key_.ReadString(u"odd", text), 0u);
    EXPECT_EQ(text, u"a");
}

TEST_F(RegKey, WithoutAKeyEverythingGives87) {
    CwRegKey none(u"SOFTWARE\\none", Access::Read, false);
    EXPECT_FALSE(none.isOpen());
    EXPECT_EQ(none.openError(), 2u);
    std::uint32_t dword = 5;
    std::u16string text;
    platform::TreeValue value;
    EXPECT_EQ(none.ReadDword(u"x", dword), 87u);
    EXPECT_EQ(none.ReadString(u"x", text), 87u);
    EXPECT_EQ(none.ReadBinary(u"x", &dword, 4), 87u);
    EXPECT_EQ(none.WriteDword(u"x", 1), 87u);
    EXPECT_EQ(none.WriteBinary(u"x", &dword, 4), 87u);
    EXPECT_EQ(none.WriteString(u"x", u"y"), 87u);
    EXPECT_EQ(none.EnumSubKey(0, text), 87u);
    EXPECT_EQ(none.EnumValue(0, value), 87u);
    EXPECT_EQ(none.DeleteSubKey(u"x"), 87u);
    EXPECT_EQ(none.DeleteValue(u"x"), 87u);
    EXPECT_EQ(none.Close(), 87u);
    EXPECT_EQ(dword, 5u);
}

}  // namespace
}  // namespace tavra
