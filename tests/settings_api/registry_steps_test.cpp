// Named settings step by step: the order of the values, mono cameras, and what a recording holds still.
#include <set>

#include "api/setting_camera.h"
#include "camera_api/camera_fixture.h"
#include "settings/reg_key.h"
#include "settings/registry_setting.h"
#include "settings/walk_access.h"
#include "settings_api/camera_state.h"
#include "settings_api/setting_camera_wrapper.h"
#include "support/user_tree.h"

namespace tavra::test {
namespace {

using Access = CwRegKey::Access;

constexpr const char16_t* kDayPath = uR"(SOFTWARE\Halvern\BrinscopePreference\2016\day)";

class RegistrySteps : public CameraTest {
  protected:
    const UserTree tree_;
};

#if !defined(_WIN32)
// The text form of a setting is in this order, so that two of them can be compared line by line. The registry
// of Windows has an order of its own.
TEST_F(RegistrySteps, ValuesAreStoredInTheirOrder) {
    open();
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    std::vector<std::u16string> names;
    CwRegKey key(kDayPath, Access::Read, false);
    platform::TreeValue value;
    for (std::uint32_t i = 0; key.EnumValue(i, value) == 0; ++i) names.push_back(value.name);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"SDK Version",
                                                  u"Clock Mode",
                                                  u"Scan Mode",
                                                  u"ALC Mode",
                                                  u"Shutter Line",
                                                  u"Shutter Clock",
                                                  u"Gain",
                                                  u"Brightness Target",
                                                  u"Brightness Tolerance",
                                                  u"Brightness Threshold",
                                                  u"Range Weight",
                                                  u"Gain Min",
                                                  u"Gain Max",
                                                  u"Clock Min",
                                                  u"Clock Max",
                                                  u"Line Min",
                                                  u"Line Max",
                                                  u"White Balance Mode",
                                                  u"White Balance Gain R",
                                                  u"White Balance Gain Gr",
                                                  u"White Balance Gain Gb",
                                                  u"White Balance Gain B",
                                                  u"White Balance Target R",
                                                  u"White Balance Target B",
                                                  u"Hue/Saturation Mode",
                                                  u"Hue",
                                                  u"Saturation",
                                                  u"Color Matrix Mode",
                                                  u"Color Matrix",
                                                  u"Gamma Target Y Mode",
                                                  u"Gamma Target Y Value",
                                                  u"Gamma Target Y Table",
                                                  u"Gamma Target R Mode",
                                                  u"Gamma Target R Value",
                                                  u"Gamma Target R Table",
                                                  u"Gamma Target Gr Mode",
                                                  u"Gamma Target Gr Value",
                                                  u"Gamma Target Gr Table",
                                                  u"Gamma Target Gb Mode",
                                                  u"Gamma Target Gb Value",
                                                  u"Gamma Target Gb Table",
                                                  u"Gamma Target B Mode",
                                                  u"Gamma Target B Value",
                                                  u"Gamma Target B Table",
                                                  u"Sharpness Mode",
                                                  u"Sharpness Gain",
                                                  u"Sharpness Coring",
                                                  u"Interpolation Mode",
                                                  u"Mirror Mode",
                                                  u"Rotation Mode"}));
}
#endif

TEST_F(RegistrySteps, TheVersionIsThatOfTheLibrary) {
    open();
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    std::array<std::uint32_t, 4> version{};
    ASSERT_TRUE(Tavra_GetCAMDllVersion(&version[0], &version[1], &version[2], &version[3]));
    std::array<std::uint8_t, 16> bytes{};
    ASSERT_EQ(CwRegKey(kDayPath, Access::Read, false).ReadBinary(u"SDK Version", bytes.data(), 16), 0u);
    for (std::size_t i = 0; i < 16; ++i) {
        EXPECT_EQ(bytes[i], version[i / 4] >> 8 * (i % 4) & 255) << i;
    }
}

// Numbers of the camera's state that a step of a load sets.
struct Landing {
    const char* step;
    const char* state;
    std::size_t first, count;

    std::vector<std::uint32_t> in(const CameraState& all) const {
        const auto from = all.at(state).begin() + static_cast<std::ptrdiff_t>(first);
        return {from, from + static_cast<std::ptrdiff_t>(count)};
    }
};
constexpr Landing kLandings[] = {{"clock", "clock", 0, 1},
                                 {"scan", "image size", 0, 1},
                                 {"control", "alc mode", 0, 1},
                                 {"shutter", "shutter", 0, 2},
                                 {"gain", "gains", 1, 1},
                                 {"target", "target brightness", 0, 3},
                                 {"weights", "alc weights", 0, 16},
                                 {"gain range", "gain range", 0, 2},
                                 {"shutter range", "shutter range", 0, 4},
                                 {"white balance", "white balance", 0, 1},
                                 {"white gains", "white balance", 1, 4},
                                 {"white targets", "white balance target", 0, 2},
                                 {"hue", "hue and saturation", 0, 3},
                                 {"matrix", "matrix", 0, 13},
                                 {"curve Y", "gamma 0", 0, 4},
                                 {"curve R", "gamma 1", 0, 4},
                                 {"curve Gr", "gamma 2", 0, 4},
                                 {"curve Gb", "gamma 3", 0, 4},
                                 {"curve B", "gamma 4", 0, 4},
                                 {"sharpness", "sharpness", 0, 3},
                                 {"interpolation", "mirror, rotation, interpolation", 2, 1},
                                 {"mirror", "mirror, rotation, interpolation", 0, 1},
                                 {"rotation", "mirror, rotation, interpolation", 1, 1}};

// All that a named setting keeps, otherwise with each `by`, so that every step is seen when it lands.
void setEach(TavraHandle camera, std::uint8_t by) {
    const auto word = [by](int value) { return static_cast<std::uint16_t>(value + by); };
    const auto byte = [by](int value) { return static_cast<std::uint8_t>(value + by); };
    std::uint16_t scan = 0;
    std::uint32_t clockMode = 0, clock = 0, x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetClock(camera, &clockMode, &clock));
    ASSERT_TRUE(Tavra_SetClock(camera, by == 0 ? 1 : 4, 30000000));
    ASSERT_TRUE(Tavra_GetImageSize(camera, 0, &scan, &x, &y, &width, &height));
    ASSERT_TRUE(Tavra_SetImageSize(camera, 0, by == 0 ? 1 : 4, x, y, width, height));
    ASSERT_TRUE(Tavra_SetALCMode(camera, byte(1)));
    ASSERT_TRUE(Tavra_SetShutterSpeed(camera, word(9), 0));
    ASSERT_TRUE(Tavra_SetGain(camera, word(33)));
    ASSERT_TRUE(Tavra_SetTargetBrightness(camera, byte(90), byte(7), byte(9)));
    std::array<std::uint8_t, 16> weights{};
    weights.fill(byte(3));
    ASSERT_TRUE(Tavra_SetALCWeight(camera, weights.data()));
    ASSERT_TRUE(Tavra_SetGainControlRange(camera, word(21), word(60)));
    ASSERT_TRUE(Tavra_SetShutterControlRange(camera, word(2), 0, word(50), 1));
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(camera, byte(1)));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(camera, word(130), word(131), word(132), word(133)));
    ASSERT_TRUE(Tavra_SetWhiteBalanceTarget(camera, word(90), word(91)));
    ASSERT_TRUE(Tavra_SetHueSaturationMode(camera, 1, word(30), word(120)));
    std::array<std::int16_t, 12> matrix{};
    matrix.fill(static_cast<std::int16_t>(7 + by));
    ASSERT_TRUE(Tavra_SetColorMatrix(camera, TAVRA_COLOR_MATRIX_ON, matrix.data()));
    for (std::uint8_t i = 0; i < 5; ++i) {
        ASSERT_TRUE(Tavra_SetGammaModeEx(camera, i, TAVRA_GAMMA_ON, word(150), 0, 0, nullptr));
    }
    ASSERT_TRUE(Tavra_SetSharpnessMode(camera, 1, word(60), byte(5)));
    ASSERT_TRUE(Tavra_SetColorInterpolationMethod(camera, byte(1)));
    ASSERT_TRUE(Tavra_SetMirrorMode(camera, byte(1)));
    ASSERT_TRUE(Tavra_SetRotationMode(camera, byte(1)));
}

// Looked at each time that the load turns to the camera: every step does so at least once.
TEST_F(RegistrySteps, AreLoadedInTheirOrder) {
    DoubleCamera description;
    description.setIdentity32(40, 5);  // modes of the clock that it offers
    open(description);
    setEach(handle, 0);
    const CameraState wanted = stateOf(handle);
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    setEach(handle, 1);
    const CameraState before = stateOf(handle);
    std::vector<std::string> expected;
    for (const Landing& landing : kLandings) {
        ASSERT_NE(landing.in(before), landing.in(wanted)) << landing.step;
        expected.emplace_back(landing.step);
    }

    std::set<const char*> seen;
    std::vector<std::string> landed;  // at each look, all that is new
    const auto look = [&] {
        const CameraState now = stateOf(handle);
        std::string fresh;
        for (const Landing& landing : kLandings) {
            if (landing.in(now) != landing.in(wanted) || !seen.insert(landing.step).second) continue;
            fresh += (fresh.empty() ? "" : " and ") + std::string(landing.step);
        }
        if (!fresh.empty()) landed.push_back(fresh);
    };
    SettingCameraWrapper camera(record(), look);
    EXPECT_TRUE(loadRegistrySetting(camera, u"day")) << lastError();
    look();
    EXPECT_EQ(landed, expected);
}

// Mono cameras are not told apart: colour is set as far as the camera takes it.
TEST_F(RegistrySteps, AMonoCameraThatTakesColorIsLoadedWhole) {
    DoubleCamera camera;
    camera.setIdentity16(10, 1);
    open(camera);
    ASSERT_TRUE(Tavra_SetGain(handle, 33));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 60, 5));
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    ASSERT_TRUE(Tavra_SetGain(handle, 34));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 0, 0, 0));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 1, 2, 3, 4));
    expectSuccess(Tavra_LoadSettingRegW(handle, u"day"));
    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("gains")[1], 33u);
    EXPECT_EQ(now.at("white balance")[1], 128u);
    EXPECT_EQ(now.at("sharpness"), (std::vector<std::uint32_t>{1, 60, 5}));
}

TEST_F(RegistrySteps, AMonoCamerasLoadEndsAtTheFirstColorSettingThatItRefuses) {
    DoubleCamera camera;
    camera.setIdentity16(10, 1);
    camera.setCapability(1, 8);  // white balance in the camera
    open(camera);
    ASSERT_TRUE(Tavra_SetGain(handle, 33));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 60, 5));
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    ASSERT_TRUE(Tavra_SetGain(handle, 34));
    ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 0, 0, 0));
    traffic();
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, 0));
    const Traffic mode = traffic();
    ASSERT_FALSE(mode.empty());
    UsbDouble::Fault refusal;
    refusal.request = mode[0].request;
    refusal.requestType = mode[0].requestType;
    refusal.value = mode[0].value;
    refusal.times = UsbDouble::kForever;
    usb.addFault(refusal);
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 0xE0000005);
    usb.clearFaults();
    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("gains")[1], 33u) << "ahead of it";
    EXPECT_EQ(now.at("sharpness"), (std::vector<std::uint32_t>{0, 0, 0})) << "behind it";
}

// The rotation of a setting goes past the public setter. It is held still all the same.
TEST_F(RegistrySteps, ARecordingHoldsClockAndRotationStill) {
    open();
    expectSuccess(Tavra_SaveSettingRegW(handle, u"day"));
    ASSERT_TRUE(Tavra_SetRotationMode(handle, 2));
    alignas(std::max_align_t) std::byte recorder[64];  // asked for nothing but whether it is there
    record().recording.put(reinterpret_cast<movie::ISaveAVIFile*>(recorder));
    expectFailure(Tavra_LoadSettingRegW(handle, u"day"), 0xE0000008);
    api::SettingCamera camera(record());
    const std::uint32_t none = 0;
    expectFailure(access::kRotation.set(camera, std::span(&none, 1)) ? 1 : 0, 0xE0000008);
    std::uint8_t rotation = 0;
    ASSERT_TRUE(Tavra_GetRotationMode(handle, &rotation));
    EXPECT_EQ(rotation, 2);
    record().recording.put(nullptr);
    expectSuccess(Tavra_LoadSettingRegW(handle, u"day"));
    ASSERT_TRUE(Tavra_GetRotationMode(handle, &rotation));
    EXPECT_EQ(rotation, 0);
}

}  // namespace
}  // namespace tavra::test
