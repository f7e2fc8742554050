// Names in the system code page: what cannot be expressed, and what happens without memory.
#include <functional>

#include "camera_api/camera_fixture.h"
#include "settings/reg_key.h"
#include "support/failing_allocations.h"
#include "support/temp_folder.h"
#include "support/user_tree.h"

namespace tavra::test {
namespace {

using Access = CwRegKey::Access;

constexpr const char16_t* kTypePath = uR"(SOFTWARE\Halvern\BrinscopePreference\2016)";
constexpr std::uint32_t kNoTranslation = 1113;

class SettingNames : public CameraTest {
  protected:
    static bool exists(const std::u16string& setting) {
        return CwRegKey(std::u16string(kTypePath) + u"\\" + setting, Access::Read, false).isOpen();
    }

    const UserTree tree_;
    const TempFolder folder_;
};

// A lone half of a pair is in no code page.
const std::u16string kLost = u"lost" + std::u16string(1, 0xD800);

TEST_F(SettingNames, AListLeavesOutNamesThatTheCodePageLacks) {
    open();
    for (const std::u16string& name : {std::u16string(u"day"), kLost, std::u16string(u"night")}) {
        expectSuccess(Tavra_SaveSettingRegW(handle, name.c_str()));
    }
    char buffer[64];
    std::uint32_t count = 0;
    expectSuccess(Tavra_GetSettingListRegA(handle, buffer, sizeof buffer, &count));
    EXPECT_STREQ(buffer, "day\\night\\");
    EXPECT_EQ(count, 3u);
    char16_t wide[64];
    expectSuccess(Tavra_GetSettingListRegW(handle, wide, sizeof wide, &count));
    EXPECT_EQ(std::u16string(wide), u"day\\" + kLost + u"\\night\\");
}

// It would be the name of "lost?", which may be another setting.
TEST_F(SettingNames, ADefaultThatTheCodePageLacksIsNotAnotherName) {
    open();
    expectSuccess(Tavra_SaveSettingRegW(handle, kLost.c_str()));
    expectSuccess(Tavra_SaveSettingRegW(handle, u"lost?"));
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, kLost.c_str()));
    char buffer[64] = "before";
    expectFailure(Tavra_GetDefaultSettingRegA(handle, buffer, sizeof buffer), kNoTranslation);
    EXPECT_STREQ(buffer, "");
    char16_t wide[64];
    expectSuccess(Tavra_GetDefaultSettingRegW(handle, wide, sizeof wide));
    EXPECT_EQ(std::u16string(wide), kLost);
    expectSuccess(Tavra_SetDefaultSettingRegA(handle, "lost?"));
    expectSuccess(Tavra_GetDefaultSettingRegA(handle, buffer, sizeof buffer));
    EXPECT_STREQ(buffer, "lost?") << "a question mark is a character as any other";
}

// A key has names of up to 255 units; the narrow forms convert up to 258 of them.
TEST_F(SettingNames, OfAnyLengthAreTakenOrRefusedByEveryCall) {
    open();
    const std::string file = (folder_ / "n.reg").string();
    const std::u16string wideFile = wideName(folder_ / "n.reg");
    for (const std::size_t length : {0, 1, 255, 256, 258, 259, 260, 10000}) {
        const std::string narrow(length, 'n');
        const std::u16string wide(length, u'n');
        const char* const name = narrow.c_str();
        const char16_t* const wideName = wide.c_str();
        const bool isKey = length <= 255;
        const std::uint32_t tooLong = length <= 258 ? 87 : 122;
        const auto expect = [&](TavraBool result, bool good, std::uint32_t code) {
            EXPECT_EQ(result, good ? 1 : 0) << length;
            EXPECT_EQ(lastError(), good ? 0 : code) << length;
            record().lastError = 0;
        };
        // A save that the store does not take is no failure of the camera.
        EXPECT_EQ(Tavra_SaveSettingRegW(handle, wideName), 1) << length;
        EXPECT_EQ(lastError(), isKey ? 0u : 87u) << length;
        record().lastError = 0;
        EXPECT_EQ(Tavra_SaveSettingRegA(handle, name), length <= 258 ? 1 : 0) << length;
        EXPECT_EQ(lastError(), isKey ? 0 : tooLong) << length;
        record().lastError = 0;
        expect(Tavra_LoadSettingRegW(handle, wideName), isKey, 87);
        expect(Tavra_LoadSettingRegA(handle, name), isKey, tooLong);
        expect(Tavra_ExportSettingRegW(handle, wideName, wideFile.c_str()), isKey, 87);
        EXPECT_EQ(std::filesystem::remove(folder_ / "n.reg"), isKey) << length;
        expect(Tavra_ExportSettingRegA(handle, name, file.c_str()), isKey, tooLong);
        EXPECT_EQ(std::filesystem::remove(folder_ / "n.reg"), isKey) << length;
        // The mark of the default is a text of any length, and a name only if it is that of a setting.
        expect(Tavra_SetDefaultSettingRegW(handle, wideName), true, 0);
        std::vector<char16_t> buffer(length + 1, u'x');
        expect(Tavra_GetDefaultSettingRegW(handle, buffer.data(), static_cast<std::uint32_t>(2 * length + 2)),
               true, 0);
        EXPECT_EQ(std::u16string(buffer.data()), isKey ? wide : std::u16string()) << length;
        expect(Tavra_SetDefaultSettingRegA(handle, name), length <= 258, 122);
        const bool isSetting = isKey && length > 0;
        expect(Tavra_RemoveSettingRegW(handle, wideName), isSetting, 87);
        expect(Tavra_RemoveSettingRegA(handle, name), false, isSetting ? 2 : tooLong);
    }
}

TEST_F(SettingNames, OfFilesThatCannotBeMakeNone) {
    open();
    const std::string text = (folder_ / "n.reg").string();
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    expectSuccess(Tavra_ExportSettingRegA(handle, "day", text.c_str()));
    for (const std::size_t length : {0, 259, 260, 10000}) {
        const std::string folder = length == 0 ? "" : (folder_ / "").string();
        const std::string name = folder + std::string(length, 'n');
        const std::u16string wide(name.begin(), name.end());
        for (const TavraBool result :
             {Tavra_SaveSettingFileW(handle, wide.c_str()), Tavra_SaveSettingFileA(handle, name.c_str()),
              Tavra_ExportSettingRegW(handle, u"day", wide.c_str()),
              Tavra_ImportSettingRegW(handle, wide.c_str())}) {
            EXPECT_EQ(result, 0) << length;
        }
        record().lastError = 0;
        expectFailure(Tavra_ExportSettingRegA(handle, "day", name.c_str()), 0xE000000F);
        expectFailure(Tavra_ImportSettingRegA(handle, name.c_str()), 0xE000000F);
    }
    std::filesystem::remove(folder_ / "n.reg");
    EXPECT_TRUE(folder_.isEmpty());
    const std::string shortest = (folder_ / "n").string();
    expectSuccess(Tavra_SaveSettingFileA(handle, shortest.c_str()));
    expectSuccess(Tavra_LoadSettingFileA(handle, shortest.c_str()));
    expectSuccess(Tavra_ExportSettingRegA(handle, "day", shortest.c_str()));
    expectSuccess(Tavra_ImportSettingRegA(handle, shortest.c_str()));
}

#if !defined(_WIN32)
// The code page is UTF-8, where a byte 0xFF stands for nothing.
TEST_F(SettingNames, BytesThatAreNoTextNameNothing) {
    open();
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day?"));
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"day?"));
    const char* const name = "day\xFF";
    expectFailure(Tavra_SaveSettingRegA(handle, name), kNoTranslation);
    expectFailure(Tavra_LoadSettingRegA(handle, name), kNoTranslation);
    expectFailure(Tavra_RemoveSettingRegA(handle, name), kNoTranslation);
    expectFailure(Tavra_SetDefaultSettingRegA(handle, "other\xFF"), kNoTranslation);
    const std::string file = (folder_ / "day").string();
    expectFailure(Tavra_ExportSettingRegA(handle, name, (file + ".reg").c_str()), kNoTranslation);
    expectFailure(Tavra_ExportSettingRegA(handle, "day?", (file + "\xFF.reg").c_str()), 0xE000000F);
    expectFailure(Tavra_ImportSettingRegA(handle, (file + "\xFF.reg").c_str()), 0xE000000F);
    expectFailure(Tavra_SaveSettingFileA(handle, (file + "\xFF.ini").c_str()), 0xE000000F);
    expectFailure(Tavra_LoadSettingFileA(handle, (file + "\xFF.ini").c_str()), 0xE000000F);
    EXPECT_TRUE(exists(u"day?"));
    char16_t wide[64];
    expectSuccess(Tavra_GetDefaultSettingRegW(handle, wide, sizeof wide));
    EXPECT_EQ(std::u16string(wide), u"day?");
    EXPECT_TRUE(folder_.isEmpty());
}
#endif

// Whatever allocation it is that fails, from the conversion of the name on.
TEST_F(SettingNames, WithoutMemoryEveryNarrowCallFailsWith8) {
    open();
    const std::string name(200, 'n');
    const std::string file = (folder_ / std::string(100, 'f')).string();
    expectSuccess(Tavra_SaveSettingRegA(handle, name.c_str()));
    expectSuccess(Tavra_SetDefaultSettingRegA(handle, name.c_str()));
    expectSuccess(Tavra_ExportSettingRegA(handle, name.c_str(), (file + ".reg").c_str()));
    const std::string text = file + ".reg", settings = file + ".ini";
    char buffer[512];
    std::uint32_t count = 0;
    const std::function<TavraBool()> calls[] = {
        [&] { return Tavra_SaveSettingFileA(handle, settings.c_str()); },
        [&] { return Tavra_LoadSettingFileA(handle, settings.c_str()); },
        [&] { return Tavra_SaveSettingRegA(handle, name.c_str()); },
        [&] { return Tavra_LoadSettingRegA(handle, name.c_str()); },
        [&] { return Tavra_RemoveSettingRegA(handle, name.c_str()); },
        [&] { return Tavra_SetDefaultSettingRegA(handle, name.c_str()); },
        [&] { return Tavra_GetDefaultSettingRegA(handle, buffer, sizeof buffer); },
        [&] { return Tavra_GetSettingListRegA(handle, buffer, sizeof buffer, &count); },
        [&] { return Tavra_ExportSettingRegA(handle, name.c_str(), text.c_str()); },
        [&] { return Tavra_ImportSettingRegA(handle, text.c_str()); }};
    const std::vector<std::uint8_t> exported = readFile(text);
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        for (const std::size_t smallest : {std::size_t{1}, std::size_t{90}}) {
            record().lastError = 0;
            TavraBool result = 1;
            {
                const FailAllocationsFrom failing(smallest);
                result = calls[i]();
                EXPECT_GT(FailAllocationsFrom::failures(), 0u) << i;
            }
            EXPECT_EQ(result, 0) << i << ", from " << smallest << " bytes on";
            EXPECT_EQ(lastError(), 8u) << i << ", from " << smallest << " bytes on";
        }
    }
    EXPECT_FALSE(std::filesystem::exists(settings));
    EXPECT_EQ(readFile(text), exported);
    EXPECT_TRUE(exists(std::u16string(200, u'n')));
}

}  // namespace
}  // namespace tavra::test
