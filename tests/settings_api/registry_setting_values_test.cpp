// What a named setting keeps, and what a camera has of it afterwards.
#include <map>
#include <vector>

#include "settings_api/camera_state.h"
#include "settings_api/registry_setting_fixture.h"

namespace tavra::test {
namespace {

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

}  // namespace
}  // namespace tavra::test
