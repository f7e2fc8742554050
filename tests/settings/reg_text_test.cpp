#include "settings/reg_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <utility>

#include "platform/last_error.h"
#include "settings/reg_key.h"
#include "support/temp_folder.h"
#include "support/user_tree.h"

#if !defined(_WIN32)
#include "support/wait_clock_double.h"

namespace {
std::function<void()> onNextFlush;  // of the test's own thread
}

// Stands between the library and the system, by the linker.
extern "C" {
int __real_fsync(int);
int __wrap_fsync(int);

int __wrap_fsync(int descriptor) {
    if (onNextFlush) std::exchange(onNextFlush, nullptr)();
    return __real_fsync(descriptor);
}
}
#endif

namespace tavra {
namespace {

using platform::TreeValue;
using platform::ValueType;
using test::readFile;
using test::wideName;
using Bytes = std::vector<std::uint8_t>;
using Access = CwRegKey::Access;

constexpr const char16_t* kPrefix = uR"(SOFTWARE\Halvern\BrinscopePreference\0123)";
constexpr const char16_t* kPath = uR"(SOFTWARE\Halvern\BrinscopePreference\0123\day)";
const std::u16string kFirstLine = u"Windows Registry Editor Version 5.00 Compatible by Halvern camera driver";
const std::u16string kKeyLine = u"[HKEY_CURRENT_USER\\" + std::u16string(kPath) + u"]";

Bytes wide(std::u16string_view text) {
    Bytes bytes{0xFF, 0xFE};
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

TreeValue binary(const std::u16string& name, std::size_t size) {
    TreeValue value{name, ValueType::Binary, Bytes(size)};
    for (std::size_t i = 0; i < size; ++i) value.data[i] = static_cast<std::uint8_t>(i);
    return value;
}

// The lines of one value in a text.
std::vector<std::u16string> linesOf(const TreeValue& value) {
    const std::u16string text = regText(kPath, {value});
    std::vector<std::u16string> lines;
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find(u'\n', begin)) != text.npos; begin = end + 1) {
        lines.push_back(text.substr(begin, end - begin));
    }
    EXPECT_EQ(begin, text.size()) << "the last line has its end";
    lines.erase(lines.begin(), lines.begin() + 3);  // first line, empty line, key
    return lines;
}

RegText parse(std::u16string_view body) {
    return parseRegText(wide(kFirstLine + u"\n\n" + kKeyLine + u"\n" + std::u16string(body)), kPrefix);
}

// The one value of a body.
TreeValue only(std::u16string_view body) {
    const RegText text = parse(body);
    EXPECT_EQ(text.values.size(), 1u);
    return text.values.empty() ? TreeValue() : text.values.front();
}

// --- writing ---

TEST(RegText, BeginsWithItsOwnLineAndTheKey) {
    EXPECT_EQ(regText(kPath, {}), kFirstLine + u"\n\n" + kKeyLine + u"\n");
}

TEST(RegText, NumbersAreEightHexadecimalDigits) {
    EXPECT_EQ(linesOf({u"Gain", ValueType::Dword, {0xEF, 0xCD, 0xAB, 0x01}}),
              (std::vector<std::u16string>{u"\"Gain\"=dword:01abcdef"}));
}

TEST(RegText, OtherTypesAreLeftOut) {
    EXPECT_TRUE(linesOf({u"x", static_cast<ValueType>(7), {1, 2}}).empty());
}

TEST(RegText, TextIsTheBytesOfItsUnits) {
    EXPECT_EQ(linesOf({u"Default", ValueType::String, {'d', 0, 0xAC, 0x20}}),
              (std::vector<std::u16string>{u"\"Default\"=hex:64,00,ac,20"}));
}

TEST(RegText, LinesOfBytesBreakBehindTheColumn) {
    const auto lines = linesOf(binary(u"abcdefghij", 40));
    // The name takes 17 columns; with the 20th token they are 77.
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], u"\"abcdefghij\"=hex:00,01,02,03,04,05,06,07,08,09,0a,0b,0c,0d,0e,0f,10,11,12,13,\\");
    EXPECT_EQ(lines[1], u"  14,15,16,17,18,19,1a,1b,1c,1d,1e,1f,20,21,22,23,24,25,26,27");
}

TEST(RegText, LinesThatGoOnHold25Tokens) {
    const auto lines = linesOf(binary(u"abcdefghij", 256));
    // 20 tokens, then 236 by 25: 9 lines and one of 11.
    ASSERT_EQ(lines.size(), 11u);
    for (std::size_t i = 1; i < 10; ++i) EXPECT_EQ(lines[i].size(), 2u + 25 * 3 + 1) << i;
    EXPECT_EQ(lines[10].size(), 2u + 11 * 3 - 1);
}

TEST(RegText, ABreakBehindTheLastByteLosesABlank) {
    EXPECT_EQ(linesOf(binary(u"abcdefghij", 20)).back(), u" ");
    EXPECT_EQ(only(u"\"a\"=hex:01,02,\\\n \n").data, (Bytes{1, 2}));
}

TEST(RegText, NoBytesLoseTheColonAndAreNotRead) {
    const auto lines = linesOf(binary(u"empty", 0));
    EXPECT_EQ(lines, (std::vector<std::u16string>{u"\"empty\"=hex"}));
    EXPECT_TRUE(parse(lines[0] + u"\n").values.empty());
}

TEST(RegText, ALongValueIsCutTo4096Bytes) {
    std::size_t commas = 0;
    for (const auto& line : linesOf(binary(u"long", 5000))) {
        commas += static_cast<std::size_t>(std::ranges::count(line, u','));
    }
    EXPECT_GE(commas, 4095u);
    EXPECT_LE(commas, 4096u);
}

TEST(RegText, EverySizeComesBack) {
    for (std::size_t size = 1; size < 130; ++size) {
        const TreeValue value = binary(u"Gamma Target Y Table", size);
        const RegText text = parseRegText(wide(regText(kPath, {value})), kPrefix);
        ASSERT_EQ(text.values.size(), 1u) << size;
        EXPECT_EQ(text.values[0].name, value.name);
        EXPECT_EQ(text.values[0].data, value.data) << size;
    }
}

// --- reading ---

TEST(RegText, NeedsTheMarkAndTheFirstLine) {
    const std::u16string body = u"\n" + kKeyLine + u"\n\"a\"=hex:01\n";
    EXPECT_TRUE(parseRegText(wide(u"Windows Registry Editor Version 5.00" + body), kPrefix).hasKey);
    EXPECT_TRUE(parseRegText(wide(u"WINDOWS registry EDITOR version 5.00 anything" + body), kPrefix).hasKey);
    EXPECT_FALSE(parseRegText(wide(u"Windows Registry Editor Version 4.00" + body), kPrefix).hasForm);
    EXPECT_FALSE(parseRegText(wide(u" Windows Registry Editor Version 5.00" + body), kPrefix).hasForm);
    Bytes unmarked = wide(kFirstLine + body);
    unmarked.erase(unmarked.begin(), unmarked.begin() + 2);
    EXPECT_FALSE(parseRegText(unmarked, kPrefix).hasForm);
    const std::string narrow = "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n";
    EXPECT_FALSE(parseRegText(Bytes(narrow.begin(), narrow.end()), kPrefix).hasForm);
    EXPECT_FALSE(parseRegText({}, kPrefix).hasForm);
    EXPECT_FALSE(parseRegText({0xFF}, kPrefix).hasForm);
    EXPECT_FALSE(parseRegText({0xFF, 0xFE}, kPrefix).hasForm);
}

TEST(RegText, TakesTheFirstKeyUnderThePrefixAndNoOther) {
    const auto keyOf = [](const std::u16string& lines) {
        return parseRegText(wide(kFirstLine + u"\n" + lines + u"\n"), kPrefix).path;
    };
    EXPECT_EQ(keyOf(kKeyLine), kPath);
    EXPECT_EQ(keyOf(u"[hkey_current_user\\software\\HALVERN\\brinscopepreference\\0123\\Night]"),
              u"software\\HALVERN\\brinscopepreference\\0123\\Night");
    EXPECT_EQ(keyOf(u"[HKEY_CURRENT_USER\\" + std::u16string(kPrefix) + u"]"), kPrefix);
    EXPECT_EQ(keyOf(u"[HKEY_CURRENT_USER\\SOFTWARE\\Halvern\\BrinscopePreference\\0124\\day]"), u"");
    EXPECT_EQ(keyOf(u"[HKEY_LOCAL_MACHINE\\" + std::u16string(kPath) + u"]"), u"")
        << "its path keeps a backslash";
    EXPECT_EQ(keyOf(u"[HKEY_USERS\\" + std::u16string(kPath) + u"]"), u"");
    EXPECT_EQ(keyOf(kKeyLine + u" "), u"");
    EXPECT_EQ(keyOf(u" " + kKeyLine), u"");
    EXPECT_EQ(keyOf(u"[HKEY_CURRENT_USER]\n[]\n[\n]\nx\n" + kKeyLine), kPath);
}

TEST(RegText, BehindTheKeyEveryLineIsAValue) {
    const RegText text =
        parse(u"\"a\"=hex:01\n[HKEY_CURRENT_USER\\" + std::u16string(kPrefix) + u"\\other]\n\"b\"=hex:02\n");
    EXPECT_EQ(text.path, kPath);
    ASSERT_EQ(text.values.size(), 2u);
    EXPECT_EQ(text.values[1].name, u"b");
}

TEST(RegText, LinesEndInAnyOfTheForms) {
    for (const std::u16string end : {u"\n", u"\r\n", u"\r", u"\u0A00", u"\u0D00", u"\u0D0A", u"\u0A0D"}) {
        const std::u16string text =
            kFirstLine + end + kKeyLine + end + u"\"a\"=hex:01,\\" + end + u"  02" + end + u"\"b\"=dword:10";
        const RegText read = parseRegText(wide(text), kPrefix);
        ASSERT_EQ(read.values.size(), 2u);
        EXPECT_EQ(read.values[0].data, (Bytes{1, 2}));
        EXPECT_EQ(read.values[1].data, (Bytes{16, 0, 0, 0}));
    }
}

TEST(RegText, BlanksArePartOfANameAndOfNothingElse) {
    const TreeValue value = only(
        u"\"White Balance\tGain R\" =x\n\"Gamma Target Y\" = hex:01 , 0 2,\t03\n"
        u"\"Range Weight\"= h e x:0a\n");
    EXPECT_EQ(value.name, u"Range Weight") << "the blank ahead of the sign hides the others";
    EXPECT_EQ(value.data, (Bytes{10}));
    EXPECT_EQ(only(u"\"Range Weight\"=hex:01 , 0 2,\t03\n").data, (Bytes{1, 2, 3}));
}

TEST(RegText, WhatIsNoValueIsSkipped) {
    for (const std::u16string_view line :
         {u"a=hex:01", u"\"a=hex:01", u"\"a\"hex:01", u"\"a\"=", u"\"a\"=\"text\"", u"\"a\"=HEX:01",
          u"\"a\"=hex(2):01", u"\"\"", u"@=hex:01", u"; note", u"\"a\"=hex"}) {
        EXPECT_TRUE(parse(std::u16string(line) + u"\n").values.empty());
    }
    EXPECT_EQ(only(u"\"\"=hex:01").name, u"");
    EXPECT_EQ(only(u"\"" + std::u16string(256, u'n') + u"\"=hex:01\n").name.size(), 256u);
    EXPECT_TRUE(parse(u"\"" + std::u16string(257, u'n') + u"\"=hex:01\n").values.empty());
}

TEST(RegText, NumbersInBase16) {
    EXPECT_EQ(only(u"\"a\"=dword:0000ABcd").data, (Bytes{0xCD, 0xAB, 0, 0}));
    EXPECT_EQ(only(u"\"a\"=dword:").data, (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(only(u"\"a\"=dword:12xyz").data, (Bytes{0x12, 0, 0, 0}));
    EXPECT_EQ(only(u"\"a\"=dword:123456789").data, (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(only(u"\"a\"=hex:1,ff,100,zz,,2,").data, (Bytes{1, 0xFF, 0, 0, 0, 2}));
    EXPECT_TRUE(only(u"\"a\"=hex:").data.empty());
}

TEST(RegText, CutAtAnyByteIsReadAsFarAsItGoes) {
    const Bytes whole =
        wide(regText(kPath, {binary(u"Table", 60), {u"Gain", ValueType::Dword, {1, 2, 3, 4}}}));
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const RegText text =
            parseRegText(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)), kPrefix);
        EXPECT_LE(text.values.size(), 2u);
        if (!text.values.empty()) {
            EXPECT_LE(text.values[0].data.size(), 60u);
        }
    }
}

// --- between the tree and files ---

class RegFile : public testing::Test {
  protected:
    std::u16string name() const { return wideName(folder_ / "setting.reg"); }
    void write(std::u16string_view body) const {
        const Bytes bytes = wide(kFirstLine + u"\n" + std::u16string(body));
        std::ofstream(folder_ / "setting.reg", std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    const test::TempFolder folder_;
    const test::UserTree tree_;
};

TEST_F(RegFile, AnExportComesBackAfterTheKeyIsGone) {
    std::array<std::uint8_t, 256> table{}, read{};
    for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(255 - i);
    {
        CwRegKey key(kPath, Access::All, true);
        EXPECT_EQ(key.WriteDword(u"Gain", 0x12345678), 0u);
        EXPECT_EQ(key.WriteBinary(u"Table", table.data(), table.size()), 0u);
        EXPECT_EQ(key.WriteString(u"Default", u"d\u20AC"), 0u);
        EXPECT_EQ(key.Close(), 0u);
    }
    ASSERT_TRUE(ExportKey(name(), kPath));
    EXPECT_EQ(readFile(folder_ / "setting.reg")[0], 0xFF);
    {
        CwRegKey type(kPrefix, Access::All, false);
        ASSERT_EQ(type.DeleteSubKey(u"day"), 0u);
        ASSERT_EQ(type.Close(), 0u);
    }
    ASSERT_TRUE(ImportKey(name(), kPrefix));
    CwRegKey key(kPath, Access::Read, false);
    std::uint32_t gain = 0;
    EXPECT_EQ(key.ReadDword(u"Gain", gain), 0u);
    EXPECT_EQ(gain, 0x12345678u);
    EXPECT_EQ(key.ReadBinary(u"Table", read.data(), read.size()), 0u);
    EXPECT_EQ(read, table);
    // Text comes back as bytes, and is read as the same text.
    std::u16string text;
    EXPECT_EQ(key.ReadString(u"Default", text), 0u);
    EXPECT_EQ(text, u"d\u20AC");
    platform::TreeValue value;
    for (std::uint32_t i = 0; key.EnumValue(i, value) == 0; ++i) {
        EXPECT_NE(value.type, ValueType::String);
    }
}

#if !defined(_WIN32)
TEST_F(RegFile, NobodyWaitsForTheStoreWhileTheFileIsWritten) {
    {
        CwRegKey key(kPath, Access::All, true);
        ASSERT_EQ(key.WriteDword(u"Gain", 5), 0u);
        ASSERT_EQ(key.Close(), 0u);
    }
    const test::WaitClockDouble clock;
    bool looked = false;
    onNextFlush = [&] {
        looked = true;
        CwRegKey other(u"SOFTWARE\\Somebody\\Else", Access::All, true);
        EXPECT_TRUE(other.isOpen());
    };
    EXPECT_TRUE(ExportKey(name(), kPath));
    onNextFlush = nullptr;
    EXPECT_TRUE(looked);
}
#endif

TEST_F(RegFile, WithoutTheKeyNoFileIsMade) {
    EXPECT_FALSE(ExportKey(name(), kPath));
    EXPECT_EQ(platform::lastSystemError(), 2u);
    EXPECT_TRUE(folder_.isEmpty());
}

TEST_F(RegFile, AFileThatCannotBeMadeIsAnError) {
    CwRegKey(kPath, Access::All, true).Close();
    std::filesystem::create_directory(folder_ / "setting.reg");
    EXPECT_FALSE(ExportKey(name(), kPath));
    EXPECT_EQ(platform::lastSystemError(), 5u);
    EXPECT_FALSE(ImportKey(wideName(folder_ / "none.reg"), kPrefix));
    EXPECT_EQ(platform::lastSystemError(), 2u);
}

TEST_F(RegFile, NumbersAloneAreTakenOverAndReportedAsFailure) {
    write(kKeyLine + u"\n\"Gain\"=dword:00000007\n");
    EXPECT_FALSE(ImportKey(name(), kPrefix));
    std::uint32_t gain = 0;
    EXPECT_EQ(CwRegKey(kPath, Access::Read, false).ReadDword(u"Gain", gain), 0u);
    EXPECT_EQ(gain, 7u);
}

// A copy that broke off. Whole lines are taken over, and a line that was cut only as far as it goes.
TEST_F(RegFile, CutAtAnyByteItChangesNothingButItsOwnKey) {
    const Bytes whole = wide(kFirstLine + u"\n" + kKeyLine + u"\n\"a\"=hex:01,02\n\"b\"=dword:00000005\n");
    const std::size_t keyEnd =
        whole.size() - 2 * std::u16string_view(u"\n\"a\"=hex:01,02\n\"b\"=dword:00000005\n").size();
    for (std::size_t length = 0; length <= whole.size(); length += 7) {
        std::ofstream(folder_ / "setting.reg", std::ios::binary)
            .write(reinterpret_cast<const char*>(whole.data()), static_cast<std::streamsize>(length));
        const bool imported = ImportKey(name(), kPrefix);
        const bool made = CwRegKey(kPath, Access::Read, false).isOpen();
        EXPECT_EQ(made, length >= keyEnd) << length;
        EXPECT_TRUE(made || !imported) << length;
        if (!imported) {
            EXPECT_EQ(platform::lastSystemError(), 13u) << length;
        }
        CwRegKey type(kPrefix, Access::All, false);
        if (made) {
            EXPECT_EQ(type.DeleteSubKey(u"day"), 0u);
            EXPECT_EQ(type.Close(), 0u);
        }
    }
}

TEST_F(RegFile, OfAnotherTypeChangesNothing) {
    write(u"[HKEY_CURRENT_USER\\SOFTWARE\\Halvern\\BrinscopePreference\\0999\\day]\n\"a\"=hex:01\n");
    EXPECT_FALSE(ImportKey(name(), kPrefix));
    EXPECT_FALSE(CwRegKey(uR"(SOFTWARE\Halvern)", Access::Read, false).isOpen());
}

TEST_F(RegFile, AKeyThatExistsIsAskedForWhereSomebodyAsks) {
    write(kKeyLine + u"\n\"a\"=hex:01\n");
    int asked = 0;
    const auto no = [&asked]() -> std::uint32_t { return ++asked, 7; };
    EXPECT_TRUE(ImportKey(name(), kPrefix, no));
    EXPECT_EQ(asked, 0) << "there was none";
    write(kKeyLine + u"\n\"a\"=hex:02\n");
    EXPECT_TRUE(ImportKey(name(), kPrefix, no));
    EXPECT_EQ(asked, 1);
    std::uint8_t byte = 0;
    EXPECT_EQ(CwRegKey(kPath, Access::Read, false).ReadBinary(u"a", &byte, 1), 0u);
    EXPECT_EQ(byte, 1) << "no leaves it";
    EXPECT_TRUE(ImportKey(name(), kPrefix, [] { return 6u; }));
    EXPECT_EQ(CwRegKey(kPath, Access::Read, false).ReadBinary(u"a", &byte, 1), 0u);
    EXPECT_EQ(byte, 2);
}

}  // namespace
}  // namespace tavra
