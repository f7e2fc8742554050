// What a saved setting file holds, model by model.
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

using SettingFile = SettingFileTest;

DoubleCamera monoCamera() {
    DoubleCamera camera;
    camera.setIdentity16(10, 1);
    return camera;
}

TEST_F(SettingFile, ANewFileIsWideTextWithAMark) {
    open();
    save();
    const auto bytes = readFile(path());
    ASSERT_GT(bytes.size(), 1000u);
    EXPECT_EQ(bytes[0], 0xFF);
    EXPECT_EQ(bytes[1], 0xFE);
    EXPECT_EQ(bytes[2], '[');
    EXPECT_EQ(bytes[3], 0);
    EXPECT_EQ(valueOf(u"Clock-2016", u"ClockMode"), u"0");
    EXPECT_EQ(valueOf(u"Clock-2016", u"Clock"), u"24545455");
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"Height"), u"480");
    EXPECT_EQ(valueOf(u"GammaB-2016", u"GammaTable_255"), u"255");
}

TEST_F(SettingFile, SectionsOfAVariantEndWithItsNumberToo) {
    DoubleCamera camera;
    camera.setCapabilityWord(7, 0x00AB);
    open(camera);
    save();
    EXPECT_EQ(valueOf(u"Clock-2016-00AB", u"ClockMode"), u"0");
    EXPECT_FALSE(hasSection("Clock-2016"));
}

TEST_F(SettingFile, TheOldestTypesHaveTheTypeAlone) {
    DoubleCamera camera = legacyCamera(1541);
    camera.setCapabilityWord(7, 0x00AB);
    open(camera);
    save();
    EXPECT_TRUE(hasSection("Clock-0605"));
    EXPECT_EQ(valueOf(u"GainShutter-0605", u"CurrentDigitalGain"), std::nullopt);
    EXPECT_NE(valueOf(u"GainShutter-0605", u"CurrentGain"), std::nullopt);
}

TEST_F(SettingFile, AnotherModelAddsSectionsOfItsOwn) {
    open();
    save();
    const auto first = readFile(path());
    close();
    usb.reset();
    DoubleCamera other;
    other.setIdentity16(4, 0x0123);
    open(other);
    save();
    const auto both = readFile(path());
    ASSERT_GT(both.size(), first.size());
    EXPECT_TRUE(std::equal(first.begin(), first.end(), both.begin())) << "the other's sections stand behind";
    EXPECT_TRUE(hasSection("Clock-0123"));
}

TEST_F(SettingFile, ForeignLinesStay) {
    open();
    writeText(u"; mine\n[Clock-2016]\nNote=keep me\nClock = 1\n\n[Other]\na=b\n");
    save();
    EXPECT_EQ(valueOf(u"Clock-2016", u"Note"), u"keep me");
    EXPECT_EQ(valueOf(u"Clock-2016", u"Clock"), u"24545455");
    EXPECT_EQ(valueOf(u"Other", u"a"), u"b");
    const auto bytes = readFile(path());
    EXPECT_EQ(bytes[2], ';');
}

TEST_F(SettingFile, AMonoCameraHasNoColor) {
    open(monoCamera());
    save();
    EXPECT_TRUE(hasSection("GammaY-2016"));
    for (const char* section : {"WhiteBalance", "HueSaturation", "ColorMatrix", "ChromaSuppression", "GammaR",
                                "GammaGR", "GammaGB", "GammaB"}) {
        EXPECT_FALSE(hasSection(std::string(section) + "-2016")) << section;
    }
    EXPECT_EQ(valueOf(u"Other-2016", u"ColorInterpolationMethod"), std::nullopt);
}

// Patterns without interpolation are mono too, and their neighbours are not.
TEST_F(SettingFile, PatternsWithoutInterpolationHaveNoColor) {
    for (const std::uint16_t pattern : {2, 12, 13, 14, 15, 16}) {
        DoubleCamera camera;
        camera.setIdentity16(10, pattern);
        open(camera);
        std::filesystem::remove(path());
        save();
        EXPECT_TRUE(hasSection("GammaY-2016")) << pattern;
        const bool colored = pattern == 2 || pattern == 16;
        EXPECT_EQ(hasSection("HueSaturation-2016"), colored) << pattern;
        EXPECT_EQ(hasSection("GammaR-2016"), colored) << pattern;
        close();
        usb.reset();
    }
}

TEST_F(SettingFile, AMonoCameraStillHasTheTail) {
    DoubleCamera camera = monoCamera();
    camera.setCapability(3, 9);
    camera.status(77) = 45;
    open(camera);
    save();
    EXPECT_EQ(valueOf(u"CameraGamma-2016", u"Raw"), u"45");
}

TEST_F(SettingFile, WhiteBalanceInTheCameraLeavesOutTheLoop) {
    DoubleCamera camera;
    camera.setCapability(1, 8);
    open(camera);
    save();
    EXPECT_NE(valueOf(u"WhiteBalance-2016", u"WBGainR"), std::nullopt);
    for (const char16_t* key : {u"AWBTargetR", u"AWBThreshold", u"AWBWeight0"}) {
        EXPECT_EQ(valueOf(u"WhiteBalance-2016", key), std::nullopt);
    }
}

TEST_F(SettingFile, FunctionOfTheGainGroupLeavesOutTheGainAlone) {
    DoubleCamera camera;
    camera.setCapability(16, 4);
    open(camera);
    save();
    EXPECT_EQ(valueOf(u"GainShutter-2016", u"CurrentGain"), std::nullopt);
    EXPECT_NE(valueOf(u"GainShutter-2016", u"CurrentDigitalGain"), std::nullopt);
    EXPECT_NE(valueOf(u"GainShutter-2016", u"AGCMaxGain"), std::nullopt);
}

TEST_F(SettingFile, NegativeNumbersAreWrittenWithTheirSign) {
    open();
    ASSERT_TRUE(Tavra_SetHueSaturationMode(handle, 1, static_cast<std::uint16_t>(-300), 100));
    ASSERT_TRUE(
        Tavra_SetGammaModeEx(handle, 0, TAVRA_GAMMA_ON, 100, static_cast<std::uint16_t>(-7), 100, nullptr));
    save();
    EXPECT_EQ(valueOf(u"HueSaturation-2016", u"Hue"), u"-300");
    EXPECT_EQ(valueOf(u"GammaY-2016", u"Brightness"), u"-7");
}

// A getter that fails must not leave half a file where a whole one was.
TEST_F(SettingFile, AGetterThatFailsLeavesTheFileAsItWas) {
    DoubleCamera camera;
    camera.setCapability(3, 7);  // the clamp, near the end of the walk
    open(camera);
    writeText(u"[mine]\na=1\n");
    const auto before = readFile(path());
    UsbDouble::Fault fault;
    fault.request = 128;
    fault.value = 21;
    usb.addFault(fault);
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 0xE0000005);
    EXPECT_EQ(readFile(path()), before);
}

TEST_F(SettingFile, HdrParametersThatCannotBeCountedAreAFailure) {
    open(hdrCamera());
    const auto countRegister = readPage(27, 0);
    UsbDouble::Fault fault;
    fault.request = countRegister.request;
    fault.value = countRegister.value;
    fault.times = UsbDouble::kForever;
    usb.addFault(fault);
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 0xE0000005);
    EXPECT_TRUE(folder.isEmpty());
}

// One reading that goes wrong on the way must not make a file without the parameters, and call that a
// success.
TEST_F(SettingFile, ACountOfHdrParametersThatFailsOnceIsAFailureToo) {
    open(hdrCamera());
    const auto countRegister = readPage(27, 0);
    UsbDouble::Fault fault;
    fault.request = countRegister.request;
    fault.value = countRegister.value;
    usb.addFault(fault);
    expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 0xE0000005);
    EXPECT_TRUE(folder.isEmpty());
    save();
    EXPECT_EQ(valueOf(u"HDR-2016", u"HDRParameter_2"), u"103");
}

TEST_F(SettingFile, ACountOfHdrParametersThatCannotBeIsCut) {
    DoubleCamera camera = hdrCamera();
    camera.pageRegister(27, 0) = 0xFFFFFFFF;
    open(camera);
    const TavraBool saved = Tavra_SaveSettingFileW(handle, name().c_str());
    EXPECT_TRUE(saved == 0 || valueOf(u"HDR-2016", u"HDRParameter_4096") == std::nullopt);
}

}  // namespace
}  // namespace tavra::test
