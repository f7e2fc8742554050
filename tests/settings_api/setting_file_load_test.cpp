// What a camera has of a setting file that was loaded, and what it keeps.
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using SettingFile = SettingFileTest;

TEST_F(SettingFile, AMissingFileOrAnotherModelsSetsThePresentValues) {
    open();
    ASSERT_TRUE(Tavra_SetGain(handle, 55));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 7, 3));
    load();
    EXPECT_FALSE(std::filesystem::exists(path())) << "loading makes no file";
    load(u"[GainShutter-2017]\nCurrentGain=99\n[GainShutter-2016-0001]\nCurrentGain=98\n");
    EXPECT_EQ(get(handle, Tavra_GetGain), 55);
    EXPECT_EQ(sharpnessModeOf(handle), 1);
    ASSERT_TRUE(Tavra_LoadSettingFileW(handle, wideName(folder / "no" / "such.ini").c_str()));
}

// By design: unlike all others.
TEST_F(SettingFile, WithoutADisplayModeItIsZero) {
    open();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    ASSERT_TRUE(Tavra_SetMirrorMode(handle, 2));
    load(u"[Other-2016]\nDisplayMode=5\n");
    EXPECT_EQ(get(handle, Tavra_GetDisplayMode), 5);
    load(u"[Other-2016]\nMovieMode=1\n");
    EXPECT_EQ(get(handle, Tavra_GetDisplayMode), 0);
    EXPECT_EQ(get(handle, Tavra_GetMirrorMode), 2);
}

// The present values are asked for first. Nothing of a group is set without them, nor of those behind it.
TEST_F(SettingFile, AGetterThatFailsEndsTheLoad) {
    DoubleCamera camera = hdrCamera();
    camera.setCapability(3, 7);  // the clamp, ahead of the HDR parameters
    open(camera);
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 60, 5));
    writeText(u"[Sharpness-2016]\nSharpnessMode=0\n[HDR-2016]\nHDRParameter_0=7\n");
    UsbDouble::Fault fault;
    fault.request = 128;
    fault.value = 21;
    usb.addFault(fault);
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 0xE0000005);
    EXPECT_EQ(sharpnessModeOf(handle), 0) << "ahead of it";
    EXPECT_EQ(usb.camera().pageRegister(27, 4), 101u) << "behind it";
    record().lastError = 0;
    load();
    EXPECT_EQ(usb.camera().pageRegister(27, 4), 7u) << "were it not for the failure";
}

TEST_F(SettingFile, ATextThatIsNoNumberKeepsThePresentValue) {
    open();
    ASSERT_TRUE(Tavra_SetGain(handle, 55));
    for (const char16_t* text : {u"12abc", u"-1", u"2147483648", u"0x10"}) {
        load(u"[GainShutter-2016]\nCurrentGain=" + std::u16string(text) + u"\n");
        EXPECT_EQ(get(handle, Tavra_GetGain), 55);
    }
    load(u"[GainShutter-2016]\nCurrentGain\n");
    EXPECT_EQ(get(handle, Tavra_GetGain), 55);
    load(u"[GainShutter-2016]\nCurrentGain=\n");
    EXPECT_EQ(get(handle, Tavra_GetGain), 0) << "an empty text is 0";
}

TEST_F(SettingFile, FieldsOfEightBitsWrap) {
    open();
    load(u"[Sharpness-2016]\nSharpnessMode=257\nSharpnessGain=300\nSharpnessCoring=300\n");
    std::uint8_t mode = 0, coring = 0;
    std::uint16_t gain = 0;
    ASSERT_TRUE(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(gain, 300);
    EXPECT_EQ(coring, 44);
}

TEST_F(SettingFile, TheTailTakesTheDigitsThatAreThere) {
    DoubleCamera camera;
    camera.setCapability(3, 7);
    open(camera);
    load(u"[Clamp-2016]\nDigitalClamp=12abc\n");
    EXPECT_EQ(usb.camera().status(21), 12);
    load(u"[Clamp-2016]\nDigitalClamp=abc\n");
    EXPECT_EQ(usb.camera().status(21), 0);
}

TEST_F(SettingFile, TheExposureClockMakesTheLinesIrrelevant) {
    open();
    const std::u16string lines = u"[GainShutter-2016]\nCurrentShutterLine=9\nCurrentShutterClock=0\n";
    load(lines + u"ExposureClock=3900\n");
    EXPECT_EQ(get(handle, Tavra_GetExposureClock), 3900u);
    load(lines);
    EXPECT_EQ(get(handle, Tavra_GetExposureClock), 9u * 780);
    load(lines + u"ExposureClock=4294967295\n");
    EXPECT_EQ(get(handle, Tavra_GetExposureClock), 9u * 780);
    ASSERT_TRUE(Tavra_SetShutterSpeed(handle, 4, 0));
    load(lines + u"ExposureClock=x\n");
    EXPECT_EQ(get(handle, Tavra_GetExposureClock), 9u * 780);
}

TEST_F(SettingFile, LinesThatArePresentAreNotSentAgain) {
    open();
    ASSERT_TRUE(Tavra_SetShutterSpeed(handle, 9, 0));
    const auto writesOf = [&](std::u16string_view text) {
        traffic();
        load(text);
        const Traffic sent = traffic();
        return std::ranges::count_if(sent, [](const ControlTransfer& t) {
            return t.request == 33 && (t.requestType & 0x80) == 0 && t.data.size() == 64 && t.data[2] == 9;
        });
    };
    // The gain, which follows, writes the same block once in either case.
    const auto without = writesOf(u"");
    EXPECT_EQ(writesOf(u"[GainShutter-2016]\nCurrentShutterLine=9\nCurrentShutterClock=0\n"), without);
    ASSERT_TRUE(Tavra_SetShutterSpeed(handle, 9, 1));
    EXPECT_GT(writesOf(u"[GainShutter-2016]\nCurrentShutterLine=9\nCurrentShutterClock=0\n"), without);
}

// Of cameras with this function the file has no gain; one that stands there all the same is another's.
TEST_F(SettingFile, TheGainOfAFileIsNothingToCamerasWithTheFunctionOfTheGainGroup) {
    for (const bool has : {false, true}) {
        DoubleCamera camera;
        camera.setCapability(16, 4, has);  // function 0x90004
        open(camera);
        ASSERT_TRUE(Tavra_SetGain(handle, 33));
        load(u"[GainShutter-2016]\nCurrentGain=44\nCurrentDigitalGain=70\nAGCMinGain=25\nAGCMaxGain=60\n");
        EXPECT_EQ(get(handle, Tavra_GetGain), has ? 33 : 44);
        EXPECT_EQ(get(handle, Tavra_GetDigitalGain), 70) << "its neighbours count";
        std::uint16_t least = 0, most = 0;
        ASSERT_TRUE(Tavra_GetGainControlRange(handle, &least, &most));
        EXPECT_EQ(least, 25);
        EXPECT_EQ(most, 60);
        close();
        usb.reset();
    }
}

TEST_F(SettingFile, TheBlankingIsAlsoFoundBehindABracket) {
    DoubleCamera camera;
    camera.setCapability(1, 5);
    camera.status(23) = 3;
    open(camera);
    load(u"[Clock-2016]\nClock=1\n[[Clock-2016]\nVBlankForFPS=17\n");
    EXPECT_EQ(usb.camera().status(23), 17);
    load(u"[Clock-2016]\nVBlankForFPS=21\n[[Clock-2016]\nVBlankForFPS=17\n");
    EXPECT_EQ(usb.camera().status(23), 21) << "a value that is new in its own section counts";
    load(u"[Clock-2016]\nVBlankForFPS=21\n[[Clock-2016]\nVBlankForFPS=17\n");
    EXPECT_EQ(usb.camera().status(23), 17) << "the present one does not";
}

TEST_F(SettingFile, HdrParametersComeAndGoOneByOne) {
    open(hdrCamera());
    save();
    EXPECT_EQ(valueOf(u"HDR-2016", u"HDRParameter_0"), u"101");
    EXPECT_EQ(valueOf(u"HDR-2016", u"HDRParameter_2"), u"103");
    EXPECT_EQ(valueOf(u"HDR-2016", u"HDRParameter_3"), std::nullopt);
    load(u"[HDR-2016]\nHDRParameter_1=4294967295\n");
    EXPECT_EQ(usb.camera().pageRegister(27, 8), 0xFFFFFFFFu);
    EXPECT_EQ(usb.camera().pageRegister(27, 4), 101u);
}

TEST_F(SettingFile, ASetterThatRefusesEndsTheLoadThere) {
    open();
    // 7 is no mode of automatic exposure; mirror and sharpness come behind it, the clock ahead of it.
    writeText(u"[GainShutter-2016]\nALCMode=7\n[Sharpness-2016]\nSharpnessMode=1\n");
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 87);
    EXPECT_EQ(sharpnessModeOf(handle), 0);
    writeText(u"[GainShutter-2016]\nBrightnessTarget=77\n[HueSaturation-2016]\nHueSaturationMode=9\n");
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 87);
    std::uint8_t target = 0, tolerance = 0, threshold = 0;
    ASSERT_TRUE(Tavra_GetTargetBrightness(handle, &target, &tolerance, &threshold));
    EXPECT_EQ(target, 77) << "what was set before stays";
}

TEST_F(SettingFile, AnyGarbageIsNoSetting) {
    open();
    save();
    const auto good = readFile(path());
    ASSERT_TRUE(Tavra_SetGain(handle, 55));
    const std::u16string lone = u"[GainShutter-2016]\nCurrentGain=" + std::u16string(1, 0xD800) + u"\n";
    for (const std::u16string& text :
         {lone, std::u16string(u"[GainShutter-2016\nCurrentGain=9\n"),
          std::u16string(u"GainShutter-2016\nCurrentGain=9"), std::u16string(999, u'[')}) {
        load(text);
        EXPECT_EQ(get(handle, Tavra_GetGain), 55);
    }
    load(u"[GainShutter-2016]\nX=1\n[GainShutter-2016]\nCurrentGain=9\n");
    EXPECT_EQ(get(handle, Tavra_GetGain), 55) << "the first section of a name counts";
    // Half of a file, cut in the middle of a unit, is half of the settings.
    ASSERT_TRUE(platform::replaceWholeFile(name(), std::span(good).first(good.size() / 2 | 1)).ok());
    load();
}

}  // namespace
}  // namespace tavra::test
