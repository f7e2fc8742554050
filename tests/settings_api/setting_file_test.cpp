#include "settings_api/camera_state.h"
#include "settings_api/setting_file_fixture.h"

#if !defined(_WIN32)
#include <sys/inotify.h>
#include <unistd.h>

#include "support/wait_clock_double.h"
#endif

namespace tavra::test {
namespace {

using namespace request;

using SettingFile = SettingFileTest;

DoubleCamera monoCamera() {
    DoubleCamera camera;
    camera.setIdentity16(10, 1);
    return camera;
}

DoubleCamera hdrCamera() {
    DoubleCamera camera = pageCamera();
    camera.setCapabilityWord(18, 3);
    camera.pageRegister(27, 0) = 16;
    for (std::uint32_t i = 1; i < 4; ++i) camera.pageRegister(27, 4 * i) = 100 + i;
    return camera;
}

template <typename Number>
Number get(TavraHandle handle, TavraBool (*getter)(TavraHandle, Number*)) {
    Number value = 0;
    EXPECT_TRUE(getter(handle, &value));
    return value;
}

std::uint8_t sharpnessModeOf(TavraHandle handle) {
    std::uint8_t mode = 0, coring = 0;
    std::uint16_t gain = 0;
    EXPECT_TRUE(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    return mode;
}

// --- what is saved ---

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

TEST_F(SettingFile, RegionsAreNumberedFromTheSecondOn) {
    DoubleCamera camera;
    camera.offerRegions(3);
    open(camera);
    save();
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"RegionMode"), u"1");
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"Width"), u"640");
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"RegionMode_1"), u"0");
    EXPECT_NE(valueOf(u"ImageSize-2016", u"Height_2"), std::nullopt);
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"Height_3"), std::nullopt);
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

#if !defined(_WIN32)
// What happens to the files of a folder, as letters: o, an opening of the setting file; c, a file that is
// made; w, one that was written; m, one that takes its name.
class FolderWatch {
  public:
    explicit FolderWatch(const std::filesystem::path& folder) : queue_(::inotify_init1(IN_NONBLOCK)) {
        ::inotify_add_watch(queue_, folder.c_str(), IN_OPEN | IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO);
    }
    ~FolderWatch() { ::close(queue_); }
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    // Since the last look.
    std::string events() const {
        std::string letters;
        alignas(inotify_event) char buffer[4096];
        for (ssize_t got = 0; (got = ::read(queue_, buffer, sizeof buffer)) > 0;) {
            for (const char* at = buffer; at < buffer + got;) {
                const auto* const event = reinterpret_cast<const inotify_event*>(at);
                at += sizeof(inotify_event) + event->len;
                const bool isSettings = event->len > 0 && std::string_view(event->name) == "settings.ini";
                if ((event->mask & IN_OPEN) != 0 && isSettings) letters += 'o';
                if ((event->mask & IN_CREATE) != 0) letters += 'c';
                if ((event->mask & IN_CLOSE_WRITE) != 0) letters += 'w';
                if ((event->mask & IN_MOVED_TO) != 0 && isSettings) letters += 'm';
            }
        }
        return letters;
    }

  private:
    int queue_;
};

// A file on a slow share has more than a thousand keys.
TEST_F(SettingFile, ACallReadsTheFileOnceAndWritesItOnce) {
    open();
    const FolderWatch watch(folder.path());
    save();
    EXPECT_EQ(watch.events(), "cwm") << "there was nothing to read";
    save();
    EXPECT_EQ(watch.events(), "ocwm");
    load();
    EXPECT_EQ(watch.events(), "o");
}

// Another process that is saving to the file is waited for, and only when the camera has been read.
TEST_F(SettingFile, AFileThatSomebodyElseIsSavingIsWaitedForBehindTheCamera) {
    DoubleCamera camera;
    camera.setCapability(3, 7);  // the clamp, near the end of the walk
    open(camera);
    WaitClockDouble clock;
    {
        const platform::FileUpdateLock other(name());
        expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 170);
        EXPECT_EQ(clock.waited(), 5000);
        EXPECT_TRUE(folder.isEmpty());
        UsbDouble::Fault fault;
        fault.request = 128;
        fault.value = 21;
        fault.times = UsbDouble::kForever;
        usb.addFault(fault);
        EXPECT_EQ(Tavra_SaveSettingFileW(handle, name().c_str()), 0);
        EXPECT_EQ(clock.waited(), 0) << "the camera had failed by then";
    }
    record().lastError = 0;
    usb.clearFaults();
    save();
}
#endif

// --- what is loaded ---

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

// Capability word 3 bit 13, or function 131, which is word 8 bit 3.
TEST_F(SettingFile, ABinningSumIsKeptWhicheverWayTheCameraTellsOfIt) {
    for (const auto& [word, bit] : {std::pair{3u, 13u}, {8u, 3u}, {8u, 4u}}) {
        const bool has = word == 3 || bit == 3;
        DoubleCamera camera;
        camera.setCapability(word, bit);
        camera.status(46) = 3;
        open(camera);
        std::filesystem::remove(path());
        save();
        const auto saved = valueOf(u"ImageSize-2016", u"BinningSumMode");
        if (has) {
            EXPECT_EQ(saved, u"3") << word;
        } else {
            EXPECT_EQ(saved, std::nullopt);
        }
        load(u"[ImageSize-2016]\nBinningSumMode=2\n");
        EXPECT_EQ(usb.camera().status(46), has ? 2 : 3) << word << ", " << bit;
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

TEST_F(SettingFile, TheImageSizeIsSetTwiceOver) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);
    camera.offerRegions(2);
    open(camera);
    load(u"[ImageSize-2016]\nWidth=320\nRegionMode_1=1\nWidth_1=64\nHeight_1=32\nVBinning=1\n");
    std::size_t records = 0, factors = 0;
    for (const ControlTransfer& sent : traffic()) {
        if (sent.request == 18 && (sent.requestType & 0x80) == 0) ++records;
        if (sent.request == 128 && sent.value == 33 && (sent.requestType & 0x80) == 0) ++factors;
    }
    // Size and region the first time; the region has landed by the second.
    EXPECT_EQ(records, 3u);
    EXPECT_EQ(factors, 2u);
    std::uint32_t enabled = 0, x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetROI(handle, 1, &enabled, &x, &y, &width, &height));
    EXPECT_EQ(enabled, 1u);
    EXPECT_EQ(width, 64u);
    EXPECT_EQ(height, 32u);
}

// Size, regions, factors, sum; and over again.
TEST_F(SettingFile, TheImageSizeIsSetStepByStep) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);
    camera.setCapability(3, 13);
    camera.offerRegions(2);
    open(camera);
    ASSERT_TRUE(Tavra_SetBinningSumMode(handle, 1));
    const Traffic sum = traffic();
    load(
        u"[ImageSize-2016]\nWidth=320\nRegionMode_1=1\nWidth_1=64\nHeight_1=32\nVBinning=1\nBinningSumMode="
        u"2\n");
    std::string steps;
    for (const ControlTransfer& sent : traffic()) {
        if ((sent.requestType & 0x80) != 0) continue;
        if (sent.request == 18) steps += 'S';
        if (sent.request == 128 && sent.value == 33) steps += 'F';
        if (sent.request == sum[0].request && sent.value == sum[0].value) steps += 'B';
    }
    // The region has landed by the second time.
    EXPECT_EQ(steps, "SSFBSFB");
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

// --- mode ---

TEST_F(SettingFile, TheModeIsKeptAsItIsSet) {
    open();
    EXPECT_EQ(get(handle, Tavra_GetSettingFileMode), 0u);
    for (const std::uint32_t mode : {0xFFFF0000u, 0x10000u, 5u, 0u}) {
        expectSuccess(Tavra_SetSettingFileMode(handle, mode));
        EXPECT_EQ(get(handle, Tavra_GetSettingFileMode), mode);
    }
    expectFailure(Tavra_GetSettingFileMode(handle, nullptr), 87);
}

TEST_F(SettingFile, WithoutGeometryNeitherSizesNorRotationAreTouched) {
    open();
    writeText(u"[ImageSize-2016]\nWidth=320\n[Other-2016]\nRotationMode=1\nMirrorMode=1\n");
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    traffic();
    load();
    for (const ControlTransfer& sent : traffic()) {
        EXPECT_FALSE(sent.request == 18 && (sent.requestType & 0x80) == 0) << "an image size was sent";
    }
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 0);
    EXPECT_EQ(get(handle, Tavra_GetMirrorMode), 1);
    std::filesystem::remove(path());
    save();
    EXPECT_FALSE(hasSection("ImageSize-2016"));
    EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode"), std::nullopt);
}

// The sections and keys by name; other modes with the same bits have them.
TEST_F(SettingFile, WithoutGeometryNothingOfThePreviewsShapeIsTouched) {
    open();
    const std::u16string text =
        u"[PreviewMaskSize-2016]\nWidth=30\nHeight=20\n[PreviewDestSize-2016]\nWidth=50\nOffsetX=-7\n"
        u"[Other-2016]\nMagnificationMode=11\nAspectMode=3\n";
    const auto shape = [&] {
        const CameraState now = stateOf(handle);
        std::vector<std::uint32_t> values = now.at("preview mask");
        for (const char* const what : {"preview destination", "magnification, aspect"}) {
            values.insert(values.end(), now.at(what).begin(), now.at(what).end());
        }
        return values;
    };
    const std::vector<std::uint32_t> before = shape();
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    load(text);
    EXPECT_EQ(shape(), before);
    std::filesystem::remove(path());
    save();
    for (const char* const section :
         {"ImageSize", "PreviewMaskSize", "PreviewDestSize", "PreviewWindowSize"}) {
        EXPECT_FALSE(hasSection(std::string(section) + "-2016")) << section;
    }
    for (const char16_t* const key : {u"MagnificationMode", u"AspectMode", u"RotationMode"}) {
        EXPECT_EQ(valueOf(u"Other-2016", key), std::nullopt);
    }
    EXPECT_NE(valueOf(u"Other-2016", u"DisplayMode"), std::nullopt);
    for (const std::uint32_t mode : {0xFFFF0001u, 0xFFFFFFFFu, 0xFFFE0000u}) {
        ASSERT_TRUE(Tavra_SetSettingFileMode(handle, mode));
        std::filesystem::remove(path());
        save();
        for (const char* const section : {"ImageSize", "PreviewMaskSize", "PreviewDestSize"}) {
            EXPECT_TRUE(hasSection(std::string(section) + "-2016")) << section << std::hex << mode;
        }
        EXPECT_NE(valueOf(u"Other-2016", u"AspectMode"), std::nullopt) << mode;
        EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode").has_value(), mode == 0xFFFE0000u) << mode;
    }
    load(text);
    EXPECT_EQ(shape(),
              (std::vector<std::uint32_t>{before[0], before[1], 30, 20, static_cast<std::uint32_t>(-7),
                                          before[5], 50, before[7], 11, 3}));
}

TEST_F(SettingFile, OtherModesWithBit16LeaveOutTheRotationAlone) {
    open();
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0x30001));
    ASSERT_TRUE(Tavra_SetRotationMode(handle, 2));
    load(u"[ImageSize-2016]\nWidth=320\n[Other-2016]\nRotationMode=1\n");
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 2);
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height));
    EXPECT_EQ(width, 320u);
    save();
    EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode"), u"1") << "as it stood in the file";
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0x20000));
    load();
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 1) << "other bits act as 0";
}

// --- when and where ---

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
