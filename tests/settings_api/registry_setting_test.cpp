#include "settings/registry_setting.h"
#include "camera_api/camera_fixture.h"
#include "settings/reg_key.h"
#include "settings/setting_file.h"
#include "settings_api/camera_state.h"
#include "settings_api/setting_camera_wrapper.h"
#include "support/temp_folder.h"
#include "support/user_tree.h"

#if !defined(_WIN32)
#include <sqlite3.h>

#include "platform/whole_file.h"
#include "support/wait_clock_double.h"
#endif

namespace tavra::test {
namespace {

using Access = CwRegKey::Access;

// The double is of type 8214, hexadecimal 2016.
constexpr const char16_t* kTypePath = uR"(SOFTWARE\Halvern\BrinscopePreference\2016)";

class RegistrySetting : public CameraTest {
  protected:
    static std::u16string pathOf(const std::u16string& name) {
        return name.empty() ? std::u16string(kTypePath) : kTypePath + (u"\\" + name);
    }
    static std::uint32_t dword(const std::u16string& setting, const std::u16string& name) {
        std::uint32_t value = 0xEEEEEEEE;
        EXPECT_EQ(CwRegKey(pathOf(setting), Access::Read, false).ReadDword(name, value), 0u);
        return value;
    }
    static void put(const std::u16string& setting, const std::u16string& name, std::uint32_t value) {
        CwRegKey key(pathOf(setting), Access::All, true);
        EXPECT_EQ(key.WriteDword(name, value), 0u);
        EXPECT_EQ(key.Close(), 0u);
    }
    static bool exists(const std::u16string& setting) {
        return CwRegKey(pathOf(setting), Access::Read, false).isOpen();
    }
    void save(const char16_t* name) { expectSuccess(Tavra_SaveSettingRegW(handle, name)); }
    void load(const char16_t* name) { expectSuccess(Tavra_LoadSettingRegW(handle, name)); }
    std::u16string defaultName() {
        char16_t buffer[64] = {u'x'};
        expectSuccess(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer));
        return buffer;
    }

    const UserTree tree_;
};

// What a named setting keeps gets other values.
void change(TavraHandle camera, std::uint16_t round) {
    const auto byte = [round](int value) { return static_cast<std::uint8_t>(value + round); };
    const auto word = [round](int value) { return static_cast<std::uint16_t>(value + round); };
    Tavra_SetALCMode(camera, byte(1));
    Tavra_SetShutterSpeed(camera, word(9), 0);
    Tavra_SetGain(camera, word(33));
    Tavra_SetTargetBrightness(camera, byte(90), byte(7), byte(9));
    std::array<std::uint8_t, 16> weights{};
    weights.fill(byte(3));
    Tavra_SetALCWeight(camera, weights.data());
    Tavra_SetGainControlRange(camera, word(21), word(60));
    Tavra_SetShutterControlRange(camera, word(2), 0, word(50), word(1));
    Tavra_SetWhiteBalanceMode(camera, 1);
    Tavra_SetWhiteBalanceGain(camera, word(130), word(131), word(132), word(133));
    Tavra_SetWhiteBalanceTarget(camera, word(90), word(91));
    Tavra_SetHueSaturationMode(camera, 1, word(-300), word(120));
    const std::int16_t matrix[12] = {
        static_cast<std::int16_t>(-7 - round), 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    Tavra_SetColorMatrix(camera, 255, matrix);
    std::array<std::uint8_t, 256> table{};
    table.fill(byte(66));
    for (std::uint8_t i = 0; i < 5; ++i) {
        table[i] = i;
        Tavra_SetGammaModeEx(camera, i, i == 2 ? TAVRA_GAMMA_ON : TAVRA_GAMMA_TABLE, word(150), 0, 0,
                             table.data());
    }
    Tavra_SetSharpnessMode(camera, 1, word(60), byte(5));
    Tavra_SetColorInterpolationMethod(camera, byte(1));
    Tavra_SetMirrorMode(camera, byte(1));
    Tavra_SetRotationMode(camera, byte(1));
}

TEST_F(RegistrySetting, BringsBackWhatItKeeps) {
    open();
    change(handle, 0);
    const CameraState saved = stateOf(handle);
    save(u"day");
    change(handle, 1);
    EXPECT_NE(stateOf(handle), saved);
    load(u"day");
    for (const auto& [what, values] : saved) EXPECT_EQ(stateOf(handle).at(what), values) << what;
}

TEST_F(RegistrySetting, WritesTheValuesUnderTheirNames) {
    open();
    change(handle, 0);
    save(u"day");
    const std::map<std::u16string, std::uint32_t> expected{{u"Clock Mode", 0},
                                                           {u"Scan Mode", 1},
                                                           {u"ALC Mode", 1},
                                                           {u"Shutter Line", 9},
                                                           {u"Shutter Clock", 0},
                                                           {u"Gain", 33},
                                                           {u"Brightness Target", 90},
                                                           {u"Brightness Tolerance", 7},
                                                           {u"Brightness Threshold", 9},
                                                           {u"Gain Min", 21},
                                                           {u"Gain Max", 60},
                                                           {u"Line Min", 2},
                                                           {u"Clock Min", 0},
                                                           {u"Line Max", 50},
                                                           {u"Clock Max", 1},
                                                           {u"White Balance Mode", 1},
                                                           {u"White Balance Gain R", 130},
                                                           {u"White Balance Gain Gr", 131},
                                                           {u"White Balance Gain Gb", 132},
                                                           {u"White Balance Gain B", 133},
                                                           {u"White Balance Target R", 90},
                                                           {u"White Balance Target B", 91},
                                                           {u"Hue/Saturation Mode", 1},
                                                           {u"Hue", 0xFED4},
                                                           {u"Saturation", 120},
                                                           {u"Color Matrix Mode", 255},
                                                           {u"Gamma Target Y Mode", 255},
                                                           {u"Gamma Target Gr Mode", 1},
                                                           {u"Gamma Target Gr Value", 150},
                                                           {u"Gamma Target B Mode", 255},
                                                           {u"Sharpness Mode", 1},
                                                           {u"Sharpness Gain", 60},
                                                           {u"Sharpness Coring", 5},
                                                           {u"Interpolation Mode", 1},
                                                           {u"Mirror Mode", 1},
                                                           {u"Rotation Mode", 1}};
    for (const auto& [name, value] : expected) {
        EXPECT_EQ(dword(u"day", name), value) << std::string(name.begin(), name.end());
    }
    std::map<std::u16string, std::size_t> sizes;
    CwRegKey key(pathOf(u"day"), Access::Read, false);
    platform::TreeValue value;
    std::uint32_t count = 0;
    for (; key.EnumValue(count, value) == 0; ++count) {
        if (value.type == platform::ValueType::Binary) sizes[value.name] = value.data.size();
    }
    EXPECT_EQ(sizes, (std::map<std::u16string, std::size_t>{{u"SDK Version", 16},
                                                            {u"Range Weight", 16},
                                                            {u"Color Matrix", 24},
                                                            {u"Gamma Target Y Table", 256},
                                                            {u"Gamma Target R Table", 256},
                                                            {u"Gamma Target Gr Table", 256},
                                                            {u"Gamma Target Gb Table", 256},
                                                            {u"Gamma Target B Table", 256}}));
    EXPECT_EQ(count, expected.size() + 6 + 8) << "six more numbers of the curves, and the bytes";
}

TEST_F(RegistrySetting, WithoutANameItIsTheTypesKey) {
    open();
    expectSuccess(Tavra_SetDefaultSettingRegW(handle, u"day"));
    save(nullptr);
    EXPECT_EQ(dword(u"", u"Clock Mode"), 0u);
    std::u16string text;
    EXPECT_EQ(CwRegKey(kTypePath, Access::Read, false).ReadString(u"Default", text), 0u);
    EXPECT_EQ(text, u"day");
    load(nullptr);
}

TEST_F(RegistrySetting, VariantsOfATypeShareItsKey) {
    DoubleCamera camera;
    camera.setCapabilityWord(7, 0x00AB);
    open(camera);
    save(u"day");
    EXPECT_TRUE(exists(u"day"));
}

TEST_F(RegistrySetting, AnEmptyKeyGivesTheDefaults) {
    open();
    change(handle, 0);
    load(u"new");
    EXPECT_TRUE(exists(u"new"));
    const CameraState now = stateOf(handle);
    using Values = std::vector<std::uint32_t>;
    EXPECT_EQ(now.at("white balance"), (Values{0, 128, 128, 128, 128}));
    EXPECT_EQ(now.at("white balance target")[0], 100u);
    EXPECT_EQ(now.at("white balance target")[1], 100u);
    EXPECT_EQ(now.at("hue and saturation"), (Values{0, 0, 100}));
    EXPECT_EQ(now.at("matrix")[0], 0u);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(now.at("gamma " + std::to_string(i))[0], 0u);
    EXPECT_EQ(now.at("sharpness"), (Values{1, 60, 5})) << "what has no default stays";
    EXPECT_EQ(now.at("gains")[1], 33u);
}

// A curve that is on, and whose gamma has not been stored.
TEST_F(RegistrySetting, AMissingGammaOfACurveIs100) {
    const std::u16string curves[] = {u"Y", u"R", u"Gr", u"Gb", u"B"};
    open();
    for (std::uint8_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(Tavra_SetGammaModeEx(handle, i, TAVRA_GAMMA_ON, 150, 0, 0, nullptr));
        put(u"new", u"Gamma Target " + curves[i] + u" Mode", TAVRA_GAMMA_ON);
    }
    put(u"new", u"Gamma Target Gr Value", 70);
    load(u"new");
    for (std::uint8_t i = 0; i < 5; ++i) {
        const auto curve = curveOf(handle, i);
        EXPECT_EQ(curve[0], std::uint32_t{TAVRA_GAMMA_ON}) << +i;
        EXPECT_EQ(curve[1], i == 2 ? 70u : 100u) << +i;
    }
}

TEST_F(RegistrySetting, LeavesBrightnessAndContrastOfTheCurvesAtZero) {
    open();
    save(u"day");
    put(u"day", u"Gamma Target R Mode", 1);
    Tavra_SetGammaModeEx(handle, 1, TAVRA_GAMMA_ON, 150, 20, 90, nullptr);
    load(u"day");
    const auto curve = curveOf(handle, 1);
    EXPECT_EQ(curve[0], 1u);
    EXPECT_EQ(curve[2], 0u);
    EXPECT_EQ(curve[3], 0u);
}

TEST_F(RegistrySetting, ClockAndSizeKeepTheirNumbers) {
    open();
    save(u"day");
    put(u"day", u"Scan Mode", 4);
    load(u"day");
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height));
    EXPECT_EQ(mode, 4);
    EXPECT_EQ(width, 640u);
    EXPECT_EQ(height, 480u);
}

TEST_F(RegistrySetting, AClockModeComesBackWithThePresentFrequency) {
    DoubleCamera camera;
    camera.setIdentity32(40, 5);  // the modes that it offers
    open(camera);
    ASSERT_TRUE(Tavra_SetClock(handle, 4, 20000000));
    save(u"day");
    EXPECT_EQ(dword(u"day", u"Clock Mode"), 4u);
    ASSERT_TRUE(Tavra_SetClock(handle, 1, 30000000));
    load(u"day");
    std::uint32_t mode = 0, clock = 0;
    ASSERT_TRUE(Tavra_GetClock(handle, &mode, &clock));
    EXPECT_EQ(mode, 4u);
    EXPECT_EQ(clock, 30000000u);
}

TEST_F(RegistrySetting, ASetterThatRefusesEndsTheLoad) {
    open();
    change(handle, 0);
    save(u"day");
    put(u"day", u"Hue/Saturation Mode", 9);
    change(handle, 1);
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 87);
    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("white balance")[1], 130u) << "ahead of it";
    EXPECT_EQ(now.at("sharpness")[1], 61u) << "behind it";
}

TEST_F(RegistrySetting, AGetterThatFailsEndsTheSaveAndLeavesWhatWasWritten) {
    DoubleCamera camera;
    camera.setCapability(1, 8);  // white balance of the camera's own is read from it
    open(camera);
    usb.failRequest(128);
    expectFailure(Tavra_SaveSettingRegW(handle, u"day"), 0xE0000005);
    EXPECT_EQ(dword(u"day", u"Clock Mode"), 0u);
    std::uint32_t value = 0;
    EXPECT_EQ(CwRegKey(pathOf(u"day"), Access::Read, false).ReadDword(u"Mirror Mode", value), 2u);
}

TEST_F(RegistrySetting, NothingIsDoneWhileTheStreamRuns) {
    open();
    runStream();
    expectFailure(Tavra_SaveSettingRegW(handle, u"day"), 0xE0000004);
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 0xE0000004);
    EXPECT_FALSE(exists(u""));
    EXPECT_THAT(traffic(), IsEmpty());
    endStream();
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

// --- names ---

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

#if !defined(_WIN32)
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
#endif

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

// --- .reg text ---

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

#if !defined(_WIN32)
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
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
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
    sqlite3_close(other);
    load(u"day");
}

TEST_F(RegistrySetting, ANewerStoreIsRefusedByEveryCall) {
    const TempFolder folder;
    const std::u16string file = wideName(folder / "day.reg");
    open();
    save(u"day");
    expectSuccess(Tavra_ExportSettingRegW(handle, u"day", file.c_str()));
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "PRAGMA user_version = 2", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(other);
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
        sqlite3* other = nullptr;
        ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
        const std::string refuse = "CREATE TRIGGER refuse BEFORE INSERT ON entries WHEN NEW.name = '" +
                                   std::string(value) + "' BEGIN SELECT RAISE(ABORT, 'no'); END";
        ASSERT_EQ(sqlite3_exec(other, refuse.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
        expectFailure(Tavra_ImportSettingRegW(handle, file.c_str()), 1009);
        EXPECT_FALSE(exists(u"day")) << value;
        ASSERT_EQ(sqlite3_exec(other, "DROP TRIGGER refuse", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(other);
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
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other,
                           "CREATE TRIGGER refuse BEFORE INSERT ON entries WHEN NEW.name = 'Range Weight' "
                           "BEGIN SELECT RAISE(ABORT, 'no'); END",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);
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
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
    // A key whose row is an error when it is read.
    ASSERT_EQ(sqlite3_exec(other,
                           "ALTER TABLE keys RENAME TO kept; CREATE VIEW keys AS SELECT CASE folded WHEN "
                           "'night' THEN abs(-9223372036854775808) ELSE id END AS id, parent, name, folded "
                           "FROM kept",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(other);
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
#endif

}  // namespace
}  // namespace tavra::test
