// The names of settings: the default, the list, and what is no name.
#include <algorithm>

#include "settings_api/registry_setting_fixture.h"

namespace tavra::test {
namespace {

TEST_F(RegistrySetting, AskingForTheDefaultMakesTheTypesKey) {
    open();
    ASSERT_FALSE(exists(u""));
    EXPECT_EQ(defaultName(), u"");
    EXPECT_TRUE(exists(u""));
}

TEST_F(RegistrySetting, AListOfNothingIsEmptyAndMakesTheTypesKey) {
    open();
    for (const bool isThere : {false, true}) {
        EXPECT_EQ(exists(u""), isThere);
        char16_t buffer[8] = {u'x'};
        std::uint32_t count = 99;
        expectSuccess(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count));
        EXPECT_EQ(buffer[0], 0);
        EXPECT_EQ(count, 0u);
        char narrow[8] = {'x'};
        count = 99;
        expectSuccess(Tavra_GetSettingListRegA(handle, narrow, sizeof narrow, &count));
        EXPECT_EQ(narrow[0], 0);
        EXPECT_EQ(count, 0u);
    }
}

TEST_F(RegistrySetting, TheDefaultIsANameThatExists) {
    open();
    EXPECT_EQ(defaultName(), u"");
    save(u"day");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"day"));
    EXPECT_EQ(defaultName(), u"day");
    expectSuccess(Tavra_RemoveSettingRegW(handle, u"day"));
    EXPECT_EQ(defaultName(), u"") << "the mark stays, the setting is gone";
    save(u"day");
    EXPECT_EQ(defaultName(), u"day");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, nullptr));
    EXPECT_EQ(defaultName(), u"");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, nullptr));
}

TEST_F(RegistrySetting, ADefaultThatDoesNotFitIsEmpty) {
    open();
    save(u"night");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"night"));
    for (const std::uint32_t size : {2u, 9u, 10u, 11u}) {
        char16_t buffer[8];
        std::ranges::fill(buffer, u'x');
        expectSuccess(Tavra_GetDefaultSettingRegW(handle, buffer, size));
        EXPECT_EQ(buffer[0], 0) << size;
        EXPECT_EQ(buffer[size / 2], u'x') << size;
    }
    char16_t exact[6];
    expectSuccess(Tavra_GetDefaultSettingRegW(handle, exact, sizeof exact));
    EXPECT_EQ(std::u16string(exact), u"night");
    char narrow[6];
    expectSuccess(Tavra_GetDefaultSettingRegA(handle, narrow, sizeof narrow));
    EXPECT_EQ(std::string(narrow), "night");
    expectFailure(Tavra_GetDefaultSettingRegW(handle, nullptr, 10), 87);
    expectFailure(Tavra_GetDefaultSettingRegW(handle, exact, 1), 87);
    expectFailure(Tavra_GetDefaultSettingRegA(handle, narrow, 0), 87);
}

TEST_F(RegistrySetting, AListHoldsWholeNamesAndCountsAll) {
    open();
    for (const char16_t* name : {u"one", u"two", u"three"}) save(name);
    char16_t buffer[32];
    std::uint32_t count = 99;
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count));
    EXPECT_EQ(std::u16string(buffer), u"one\\three\\two\\");
    EXPECT_EQ(count, 3u);
    // "one\" and "three\" take 20 bytes, the zero two more; the third name has no room then.
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, 22, &count));
    EXPECT_EQ(std::u16string(buffer), u"one\\three\\");
    EXPECT_EQ(count, 3u);
    // Behind one that has no room nothing follows, though it would fit.
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, 20, &count));
    EXPECT_EQ(std::u16string(buffer), u"one\\");
    EXPECT_EQ(count, 3u);
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, 8, &count));
    EXPECT_EQ(buffer[0], 0);
    expectSuccess(Tavra_GetSettingListRegW(handle, buffer, 9, &count));
    EXPECT_EQ(buffer[0], 0) << "half a unit is no room for the zero";
    char narrow[11];
    expectSuccess(Tavra_GetSettingListRegA(handle, narrow, sizeof narrow, &count));
    EXPECT_EQ(std::string(narrow), "one\\three\\");
    EXPECT_EQ(count, 3u);
    expectFailure(Tavra_GetSettingListRegW(handle, nullptr, 10, &count), 87);
    expectFailure(Tavra_GetSettingListRegW(handle, buffer, 10, nullptr), 87);
}

TEST_F(RegistrySetting, RemovingTellsItsErrors) {
    open();
    expectFailure(Tavra_RemoveSettingRegW(handle, u"day"), 2);
    save(u"night");
    expectFailure(Tavra_RemoveSettingRegW(handle, u"day"), 2);
    expectFailure(Tavra_RemoveSettingRegW(handle, u""), 87);
    expectFailure(Tavra_RemoveSettingRegW(handle, nullptr), 87);
    EXPECT_TRUE(exists(u"night"));
    expectSuccess(Tavra_RemoveSettingRegA(handle, "night"));
    EXPECT_FALSE(exists(u"night"));
}

TEST_F(RegistrySetting, NarrowNamesAreTheSameSettings) {
    open();
    ASSERT_TRUE(Tavra_SetGain(handle, 44));
    expectSuccess(Tavra_SaveSettingRegA(handle, "day"));
    EXPECT_EQ(dword(u"day", u"Gain"), 44u);
    ASSERT_TRUE(Tavra_SetGain(handle, 55));
    expectSuccess(Tavra_LoadSettingRegA(handle, "day"));
    std::uint16_t gain = 0;
    ASSERT_TRUE(Tavra_GetGain(handle, &gain));
    EXPECT_EQ(gain, 44);
    expectSuccess(Tavra_SetDefaultSettingRegA(handle, "day"));
    EXPECT_EQ(defaultName(), u"day");
    expectSuccess(Tavra_SetDefaultSettingRegA(handle, nullptr));
    expectSuccess(Tavra_SaveSettingRegA(handle, nullptr));
    EXPECT_EQ(dword(u"", u"Gain"), 44u);
}

TEST_F(RegistrySetting, NamesThatAreTooLongAreErrors) {
    open();
    for (const std::size_t length : {std::size_t{259}, std::size_t{260}, std::size_t{10000}}) {
        expectFailure(Tavra_SaveSettingRegA(handle, std::string(length, 'n').c_str()), 122);
        expectFailure(Tavra_LoadSettingRegA(handle, std::string(length, 'n').c_str()), 122);
        const std::u16string wide(length, u'n');
        // A save succeeds whatever the store says; the last error tells.
        EXPECT_EQ(Tavra_SaveSettingRegW(handle, wide.c_str()), 1);
        EXPECT_NE(lastError(), 0u);
        EXPECT_EQ(Tavra_LoadSettingRegW(handle, wide.c_str()), 0);
        EXPECT_EQ(Tavra_RemoveSettingRegW(handle, wide.c_str()), 0);
        record().lastError = 0;
    }
    const std::u16string longest(255, u'n');
    save(longest.c_str());
    EXPECT_TRUE(exists(longest));
    save(u"n");
    EXPECT_TRUE(exists(u"n"));
}

}  // namespace
}  // namespace tavra::test
