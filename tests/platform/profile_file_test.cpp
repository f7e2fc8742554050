#include "platform/profile_file.h"

#include <gtest/gtest.h>

#include "platform/whole_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::readFile;
using test::TempFolder;
using test::wideName;

using Bytes = std::vector<std::uint8_t>;

// A file of UTF-16, little endian, with its mark.
Bytes wide(std::u16string_view text) {
    Bytes bytes{0xFF, 0xFE};
    for (const char16_t unit : text) {
        bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    }
    return bytes;
}

Bytes single(std::string_view text) {
    return {text.begin(), text.end()};
}

std::u16string valueIn(std::u16string_view file, std::u16string_view section, std::u16string_view key) {
    ProfileText text(wide(file));
    return text.find(section, key).value_or(u"(none)");
}

TEST(ProfileText, ANewFileIsWideWithAMarkAndCarriageReturns) {
    ProfileText text;
    text.set(u"One", u"Key", u"1");
    text.set(u"Two", u"Key", u"2");
    text.set(u"One", u"Other", u"3");
    EXPECT_EQ(text.bytes(), wide(u"[One]\r\nKey=1\r\nOther=3\r\n[Two]\r\nKey=2\r\n"));
}

TEST(ProfileText, OfNothingIsTheMarkAlone) {
    EXPECT_EQ(ProfileText().bytes(), (Bytes{0xFF, 0xFE}));
}

TEST(ProfileText, FindsKeysWhateverTheirOrderAndTheirCapitals) {
    const std::u16string_view file = u"[Other]\r\nKey=0\r\n[one]\r\nlast=9\r\nKEY=1\r\n";
    EXPECT_EQ(valueIn(file, u"One", u"Key"), u"1");
    EXPECT_EQ(valueIn(file, u"ONE", u"Last"), u"9");
    EXPECT_EQ(valueIn(file, u"One", u"Missing"), u"(none)");
    EXPECT_EQ(valueIn(file, u"Missing", u"Key"), u"(none)");
}

TEST(ProfileText, TakesBlanksAndOnePairOfQuotesOffAValue) {
    EXPECT_EQ(valueIn(u"[s]\n \tk \t= \t12 3 \t\n", u"s", u"k"), u"12 3");
    EXPECT_EQ(valueIn(u"[s]\nk=\" 12 \"\n", u"s", u"k"), u" 12 ");
    EXPECT_EQ(valueIn(u"[s]\nk='12'\n", u"s", u"k"), u"12");
    EXPECT_EQ(valueIn(u"[s]\nk=\"12'\n", u"s", u"k"), u"\"12'");
    EXPECT_EQ(valueIn(u"[s]\nk=\"\n", u"s", u"k"), u"\"");
    EXPECT_EQ(valueIn(u"[s]\nk=\n", u"s", u"k"), u"");
    EXPECT_EQ(valueIn(u"[s]\nk=a=b\n", u"s", u"k"), u"a=b");
}

TEST(ProfileText, WhatIsNoKeyIsNotFound) {
    const std::u16string_view file = u"k=0\n[s]\n;k=1\n  ; k=2\nk\n[s\n]\n=5\n";
    EXPECT_EQ(valueIn(file, u"s", u"k"), u"(none)");
    EXPECT_EQ(valueIn(file, u"", u"k"), u"(none)");
    EXPECT_EQ(valueIn(u"[s]\n[t]\nk=1\n", u"s", u"k"), u"(none)") << "the next section's";
}

TEST(ProfileText, TheFirstSectionAndTheFirstKeyOfANameCount) {
    const std::u16string_view file = u"[s]\nk=1\nk=2\n[t]\nk=3\n[s]\nk=4\nonly=5\n";
    EXPECT_EQ(valueIn(file, u"s", u"k"), u"1");
    EXPECT_EQ(valueIn(file, u"s", u"only"), u"(none)");
}

TEST(ProfileText, ABracketCanBePartOfASectionsName) {
    EXPECT_EQ(valueIn(u"[[Clock-0123]\nk=1\n", u"[Clock-0123", u"k"), u"1");
    EXPECT_EQ(valueIn(u"[[Clock-0123]\nk=1\n", u"Clock-0123", u"k"), u"(none)");
}

// People who write the file by hand put them there.
TEST(ProfileText, BlanksInsideOfTheBracketsAreNoPartOfASectionsName) {
    for (const std::u16string_view header :
         {u"[ Clock-2016 ]", u"[Clock-2016 ]", u"[\tClock-2016]", u" [ \tClock-2016\t ] "}) {
        const std::u16string file = std::u16string(header) + u"\nk=1\n";
        EXPECT_EQ(valueIn(file, u"Clock-2016", u"k"), u"1");
        ProfileText text(wide(file));
        text.set(u"Clock-2016", u"k", u"2");
        text.set(u"Clock-2016", u"new", u"3");
        EXPECT_EQ(text.bytes(), wide(std::u16string(header) + u"\nk=2\nnew=3\n")) << "no second section";
    }
    EXPECT_EQ(valueIn(u"[ two words ]\nk=1\n", u"two words", u"k"), u"1");
    EXPECT_EQ(valueIn(u"[ [Clock-2016 ]\nk=1\n", u"[Clock-2016", u"k"), u"1");
    EXPECT_EQ(valueIn(u"[s]\nk=1\n[ s ]\nk=2\n", u"s", u"k"), u"1") << "the first of a name";
    EXPECT_EQ(valueIn(u"[s]\n[ ]\nk=1\n", u"s", u"k"), u"(none)") << "a name of nothing ends it, too";
}

TEST(ProfileText, EveryKindOfLineEndParts) {
    for (const std::u16string end : {u"\r\n", u"\n", u"\r"}) {
        EXPECT_EQ(valueIn(u"[s]" + end + u"a=1" + end + u"k=2", u"s", u"k"), u"2");
    }
}

TEST(ProfileText, SettingAValueLeavesEverythingElse) {
    ProfileText text(wide(u"; a note\n\n[s]\n  k = 1 \n# odd\nbare\nlast=7\n\n[t]\nk=\"8\"\n\n"));
    text.set(u"S", u"K", u"22");
    text.set(u"t", u"k", u"9");
    EXPECT_EQ(text.bytes(), wide(u"; a note\n\n[s]\n  k = 22 \n# odd\nbare\nlast=7\n\n[t]\nk=9\n\n"));
    EXPECT_EQ(text.find(u"s", u"k"), u"22");
}

TEST(ProfileText, AValueThatIsTheSameKeepsItsForm) {
    ProfileText text(wide(u"[s]\nk = \"1\"\n"));
    text.set(u"s", u"k", u"1");
    EXPECT_EQ(text.bytes(), wide(u"[s]\nk = \"1\"\n"));
}

TEST(ProfileText, NewKeysComeBehindTheLastLineOfTheirSection) {
    ProfileText text(wide(u"[s]\nk=1\n; end\n\n\n[t]\n"));
    text.set(u"s", u"new", u"2");
    text.set(u"t", u"k", u"3");
    text.set(u"u", u"k", u"4");
    text.set(u"s", u"NEW", u"5");
    EXPECT_EQ(text.find(u"s", u"new"), u"5");
    EXPECT_EQ(text.bytes(), wide(u"[s]\nk=1\n; end\nnew=5\n\n\n[t]\nk=3\n[u]\nk=4\n"));
}

TEST(ProfileText, ALastLineWithoutItsEndGetsOneAheadOfANewKey) {
    ProfileText key(wide(u"[s]\nk="));
    key.set(u"s", u"k", u"1");
    key.set(u"s", u"l", u"2");
    EXPECT_EQ(key.bytes(), wide(u"[s]\nk=1\nl=2\n"));
    ProfileText section(wide(u"note"));
    section.set(u"s", u"k", u"1");
    EXPECT_EQ(section.bytes(), wide(u"note\r\n[s]\r\nk=1\r\n"));
}

TEST(ProfileText, KeepsTheEncodingAndEveryUnitOfIt) {
    // A lone half of a pair, a zero, and a sign above the first plane.
    const std::u16string odd = std::u16string(u"x=") + char16_t(0xD800) + u'\0' + u"\U0001F4F7\n[s]\nk=1\n";
    ProfileText little(wide(odd));
    little.set(u"s", u"k", u"2");
    const std::u16string changed = odd.substr(0, odd.size() - 2) + u"2\n";
    EXPECT_EQ(little.bytes(), wide(changed));

    Bytes big = wide(odd);
    for (std::size_t i = 0; i + 1 < big.size(); i += 2) std::swap(big[i], big[i + 1]);
    ProfileText swapped(big);
    EXPECT_EQ(swapped.find(u"s", u"k"), u"1");
    swapped.set(u"s", u"k", u"2");
    Bytes expected = wide(changed);
    for (std::size_t i = 0; i + 1 < expected.size(); i += 2) std::swap(expected[i], expected[i + 1]);
    EXPECT_EQ(swapped.bytes(), expected);
}

// A file that was cut in the middle of a unit: what is whole of it is read, and no line behind is shifted.
TEST(ProfileText, HalfAUnitAtTheEndIsNoTextAndStaysThere) {
    for (const bool swapped : {false, true}) {
        const auto file = [&](std::u16string_view text) {
            Bytes bytes = wide(text);
            for (std::size_t i = 0; swapped && i + 1 < bytes.size(); i += 2)
                std::swap(bytes[i], bytes[i + 1]);
            bytes.push_back(u'7');
            return bytes;
        };
        ProfileText text(file(u"[s]\nk=1"));
        EXPECT_EQ(text.find(u"s", u"k"), u"1");
        EXPECT_EQ(text.bytes(), file(u"[s]\nk=1"));
        text.set(u"s", u"k", u"2");
        text.set(u"t", u"l", u"3");
        EXPECT_EQ(text.bytes(), file(u"[s]\nk=2\n[t]\nl=3\n"));
        EXPECT_EQ(ProfileText(text.bytes()).find(u"t", u"l"), u"3");
    }
    EXPECT_EQ(ProfileText(Bytes{0xFF, 0xFE, 9}).bytes(), (Bytes{0xFF, 0xFE, 9}));
}

TEST(ProfileText, AFileWithoutAMarkIsSingleBytesAndStaysThat) {
    ProfileText text(single("; \xC3\xA4\xFF\n[s]\nk=1\n"));
    EXPECT_EQ(text.find(u"s", u"k"), u"1");
    text.set(u"s", u"k", u"2");
    text.set(u"s", u"l", u"3");
    EXPECT_EQ(text.bytes(), single("; \xC3\xA4\xFF\n[s]\nk=2\nl=3\n"));
    ProfileText empty{Bytes()};
    empty.set(u"s", u"k", u"1");
    EXPECT_EQ(empty.bytes(), single("[s]\r\nk=1\r\n"));
}

// As editors put it there. It is not the beginning of the first section's line.
TEST(ProfileText, AMarkOfUtf8IsNoTextAndStays) {
    ProfileText text(single("\xEF\xBB\xBF[s]\nk=1 \xC3\xA4\n"));
    EXPECT_EQ(text.find(u"s", u"k"), u"1 \u00C3\u00A4") << "single bytes all the same";
    EXPECT_EQ(text.bytes(), single("\xEF\xBB\xBF[s]\nk=1 \xC3\xA4\n"));
    text.set(u"s", u"k", u"2");
    text.set(u"t", u"l", u"3");
    EXPECT_EQ(text.bytes(), single("\xEF\xBB\xBF[s]\nk=2\n[t]\nl=3\n"));
    EXPECT_EQ(ProfileText(single("\xEF\xBB\xBF")).bytes(), single("\xEF\xBB\xBF"));
    EXPECT_EQ(ProfileText(single("\xEF\xBB[s]\n")).bytes(), single("\xEF\xBB[s]\n"));
}

TEST(ProfileText, TakesAnyBytes) {
    const Bytes file = wide(u"[s]\r\nk=1\r\n[t]\r\n;c\r\nl=2");
    for (std::size_t length = 0; length <= file.size(); ++length) {
        ProfileText text(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)));
        text.set(u"s", u"k", u"9");
        ProfileText again(text.bytes());
        EXPECT_EQ(again.find(u"s", u"k"), u"9") << length;
    }
}

TEST(ProfileNumber, IsWhatThePlatformsCallReads) {
    EXPECT_EQ(profileNumber(u""), 0u);
    EXPECT_EQ(profileNumber(u"12abc"), 12u);
    EXPECT_EQ(profileNumber(u"abc"), 0u);
    EXPECT_EQ(profileNumber(u" \t+7 8"), 7u);
    EXPECT_EQ(profileNumber(u"-3"), 0xFFFFFFFDu);
    EXPECT_EQ(profileNumber(u"0x1fG"), 0x1Fu);
    EXPECT_EQ(profileNumber(u"4294967295"), 0xFFFFFFFFu);
    EXPECT_EQ(profileNumber(u"4294967297"), 1u);
}

TEST(ProfileFile, ThatIsMissingIsAnEmptyTextAndIsMadeByTheWrite) {
    const TempFolder folder;
    ProfileText text(wide(u"[s]\nk=1\n"));
    ASSERT_TRUE(readProfile(wideName(folder / "none.ini"), text).ok());
    EXPECT_EQ(text.find(u"s", u"k"), std::nullopt);
    EXPECT_TRUE(folder.isEmpty());
    ASSERT_TRUE(readProfile(wideName(folder / "no-folder") + u"/none.ini", text).ok());
    text.set(u"s", u"k", u"1");
    ASSERT_TRUE(writeProfile(wideName(folder / "none.ini"), text).ok());
    EXPECT_EQ(readFile(folder / "none.ini"), wide(u"[s]\r\nk=1\r\n"));
}

TEST(ProfileFile, AFolderInItsPlaceIsAnError) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "here.ini");
    ProfileText text;
    EXPECT_EQ(readProfile(wideName(folder / "here.ini"), text).code(), 5u);
    EXPECT_EQ(writeProfile(wideName(folder / "here.ini"), text).code(), 5u);
    EXPECT_TRUE(std::filesystem::is_directory(folder / "here.ini"));
}

TEST(WholeFile, IsReplacedWithoutATrace) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "a.bin");
    Bytes read;
    EXPECT_EQ(readWholeFile(name, read).code(), 2u);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{100000}, std::size_t{2}}) {
        const Bytes bytes(size, static_cast<std::uint8_t>(size));
        ASSERT_TRUE(replaceWholeFile(name, bytes).ok());
        ASSERT_TRUE(readWholeFile(name, read).ok());
        EXPECT_EQ(read, bytes);
    }
    const auto begin = std::filesystem::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin, std::filesystem::directory_iterator()), 1);
}

TEST(WholeFile, ThatIsMarkedReadOnlyStays) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "a.bin");
    ASSERT_TRUE(replaceWholeFile(name, Bytes{1, 2, 3}).ok());
    namespace fs = std::filesystem;
    const auto write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(folder / "a.bin", write, fs::perm_options::remove);
    EXPECT_EQ(replaceWholeFile(name, Bytes{4}).code(), 5u);
    EXPECT_EQ(readFile(folder / "a.bin"), (Bytes{1, 2, 3}));
    fs::permissions(folder / "a.bin", fs::perms::owner_write, fs::perm_options::add);
}

TEST(WholeFile, NamesThatCannotBeAreErrors) {
    const TempFolder folder;
    Bytes read;
    for (const std::size_t length : {std::size_t{300}, std::size_t{10000}}) {
        const std::u16string name = wideName(folder / "") + std::u16string(length, u'n');
        EXPECT_FALSE(replaceWholeFile(name, Bytes{1}).ok()) << length;
        EXPECT_FALSE(readWholeFile(name, read).ok()) << length;
    }
    EXPECT_FALSE(readWholeFile(u"", read).ok());
    EXPECT_FALSE(replaceWholeFile(u"", Bytes{1}).ok());
    EXPECT_TRUE(folder.isEmpty());
}

TEST(ProfileFile, AHundredMegabytesOfOneLineAreReadAndKept) {
    const TempFolder folder;
    constexpr std::size_t kSize = 100'000'000;
    const std::u16string name = wideName(folder / "long.ini");
    ASSERT_TRUE(replaceWholeFile(name, Bytes{0xFF, 0xFE}).ok());
    std::filesystem::resize_file(folder / "long.ini", kSize);
    ProfileText text;
    ASSERT_TRUE(readProfile(name, text).ok());
    EXPECT_EQ(text.find(u"s", u"k"), std::nullopt);
    text.set(u"s", u"k", u"1");
    ASSERT_TRUE(writeProfile(name, text).ok());
    EXPECT_EQ(std::filesystem::file_size(folder / "long.ini"), kSize + 2 * (2 + 5 + 5));
}

}  // namespace
}  // namespace tavra::platform
