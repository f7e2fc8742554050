// What a load asks of a camera that controls its exposure by itself: there each getter of shutter and gain
// reads the camera, and can fail.
#include <algorithm>

#include "settings/reg_key.h"
#include "settings_api/setting_file_fixture.h"
#include "support/user_tree.h"

namespace tavra::test {
namespace {

constexpr const char16_t* kDayPath = uR"(SOFTWARE\Halvern\BrinscopePreference\2016\day)";
constexpr std::uint16_t kWriteAlcMode = 0x8049;
constexpr std::uint8_t kCameraShutter = 0x10;  // mode of automatic exposure: the camera's own, of the shutter

class SettingRequests : public SettingFileTest {
  protected:
    static DoubleCamera controllingCamera() {
        DoubleCamera camera;
        camera.setCapability(1, 9);
        camera.setCapability(1, 10);
        camera.status(74) = 128;
        return camera;
    }
    static bool isRead(const ControlTransfer& sent) { return (sent.requestType & 0x80) != 0; }
    // Readings (r) and writings (w) of the block of shutter and gain, from the mode of automatic exposure on.
    // The setting of the mode ends with a reading, which is the first of them.
    std::string exposureTraffic() {
        const Traffic all = traffic();
        const auto begin = std::ranges::find_if(all, [](const ControlTransfer& sent) {
            return sent.request == 128 && sent.value == kWriteAlcMode && !isRead(sent);
        });
        std::string letters;
        readingsAhead_ = std::count_if(all.begin(), begin, [](const ControlTransfer& sent) {
            return sent.request == 33 && isRead(sent);
        });
        for (auto sent = begin; sent != all.end(); ++sent) {
            if (sent->request == 33) letters += isRead(*sent) ? 'r' : 'w';
        }
        return letters;
    }
    // The reading that the mode ends with is good, those behind it fail, in a load like the one before.
    void failReadings() {
        UsbDouble::Fault fault;
        fault.request = 33;
        fault.requestType = toHost(33, 0, 0, 64).requestType;
        fault.skip = static_cast<std::uint32_t>(readingsAhead_) + 1;
        fault.times = UsbDouble::kForever;
        usb.addFault(fault);
    }
    std::uint8_t targetBrightness() {
        std::uint8_t target = 0, tolerance = 0, threshold = 0;
        EXPECT_TRUE(Tavra_GetTargetBrightness(handle, &target, &tolerance, &threshold));
        return target;
    }

    const UserTree tree_;

  private:
    std::ptrdiff_t readingsAhead_ = 0;
};

// An exposure clock says all; without it the lines are compared with what the camera has.
TEST_F(SettingRequests, AFileAsksForTheShutterOnlyWhereItHasNoExposureClock) {
    open(controllingCamera());
    const std::u16string text = u"[GainShutter-2016]\nALCMode=16\n";
    const std::u16string lines = u"CurrentShutterLine=9\nCurrentShutterClock=0\n";
    const std::string gain = "rw";  // it is asked for, and set
    load(text + lines + u"ExposureClock=3900\n");
    EXPECT_EQ(exposureTraffic(), "r" + gain + "w");
    load(text + lines);
    EXPECT_EQ(exposureTraffic(), "r" + gain + "rw");
    load(text);
    EXPECT_EQ(exposureTraffic(), "r" + gain + "r");
    load(text + u"CurrentShutterLine=12abc\nCurrentShutterClock=65536000000\n");
    EXPECT_EQ(exposureTraffic(), "r" + gain + "r") << "no numbers, so nothing to set";
}

TEST_F(SettingRequests, AShutterThatCannotBeReadFailsALoadThatNeedsIt) {
    DoubleCamera camera = controllingCamera();
    camera.setCapability(16, 4);  // no gain in the file
    open(camera);
    const std::u16string mode = u"[GainShutter-2016]\nALCMode=16\nAGCMaxGain=60\n";
    writeText(mode + u"ExposureClock=3900\n");
    load();
    traffic();
    load();
    EXPECT_EQ(exposureTraffic(), "rw");
    failReadings();
    load();
    usb.clearFaults();
    writeText(mode);
    failReadings();
    expectFailure(Tavra_LoadSettingFileW(handle, name().c_str()), 0xE0000005);
}

// A named setting that is complete says all of its groups.
TEST_F(SettingRequests, ANamedSettingAsksOnlyForWhatIsMissingInIt) {
    open(controllingCamera());
    ASSERT_TRUE(Tavra_SetALCMode(handle, kCameraShutter));
    ASSERT_TRUE(Tavra_SetTargetBrightness(handle, 77, 5, 5));
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    traffic();
    expectSuccess(Tavra_LoadSettingRegW(handle, u"day"));
    EXPECT_EQ(exposureTraffic(), "rww") << "shutter and gain";
    CwRegKey key(kDayPath, CwRegKey::Access::All, false);
    ASSERT_EQ(key.DeleteValue(u"Gain"), 0u);
    ASSERT_EQ(key.Close(), 0u);
    expectSuccess(Tavra_LoadSettingRegW(handle, u"day"));
    EXPECT_EQ(exposureTraffic(), "rwrw");
    ASSERT_TRUE(Tavra_SetTargetBrightness(handle, 88, 5, 5));
    failReadings();
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 0xE0000005);
    EXPECT_EQ(exposureTraffic(), "rwr") << "what is ahead of it is set";
    EXPECT_EQ(targetBrightness(), 88) << "what is behind it is not";
}

}  // namespace
}  // namespace tavra::test
