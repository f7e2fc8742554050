// Tavra_ResetSetting: what a camera has afterwards.
#include "settings_api/camera_state.h"
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using ResetSetting = CameraTest;

constexpr std::uint16_t kWriteSum = 0x802E;  // status word of the binning sum

// A camera with everything that a reset reaches.
DoubleCamera richCamera() {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);  // skipping and binning
    camera.setCapability(3, 13);       // binning sum
    camera.setCapability(3, 9);        // gamma of its own
    camera.setCapability(1, 5);        // V-blank
    return camera;
}

// The block of shutter and gain, as it is sent.
Bytes exposureBlock(std::uint8_t line, std::uint8_t clock, std::uint8_t gain) {
    Bytes block(64);
    block[0] = 0x40;
    block[1] = 0x21;
    block[2] = line;
    block[4] = clock;
    block[6] = gain;
    return block;
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
    EXPECT_EQ(usb.camera().status(77), 0) << "gamma of the camera";
    EXPECT_EQ(usb.camera().status(23), 0) << "V-blank";
    std::uint32_t mode = 9;
    std::uint16_t target = 0;
    ASSERT_TRUE(Tavra_GetShadingCorrectionMode(handle, &mode));
    ASSERT_TRUE(Tavra_GetShadingCorrectionTarget(handle, &target));
    EXPECT_EQ(mode, 0u);
    EXPECT_EQ(target, 128);
}

TEST_F(ResetSetting, GivesEveryValueOfTheExposureControlItsDefault) {
    open();  // gain from 20 to 680, digital gain 64, exposures by the clock
    const std::array<std::uint8_t, 16> weights{9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6};
    ASSERT_TRUE(Tavra_SetALCMode(handle, 3));
    ASSERT_TRUE(Tavra_SetTargetBrightness(handle, 1, 2, 3));
    ASSERT_TRUE(Tavra_SetALCWeight(handle, weights.data()));
    ASSERT_TRUE(Tavra_SetALCControlSpeed(handle, 11, 12, 13, 14));
    ASSERT_TRUE(Tavra_SetGainControlRange(handle, 30, 600));
    ASSERT_TRUE(Tavra_SetShutterControlRange(handle, 2, 3, 50, 4));
    ASSERT_TRUE(Tavra_SetShutterSpeed(handle, 9, 5));
    ASSERT_TRUE(Tavra_SetGain(handle, 33));
    ASSERT_TRUE(Tavra_SetDigitalGain(handle, 100));
    using Values = std::vector<std::uint32_t>;
    const CameraState before = stateOf(handle);
    ASSERT_EQ(before.at("alc weights"), Values(weights.begin(), weights.end()));
    ASSERT_EQ(before.at("alc speed"), (Values{11, 12, 13, 14}));
    ASSERT_EQ(before.at("gain range"), (Values{30, 600}));
    ASSERT_EQ(before.at("shutter range"), (Values{2, 3, 50, 4}));
    ASSERT_EQ(before.at("gains"), (Values{100, 33}));
    ASSERT_EQ(usb.camera().status(20), 100);
    expectSuccess(Tavra_ResetSetting(handle));

    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("alc mode"), (Values{0}));
    EXPECT_EQ(now.at("target brightness"), (Values{128, 5, 5}));
    EXPECT_EQ(now.at("alc weights"), Values(16, 1));
    EXPECT_EQ(now.at("alc speed"), (Values{0, 0, 3, 4}));
    EXPECT_EQ(now.at("gain range"), (Values{20, 680}));
    EXPECT_EQ(now.at("shutter range"), (Values{0, 1, 0, 0}));
    EXPECT_EQ(now.at("shutter")[0], 0u);
    EXPECT_EQ(now.at("shutter")[1], 0u);
    EXPECT_EQ(now.at("gains"), (Values{64, 20}));
    EXPECT_EQ(usb.camera().status(20), 64) << "the camera has been told";
    EXPECT_EQ(usb.camera().exposureBlock, exposureBlock(0, 0, 20));
}

TEST_F(ResetSetting, BeginsTheRangeOfTheShutterAtALineWhereThereAreNoClocks) {
    DoubleCamera camera;
    camera.setIdentity16(44, 0);
    open(camera);
    ASSERT_TRUE(Tavra_SetShutterControlRange(handle, 2, 0, 50, 0));
    expectSuccess(Tavra_ResetSetting(handle));
    EXPECT_EQ(stateOf(handle).at("shutter range"), (std::vector<std::uint32_t>{1, 0, 0, 0}));
}

// The gains are those that the camera has told when it was opened.
TEST_F(ResetSetting, GivesEveryValueOfTheWhiteBalanceItsDefault) {
    DoubleCamera camera;
    for (std::uint8_t i = 0; i < 4; ++i)
        camera.words35[2 + 2 * std::size_t{i}] = static_cast<std::uint8_t>(140 + i);
    open(camera);
    const std::array<std::uint8_t, 16> weights{9, 8, 7, 6, 5, 4, 3, 2, 1, 0, 1, 2, 3, 4, 5, 6};
    ASSERT_TRUE(Tavra_SetWhiteBalanceMode(handle, 1));
    ASSERT_TRUE(Tavra_SetWhiteBalanceGain(handle, 200, 201, 202, 203));
    ASSERT_TRUE(Tavra_SetWhiteBalanceTarget(handle, 90, 91));
    ASSERT_TRUE(Tavra_SetWhiteBalanceToleranceThreshold(handle, 8, 9));
    ASSERT_TRUE(Tavra_SetAWBWeight(handle, weights.data()));
    using Values = std::vector<std::uint32_t>;
    const CameraState before = stateOf(handle);
    ASSERT_EQ(before.at("white balance"), (Values{1, 200, 201, 202, 203}));
    ASSERT_EQ(before.at("white balance target"), (Values{90, 91, 8, 9}));
    ASSERT_EQ(before.at("white balance weights"), Values(weights.begin(), weights.end()));
    expectSuccess(Tavra_ResetSetting(handle));

    const CameraState now = stateOf(handle);
    EXPECT_EQ(now.at("white balance"), (Values{2, 140, 141, 142, 143}));
    EXPECT_EQ(now.at("white balance target"), (Values{100, 100, 5, 5}));
    EXPECT_EQ(now.at("white balance weights"), Values(16, 1));
}

// Formats and interpolation go by what the sensor sends: mono, and patterns that are shown as they are, or
// else a mosaic of one or of four pixels to a color, or YCbCr.
TEST_F(ResetSetting, FollowsTheColorArrayInFormatAndInterpolation) {
    for (std::uint16_t array = 1; array <= 19; ++array) {
        const bool mono = array == 1 || (array >= 12 && array <= 15);
        DoubleCamera camera;
        camera.setIdentity16(10, array);
        open(camera);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_BGR_32)) << array;
        ASSERT_TRUE(Tavra_SetColorInterpolationMethod(handle, 1)) << array;
        ASSERT_TRUE(Tavra_SetHueSaturationMode(handle, 1, 30, 50)) << array;
        expectSuccess(Tavra_ResetSetting(handle));
        const CameraState now = stateOf(handle);
        EXPECT_EQ(now.at("preview format"), std::vector<std::uint32_t>{mono ? 1u : 4u}) << array;
        EXPECT_EQ(now.at("mirror, rotation, interpolation")[2], mono ? 0u : 3u) << array;
        EXPECT_EQ(now.at("hue and saturation")[2], mono ? 50u : 100u) << array << ": color is reset, or none";
        close();
        usb.reset();
    }
}

// Function 131, by which other cameras tell that they have one.
TEST_F(ResetSetting, EndsABinningSumOfEitherKind) {
    for (const auto& [word, bit] : {std::pair{3u, 13u}, {8u, 3u}}) {
        DoubleCamera camera;
        camera.setCapability(word, bit);
        open(camera);
        ASSERT_TRUE(Tavra_SetBinningSumMode(handle, 2));
        ASSERT_EQ(usb.camera().status(46), 2);
        expectSuccess(Tavra_ResetSetting(handle));
        EXPECT_EQ(usb.camera().status(46), 0) << word;
        close();
        usb.reset();
    }
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

// The steps that reach the camera, in their order: clock, size (S), factors (F), sum (B), shutter and gain
// (E), digital gain (D), gamma (G), V-blank (V).
std::string stepsIn(const std::vector<ControlTransfer>& traffic) {
    std::string steps;
    for (const ControlTransfer& sent : traffic) {
        if ((sent.requestType & 0x80) != 0) continue;
        if (sent.request == 34) steps += 'C';
        if (sent.request == 18) steps += 'S';
        if (sent.request == 33) steps += 'E';
        if (sent.request != 128) continue;
        const std::map<std::uint16_t, char> words{
            {33, 'F'}, {kWriteSum, 'B'}, {0x8014, 'D'}, {0x804D, 'G'}, {23, 'V'}};
        const auto word = words.find(sent.value);
        if (word != words.end()) steps += word->second;
    }
    return steps;
}

TEST_F(ResetSetting, GoesThroughTheCameraInItsOrder) {
    open(richCamera());
    expectSuccess(Tavra_ResetSetting(handle));
    EXPECT_EQ(stepsIn(traffic()), "CSFBEDGV");
}

// What is behind a step that fails stays, what is ahead of it does not.
class ResetStep : public CameraTest, public testing::WithParamInterface<std::pair<char, ControlTransfer>> {
  protected:
    // Settings that no camera is told, each between two steps that it is told.
    struct Told {
        std::uint32_t quality = 0, format = 0;
        std::uint8_t mirror = 0, sharpness = 0;
        std::uint16_t suppression = 0, shadingTarget = 0;

        bool operator==(const Told&) const = default;
    };
    void change() {
        ASSERT_TRUE(Tavra_SetAVIQuality(handle, 30));
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_BGR_32));
        ASSERT_TRUE(Tavra_SetMirrorMode(handle, 3));
        ASSERT_TRUE(Tavra_SetSharpnessMode(handle, 1, 60, 5));
        ASSERT_TRUE(Tavra_SetHighChromaSuppression(handle, 10, 20));
        ASSERT_TRUE(Tavra_SetShadingCorrectionTarget(handle, 99));
    }
    Told told() {
        Told now;
        std::uint8_t coring = 0;
        std::uint16_t gain = 0, level = 0;
        EXPECT_TRUE(Tavra_GetAVIQuality(handle, &now.quality));
        EXPECT_TRUE(Tavra_GetPreviewPixelFormat(handle, &now.format));
        EXPECT_TRUE(Tavra_GetMirrorMode(handle, &now.mirror));
        EXPECT_TRUE(Tavra_GetSharpnessMode(handle, &now.sharpness, &gain, &coring));
        EXPECT_TRUE(Tavra_GetHighChromaSuppression(handle, &level, &now.suppression));
        EXPECT_TRUE(Tavra_GetShadingCorrectionTarget(handle, &now.shadingTarget));
        return now;
    }
};

TEST_P(ResetStep, ThatFailsEndsTheReset) {
    const auto& [letter, request] = GetParam();
    open(richCamera());
    change();
    traffic();
    UsbDouble::Fault fault;
    fault.request = request.request;
    fault.requestType = request.requestType;
    fault.value = request.value;
    usb.addFault(fault);
    expectFailure(Tavra_ResetSetting(handle), 0xE0000005);
    const std::string steps = "CSFBEDGV";
    EXPECT_EQ(stepsIn(traffic()), steps.substr(0, steps.find(letter) + 1));
    const bool pastSizes = steps.find(letter) > steps.find('B');
    const bool pastExposure = steps.find(letter) > steps.find('D');
    EXPECT_EQ(told(), (Told{75, pastSizes ? 4u : 8u, static_cast<std::uint8_t>(pastExposure ? 0 : 3),
                            static_cast<std::uint8_t>(pastExposure ? 0 : 1),
                            static_cast<std::uint16_t>(pastExposure ? 0 : 20), 99}));
}

INSTANTIATE_TEST_SUITE_P(
    OfTheCamera, ResetStep,
    testing::Values(std::pair{'C', toDevice(34, 0, 0)}, std::pair{'S', toDevice(18, 0, 0)},
                    std::pair{'F', toDevice(128, 33, 0)}, std::pair{'B', toDevice(128, kWriteSum, 0)},
                    std::pair{'E', toDevice(33, 0, 0)}, std::pair{'D', toDevice(128, 0x8014, 0)},
                    std::pair{'G', toDevice(128, 0x804D, 0)}, std::pair{'V', toDevice(128, 23, 0)}),
    [](const auto& tested) { return std::string(1, tested.param.first); });

// The mode as it stands, and no other one with its bits.
TEST_F(ResetSetting, LeavesOutTheWholeGeometryInOneModeAlone) {
    using Values = std::vector<std::uint32_t>;
    for (const std::uint32_t mode : {0xFFFF0000u, 0xFFFF0001u, 0xFFFFFFFFu, 0x10000u, 0xFFFE0000u}) {
        const bool keepsSizes = mode == 0xFFFF0000u;
        const bool keepsRotation = (mode & 0x10000) != 0;
        open(richCamera());
        ASSERT_TRUE(Tavra_SetRotationMode(handle, 2));
        ASSERT_TRUE(Tavra_SetSkippingAndBinning(handle, 1, 2, 1, 2));
        ASSERT_TRUE(Tavra_SetBinningSumMode(handle, 1));
        ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, 1, 2, 30, 20));
        ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, 3, 4, 50, 40));
        ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 11));
        ASSERT_TRUE(Tavra_SetAspectMode(handle, 3));
        ASSERT_TRUE(Tavra_SetSettingFileMode(handle, mode));
        expectSuccess(Tavra_ResetSetting(handle));
        const CameraState now = stateOf(handle);
        EXPECT_EQ(now.at("image size")[3], keepsSizes ? 640u : 0u) << std::hex << mode;
        EXPECT_EQ(now.at("skipping and binning"), keepsSizes ? (Values{1, 2, 1, 2}) : Values(4)) << mode;
        EXPECT_EQ(now.at("binning sum"), Values{keepsSizes ? 1u : 0u}) << mode;
        EXPECT_EQ(now.at("preview mask"), keepsSizes ? (Values{1, 2, 30, 20}) : Values(4)) << mode;
        EXPECT_EQ(now.at("preview destination"), keepsSizes ? (Values{3, 4, 50, 40}) : Values(4)) << mode;
        EXPECT_EQ(now.at("magnification, aspect"), keepsSizes ? (Values{11, 3}) : Values(2)) << mode;
        EXPECT_EQ(now.at("mirror, rotation, interpolation")[1], keepsRotation ? 2u : 0u) << mode;
        close();
        usb.reset();
    }
}

}  // namespace
}  // namespace tavra::test
