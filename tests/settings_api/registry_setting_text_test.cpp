// Named settings as .reg text.
#include "settings_api/camera_state.h"
#include "settings_api/registry_setting_fixture.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

TEST_F(RegistrySetting, MovesAsText) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    change(handle, 0);
    const CameraState saved = stateOf(handle);
    save(u"day");
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    expectSuccess(Tavra_RemoveSettingRegW(handle, u"day"));
    expectSuccess(Tavra_ImportSettingRegA(handle, (folder / "day.reg").string().c_str()));
    change(handle, 1);
    load(u"day");
    for (const auto& [what, values] : saved) EXPECT_EQ(stateOf(handle).at(what), values) << what;
    expectSuccess(Tavra_ExportSettingRegA(handle, "day", (folder / "again.reg").string().c_str()));
    EXPECT_EQ(readFile(folder / "again.reg").size(), readFile(folder / "day.reg").size());
}

// The type's own key, with the name of the default setting in it.
TEST_F(RegistrySetting, MovesAsTextWithoutAName) {
    const TempFolder folder;
    const std::filesystem::path files[] = {folder / "wide.reg", folder / "narrow.reg"};
    open();
    save(u"day");
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"day"));
    ASSERT_TRUE(Tavra_SetGain(handle, 44));
    save(nullptr);
    expectSuccess(Tavra_ExportSettingRegW(handle, nullptr, wideName(files[0]).c_str()));
    expectSuccess(Tavra_ExportSettingRegA(handle, nullptr, files[1].string().c_str()));
    EXPECT_EQ(readFile(files[1]), readFile(files[0]));
    for (const std::filesystem::path& file : files) {
        ASSERT_TRUE(Tavra_SetGain(handle, 55));
        save(nullptr);
        EXPECT_EQ(dword(u"", u"Gain"), 55u);
        expectSuccess(Tavra_SetDefaultSettingRegW(handle, nullptr));
        if (&file == &files[0]) {
            expectSuccess(Tavra_ImportSettingRegW(handle, wideName(file).c_str()));
        } else {
            expectSuccess(Tavra_ImportSettingRegA(handle, file.string().c_str()));
        }
        EXPECT_EQ(dword(u"", u"Gain"), 44u);
        EXPECT_EQ(defaultName(), u"day");
        load(nullptr);
        std::uint16_t gain = 0;
        ASSERT_TRUE(Tavra_GetGain(handle, &gain));
        EXPECT_EQ(gain, 44);
        EXPECT_TRUE(exists(u"day")) << "settings below it stay";
    }
}

TEST_F(RegistrySetting, TextOfAnotherTypeIsRefused) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    save(u"day");
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    close();
    usb.reset();
    DoubleCamera other;
    other.setIdentity16(4, 0x0123);
    open(other);
    expectFailure(Tavra_ImportSettingRegW(handle, file.c_str()), 13);
    EXPECT_FALSE(CwRegKey(uR"(SOFTWARE\Halvern\BrinscopePreference\0123)", Access::Read, false).isOpen());
}

TEST_F(RegistrySetting, TextNeedsAKeyAndAFile) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    expectFailure(Tavra_ExportSettingRegW(handle, u"day", file.c_str()), 2);
    EXPECT_TRUE(folder.isEmpty());
    expectFailure(Tavra_ImportSettingRegW(handle, file.c_str()), 2);
    expectFailure(Tavra_ExportSettingRegW(handle, u"day", nullptr), 0xE000000F);
    expectFailure(Tavra_ImportSettingRegW(handle, u""), 0xE000000F);
    expectFailure(Tavra_ImportSettingRegA(handle, nullptr), 0xE000000F);
    expectFailure(Tavra_ExportSettingRegA(handle, "day", std::string(300, 'f').c_str()), 0xE000000F);
}

// These do not ask the camera for anything.
TEST_F(RegistrySetting, NamesAndTextAreDealtWithWhileTheStreamRuns) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    save(u"day");
    runStream();
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    expectSuccess(Tavra_ExportSettingRegA(handle, "day", (folder / "again.reg").string().c_str()));
    EXPECT_EQ(readFile(folder / "again.reg"), readFile(folder / "day.reg"));
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"day"));
    EXPECT_EQ(defaultName(), u"day");
    expectSuccess(Tavra_RemoveSettingRegW(handle, u"day"));
    EXPECT_FALSE(exists(u"day"));
    expectSuccess(Tavra_ImportSettingRegW(handle, file.c_str()));
    EXPECT_TRUE(exists(u"day"));
    char16_t list[16];
    std::uint32_t count = 0;
    expectSuccess(Tavra_GetSettingListRegW(handle, list, sizeof list, &count));
    EXPECT_EQ(std::u16string(list), u"day\\");
    EXPECT_EQ(count, 1u);
    expectSuccess(Tavra_SetDefaultSettingRegA(handle, nullptr));
    expectSuccess(Tavra_RemoveSettingRegA(handle, "day"));
    EXPECT_FALSE(exists(u"day"));
    endStream();
}

}  // namespace
}  // namespace tavra::test
