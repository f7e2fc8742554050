// Tavra_ResetSetting: what a camera has afterwards.
#include "settings_api/camera_state.h"
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using ResetSetting = CameraTest;

// A camera with everything that a reset reaches.
DoubleCamera richCamera() {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);  // skipping and binning
    camera.setCapability(3, 13);       // binning sum
    camera.setCapability(3, 9);        // gamma of its own
    camera.setCapability(1, 5);        // V-blank
    return camera;
}

TEST_F(ResetSetting, GivesEverySettingItsDefault) {
    open(richCamera());
    Tavra_SetAVIQuality(handle, 30);
    Tavra_SetSharpnessMode(handle, 1, 60, 5);
    Tavra_SetMirrorMode(handle, 3);
    Tavra_SetRotationMode(handle, 1);
    Tavra_SetColorInterpolationMethod(handle, 1);
    Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_BGR_32);
    const std::uint8_t table[256] = {};
    for (std::uint8_t i = 0; i < 5; ++i) Tavra_SetGammaModeEx(handle, i, 255, 100, 0, 100, table);
    const std::int16_t matrix[12] = {5};
    Tavra_SetColorMatrix(handle, 255, matrix);
    Tavra_SetHueSaturationMode(handle, 1, 30, 50);
    Tavra_SetHighChromaSuppression(handle, 10, 20);
    Tavra_SetLowChromaSuppression(handle, 30, 40);
    Tavra_SetWhiteBalanceTarget(handle, 90, 91);
    Tavra_SetALCMode(handle, 3);
    Tavra_SetTargetBrightness(handle, 1, 2, 3);
    const std::uint16_t area[3] = {1, 2, 3};
    Tavra_SetControlArea(handle, area, area);
    Tavra_SetShadingCorrectionTarget(handle, 99);
    usb.camera().status(77) = 45;
    usb.camera().status(23) = 12;
    ASSERT_TRUE(Tavra_SetSkippingAndBinning(handle, 1, 2, 1, 2));
    ASSERT_TRUE(Tavra_SetBinningSumMode(handle, 1));
    ASSERT_EQ(stateOf(handle).at("skipping and binning"), (std::vector<std::uint32_t>{1, 2, 1, 2}));
    ASSERT_EQ(stateOf(handle).at("binning sum"), (std::vector<std::uint32_t>{1}));
    record().lastError = 0;
    expectSuccess(Tavra_ResetSetting(handle));

    const CameraState now = stateOf(handle);
    using Values = std::vector<std::uint32_t>;
    EXPECT_EQ(now.at("clock"), (Values{0, 24545455}));
    EXPECT_EQ(now.at("skipping and binning"), (Values{0, 0, 0, 0}));
    EXPECT_EQ(now.at("binning sum"), (Values{0}));
    EXPECT_EQ(now.at("movie quality"), (Values{75}));
    EXPECT_EQ(now.at("preview format"), (Values{4}));
    EXPECT_EQ(now.at("mirror, rotation, interpolation"), (Values{0, 0, 3}));
    EXPECT_EQ(now.at("alc mode"), (Values{0}));
    EXPECT_EQ(now.at("control area"), (Values{2500, 5000, 7500, 2500, 5000, 7500}));
    EXPECT_EQ(now.at("sharpness"), (Values{0, 0, 0}));
    Values curve{0, 100, 0, 100};
    for (std::uint32_t i = 0; i < 256; ++i) curve.push_back(i);
    for (int i = 0; i < 5; ++i) {
        const Values read = now.at("gamma " + std::to_string(i));
        EXPECT_EQ(read[0], 0u);
        EXPECT_EQ(read[1], 100u);
        EXPECT_TRUE(std::equal(read.begin() + 4, read.end(), curve.begin() + 4)) << i;
    }
    EXPECT_EQ(now.at("hue and saturation"), (Values{0, 0, 100}));
    EXPECT_EQ(now.at("matrix")[0], 0u);
    EXPECT_EQ(now.at("chroma suppression"), (Values{255, 0, 0, 0}));
    EXPECT_EQ(now.at("white balance target"), (Values{100, 100, 5, 5}));
    EXPECT_EQ(usb.camera().status(0x804D), 0) << "gamma of the camera";
    EXPECT_EQ(usb.camera().status(23), 0) << "V-blank";
    std::uint32_t mode = 9;
    std::uint16_t target = 0;
    ASSERT_TRUE(Tavra_GetShadingCorrectionMode(handle, &mode));
    ASSERT_TRUE(Tavra_GetShadingCorrectionTarget(handle, &target));
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(target, 128);
}

TEST_F(ResetSetting, AsksForTheWholeSensorWithNothing) {
    open();
    expectSuccess(Tavra_ResetSetting(handle));
    const Bytes& record = usb.camera().scanRecord;
    for (std::size_t at = 6; at < 24; ++at) EXPECT_EQ(record[at], 0) << at;  // size, place, scan mode
}

TEST_F(ResetSetting, OfAMonoCameraLeavesColorAlone) {
    DoubleCamera camera;
    camera.setIdentity16(10, 1);
    open(camera);
    Tavra_SetHighChromaSuppression(handle, 10, 20);
    expectSuccess(Tavra_ResetSetting(handle));
    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("preview format"), (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(now.at("mirror, rotation, interpolation"), (std::vector<std::uint32_t>{0, 0, 0}));
    EXPECT_EQ(now.at("chroma suppression")[0], 10u);
}

TEST_F(ResetSetting, FollowsTheSettingFileMode) {
    open();
    Tavra_SetRotationMode(handle, 2);
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    expectSuccess(Tavra_ResetSetting(handle));
    std::uint8_t rotation = 0;
    ASSERT_TRUE(Tavra_GetRotationMode(handle, &rotation));
    EXPECT_EQ(rotation, 2);
    EXPECT_EQ(usb.camera().scanRecord[6], 640 & 0xFF) << "the image size";
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0x10000));
    expectSuccess(Tavra_ResetSetting(handle));
    ASSERT_TRUE(Tavra_GetRotationMode(handle, &rotation));
    EXPECT_EQ(rotation, 2);
    EXPECT_EQ(usb.camera().scanRecord[6], 0);
}

TEST_F(ResetSetting, EndsAtTheFirstSetterThatFails) {
    open();
    Tavra_SetSharpnessMode(handle, 1, 60, 5);
    usb.failRequest(34);
    expectFailure(Tavra_ResetSetting(handle), 0xE0000005);
    std::uint8_t mode = 0, coring = 0;
    std::uint16_t gain = 0;
    ASSERT_TRUE(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(usb.camera().scanRecord[6], 640 & 0xFF) << "nothing behind the clock was set";
}

}  // namespace
}  // namespace tavra::test
