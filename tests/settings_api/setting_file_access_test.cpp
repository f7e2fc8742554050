// When a setting file may be saved and loaded, under which names, and what is no such file.
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using SettingFile = SettingFileTest;

TEST_F(SettingFile, NothingIsDoneWhileTheStreamRuns) {
    open();
    runStream();
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 0xE0000004);
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 0xE0000004);
    expectFailure(Tavra_ResetSetting(handle), 0xE0000004);
    EXPECT_THAT(traffic(), IsEmpty());
    EXPECT_TRUE(folder.isEmpty());
    expectSuccess(Tavra_SetSettingFileMode(handle, 1));
    endStream();
}

TEST_F(SettingFile, WithoutAHandleTheGlobalErrorTells) {
    EXPECT_EQ(Tavra_SaveSettingFileW(nullptr, u"x"), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    EXPECT_EQ(Tavra_LoadSettingFileW(nullptr, u"x"), 0);
    EXPECT_EQ(Tavra_LoadSettingFileA(nullptr, "x"), 0);
    EXPECT_EQ(Tavra_ResetSetting(nullptr), 0);
}

TEST_F(SettingFile, NarrowNamesAreTheSameFiles) {
    open();
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 9, 2));
    expectSuccess(Tavra_SaveSettingFileA(handle, path().string().c_str()));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 0, 0, 0));
    expectSuccess(Tavra_LoadSettingFileA(handle, path().string().c_str()));
    EXPECT_EQ(sharpnessModeOf(handle), 1);
}

TEST_F(SettingFile, NamesThatAreNoneAreErrors) {
    open();
    expectFailure(Tavra_SaveSettingFileW(handle, nullptr), 0xE000000F);
    expectFailure(Tavra_LoadSettingFileW(handle, nullptr), 0xE000000F);
    expectFailure(Tavra_SaveSettingFileA(handle, nullptr), 0xE000000F);
    expectFailure(Tavra_LoadSettingFileA(handle, nullptr), 0xE000000F);
    expectFailure(Tavra_SaveSettingFileW(handle, u""), 0xE000000F);
    expectFailure(Tavra_LoadSettingFileA(handle, ""), 0xE000000F);
    const std::u16string longest = wideName(folder / "") + std::u16string(10000, u'n');
    EXPECT_EQ(Tavra_SaveSettingFileW(handle, longest.c_str()), 0);
    EXPECT_NE(lastError(), 0u);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(SettingFile, WhatIsNoFileIsAnError) {
    open();
    std::filesystem::create_directory(path());
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 5);
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 5);
}

TEST_F(SettingFile, AFileThatIsMarkedReadOnlyIsLoadedAndNotSaved) {
    open();
    writeText(u"[GainShutter-2016]\nCurrentGain=55\n");
    const auto before = readFile(path());
    namespace fs = std::filesystem;
    const auto write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    fs::permissions(path(), write, fs::perm_options::remove);
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 5);
    EXPECT_EQ(readFile(path()), before);
    load();
    EXPECT_EQ(get(handle, Tavra_GetGain), 55);
    fs::permissions(path(), fs::perms::owner_write, fs::perm_options::add);
}

}  // namespace
}  // namespace tavra::test
