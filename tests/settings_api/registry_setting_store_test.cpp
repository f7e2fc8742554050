// Named settings and the store that they are in: others who hold it, and a store that fails. Linux.
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include "platform/key_tree.h"
#include "platform/whole_file.h"
#include "settings/registry_setting.h"
#include "settings/setting_file.h"
#include "settings_api/registry_setting_fixture.h"
#include "settings_api/setting_camera_wrapper.h"
#include "support/temp_folder.h"
#include "support/wait_clock_double.h"

namespace tavra::test {
namespace {

// Another program that has the store open.
class OtherProgram {
  public:
    explicit OtherProgram(const std::filesystem::path& store) {
        EXPECT_EQ(sqlite3_open(store.c_str(), &store_), SQLITE_OK);
    }
    ~OtherProgram() { sqlite3_close(store_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    void run(const std::string& statements) const {
        EXPECT_EQ(sqlite3_exec(store_, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    }

  private:
    sqlite3* store_ = nullptr;
};

// For a store that does not take values of this name.
std::string refusalOf(const std::string& value) {
    return "CREATE TRIGGER refuse BEFORE INSERT ON entries WHEN NEW.name = '" + value +
           "' BEGIN SELECT RAISE(ABORT, 'no'); END";
}

// The registry of Windows takes the zero behind the text along if there is one.
TEST_F(RegistrySetting, TheDefaultIsStoredAsTextWithoutItsZero) {
    open();
    for (const char16_t* const name : {u"day", u"night shift"}) {
        expectSuccess(Tavra_SetDefaultSettingRegW(handle, name));
        platform::TreeKey key;
        ASSERT_EQ(key.open(kTypePath, platform::TreeKey::Access::Read, platform::TreeKey::Missing::Fail), 0u);
        platform::TreeValue value;
        ASSERT_EQ(key.read(u"Default", value), 0u);
        EXPECT_EQ(value.type, platform::ValueType::String);
        std::vector<std::uint8_t> units;
        for (const char16_t unit : std::u16string_view(name)) {
            units.push_back(static_cast<std::uint8_t>(unit));
            units.push_back(0);  // the high byte of ASCII
        }
        EXPECT_EQ(value.data, units);
    }
}

// A camera can take seconds. Other programs must not wait for it.
TEST_F(RegistrySetting, NothingIsHeldWhileTheCameraIsAtWork) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "settings.ini");
    open();
    WaitClockDouble clock;
    int looks = 0;
    // Whether others can get at what settings are kept in.
    SettingCameraWrapper camera(record(), [&] {
        constexpr int kEvery = 8;  // each look takes its time on a disk
        if (looks++ % kEvery != 0) return;
        CwRegKey key(u"SOFTWARE\\Somebody\\Else", Access::All, true);
        EXPECT_EQ(key.WriteDword(u"Value", 1), 0u) << looks;
        EXPECT_EQ(key.Close(), 0u) << looks;
        EXPECT_TRUE(platform::FileUpdateLock(file).status().ok()) << looks;
    });
    EXPECT_TRUE(saveRegistrySetting(camera, u"day"));
    EXPECT_TRUE(loadRegistrySetting(camera, u"day"));
    EXPECT_TRUE(loadRegistrySetting(camera, u"new"));
    EXPECT_TRUE(saveSettingFile(camera, file));
    EXPECT_TRUE(loadSettingFile(camera, file));
    EXPECT_GT(looks, 200);
    EXPECT_EQ(clock.waited(), 0);
}

// Each call waits once, however many questions it has.
TEST_F(RegistrySetting, AStoreThatStaysLockedIsToldAfterFiveSeconds) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    save(u"day");
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    const std::vector<std::uint8_t> text = readFile(folder / "day.reg");
    std::optional<OtherProgram> other(tree_.database());
    other->run("BEGIN EXCLUSIVE");
    WaitClockDouble clock;
    const auto waitsOnce = [&](TavraBool result, TavraBool expected) {
        EXPECT_EQ(result, expected);
        EXPECT_EQ(lastError(), 170u);
        EXPECT_EQ(clock.waited(), 5000);
        record().lastError = 0;
    };
    char16_t buffer[8];
    std::uint32_t count = 0;
    waitsOnce(Tavra_SaveSettingRegW(handle, u"day"), 1);
    waitsOnce(Tavra_LoadSettingRegW(handle, u"day"), 0);
    waitsOnce(Tavra_RemoveSettingRegW(handle, u"day"), 0);
    waitsOnce(Tavra_SetDefaultSettingRegW(handle, u"day"), 0);
    waitsOnce(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer), 0);
    waitsOnce(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count), 0);
    waitsOnce(Tavra_ExportSettingRegW(handle, u"day", file.c_str()), 0);
    EXPECT_EQ(readFile(folder / "day.reg"), text);
    waitsOnce(Tavra_ImportSettingRegW(handle, file.c_str()), 0);
    other.reset();
    load(u"day");
}

TEST_F(RegistrySetting, ANewerStoreIsRefusedByEveryCall) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    save(u"day");
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    OtherProgram(tree_.database()).run("PRAGMA user_version = 2");
    const std::vector<std::uint8_t> before = readFile(tree_.database());
    EXPECT_EQ(Tavra_SaveSettingRegW(handle, u"day"), 1);
    EXPECT_EQ(lastError(), 1306u);
    char16_t buffer[8];
    std::uint32_t count = 0;
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 1306);
    expectFailure(Tavra_RemoveSettingRegW(handle, u"day"), 1306);
    expectFailure(Tavra_SetDefaultSettingRegW(handle, u"day"), 1306);
    expectFailure(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer), 1306);
    expectFailure(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count), 1306);
    expectFailure(Tavra_ExportSettingRegW(handle, u"day", file.c_str()), 1306);
    expectFailure(Tavra_ImportSettingRegW(handle, file.c_str()), 1306);
    EXPECT_EQ(readFile(tree_.database()), before);
}

// One value that the store does not take: half a setting must not be left, nor be called a success.
TEST_F(RegistrySetting, AnImportThatTheStoreDoesNotTakeIsAFailureAndLeavesNothing) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    for (const char* const value : {"Gain", "Range Weight"}) {
        save(u"day");
        expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
        expectSuccess(Tavra_RemoveSettingRegW(handle, u"day"));
        const OtherProgram other(tree_.database());
        other.run(refusalOf(value));
        expectFailure(Tavra_ImportSettingRegW(handle, file.c_str()), 1009);
        EXPECT_FALSE(exists(u"day")) << value;
        other.run("DROP TRIGGER refuse");
    }
}

// Old values beside new ones would be a setting that nobody has saved.
TEST_F(RegistrySetting, ASaveOfWhichTheStoreDoesNotTakeAValueKeepsTheOldSetting) {
    open();
    ASSERT_TRUE(Tavra_SetGain(handle, 33));
    ASSERT_TRUE(Tavra_SetMirrorMode(handle, 1));
    save(u"day");
    ASSERT_TRUE(Tavra_SetGain(handle, 34));
    ASSERT_TRUE(Tavra_SetMirrorMode(handle, 2));
    OtherProgram(tree_.database()).run(refusalOf("Range Weight"));
    EXPECT_EQ(Tavra_SaveSettingRegW(handle, u"day"), 1) << "no failure of the camera";
    EXPECT_EQ(lastError(), 1009u);
    EXPECT_EQ(dword(u"day", u"Gain"), 33u) << "ahead of the value";
    EXPECT_EQ(dword(u"day", u"Mirror Mode"), 1u) << "behind it";
    EXPECT_EQ(Tavra_SaveSettingRegW(handle, u"new"), 1);
    EXPECT_FALSE(exists(u"new"));
}

// That the setting of that name cannot be looked at does not mean that there is none.
TEST_F(RegistrySetting, ADefaultThatCannotBeLookedForIsAFailure) {
    open();
    save(u"night");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"night"));
    // A key whose row is an error when it is read.
    OtherProgram(tree_.database())
        .run(
            "ALTER TABLE keys RENAME TO kept; CREATE VIEW keys AS SELECT CASE folded WHEN "
            "'night' THEN abs(-9223372036854775808) ELSE id END AS id, parent, name, folded FROM kept");
    char16_t buffer[16] = {u'x'};
    expectFailure(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer), 1009);
    EXPECT_EQ(buffer[0], 0);
}

TEST_F(RegistrySetting, AStoreThatIsBrokenIsToldAndLeftAlone) {
    open();
    std::filesystem::create_directories(tree_.database().parent_path());
    std::ofstream(tree_.database()) << std::string(5000, 'x');
    EXPECT_EQ(Tavra_SaveSettingRegW(handle, u"day"), 1);
    EXPECT_EQ(lastError(), 1009u);
    record().lastError = 0;
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 1009);
    expectFailure(Tavra_SetDefaultSettingRegW(handle, u"day"), 1009);
    char16_t buffer[8];
    std::uint32_t count = 0;
    expectFailure(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer), 1009);
    expectFailure(Tavra_GetSettingListRegW(handle, buffer, sizeof buffer, &count), 1009);
    EXPECT_EQ(readFile(tree_.database()), std::vector<std::uint8_t>(5000, 'x'));
}

}  // namespace
}  // namespace tavra::test
