// One setting file with a value of its own for every key, the same for Linux and Windows: data/double.ini,
// written by hand after the documented keys. What a camera with these settings saves is that file, byte for
// byte, and what a camera has that loaded it are these settings.
#include <algorithm>

#include "settings_api/camera_state.h"
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using GoldenFile = SettingFileTest;
using Numbers = std::vector<std::uint32_t>;

// Offers everything that a file can hold; the values of the last sections are its own.
DoubleCamera fullCamera() {
    DoubleCamera camera = pageCamera();
    camera.setIdentity16(26, 0x8001);  // skipping and binning
    camera.offerRegions(2);
    camera.setCapability(3, 13);   // binning sum
    camera.setCapability(3, 9);    // gamma of its own
    camera.setCapability(1, 5);    // V-blank
    camera.setCapability(3, 7);    // clamp
    camera.setCapability(3, 11);   // defect pixels
    camera.setCapability(8, 6);    // analogue black level
    camera.setCapability(16, 10);  // adjustment
    camera.setCapabilityWord(18, 3);
    camera.pageRegister(27, 0) = 16;
    return camera;
}

std::vector<std::uint8_t> goldenFile() {
    return readFile(TAVRA_GOLDEN_SETTINGS);
}

template <typename Number, std::size_t kSize>
std::array<Number, kSize> rising(int first, int step) {
    std::array<Number, kSize> numbers{};
    for (std::size_t i = 0; i < kSize; ++i)
        numbers[i] = static_cast<Number>(first + static_cast<int>(i) * step);
    return numbers;
}

class Setter {
  public:
    explicit Setter(TavraHandle camera) : camera_(camera) {}

    void image() const {
        EXPECT_TRUE(Tavra_SetAVIQuality(camera_, 61));
        EXPECT_TRUE(Tavra_SetImageSize(camera_, 0, 4, 8, 6, 320, 240));
        EXPECT_TRUE(Tavra_SetROI(camera_, 1, 1, 16, 10, 64, 32));
        EXPECT_TRUE(Tavra_SetSkippingAndBinning(camera_, 1, 2, 3, 4));
        EXPECT_TRUE(Tavra_SetBinningSumMode(camera_, 5));
        EXPECT_TRUE(Tavra_SetMirrorMode(camera_, 3));
        EXPECT_TRUE(Tavra_SetMagnificationMode(camera_, 11));
        EXPECT_TRUE(Tavra_SetAspectMode(camera_, 254));
        EXPECT_TRUE(Tavra_SetRotationMode(camera_, 2));
        EXPECT_TRUE(Tavra_SetDisplayMode(camera_, 5));
        EXPECT_TRUE(Tavra_SetColorKey(camera_, 0x123456));
        EXPECT_TRUE(Tavra_SetAlphaChannel(camera_, 77));
        EXPECT_TRUE(Tavra_SetPreviewPixelFormat(camera_, TAVRA_PIXEL_BGR_32));
        EXPECT_TRUE(Tavra_SetSharpnessMode(camera_, 1, 462, 15));
        // A rotation shows the whole image.
        EXPECT_TRUE(Tavra_SetPreviewMaskSize(camera_, 31, 23, 301, 203));
        EXPECT_TRUE(Tavra_SetPreviewDestSize(camera_, static_cast<std::uint32_t>(-42), 34, 402, 304));
    }

    void exposure() const {
        EXPECT_TRUE(Tavra_SetALCMode(camera_, 2));
        EXPECT_TRUE(Tavra_SetTargetBrightness(camera_, 91, 7, 9));
        EXPECT_TRUE(Tavra_SetDigitalGain(camera_, 140));
        EXPECT_TRUE(Tavra_SetGain(camera_, 33));
        EXPECT_TRUE(Tavra_SetShutterSpeed(camera_, 19, 5));
        EXPECT_TRUE(Tavra_SetShutterControlRange(camera_, 12, 13, 50, 14));
        EXPECT_TRUE(Tavra_SetGainControlRange(camera_, 21, 60));
        const std::uint16_t x[] = {1001, 3002, 8003}, y[] = {504, 6005, 9006};
        EXPECT_TRUE(Tavra_SetControlArea(camera_, x, y));
        EXPECT_TRUE(Tavra_SetALCWeight(camera_, rising<std::uint8_t, 16>(10, 1).data()));
        EXPECT_TRUE(Tavra_SetALCControlSpeed(camera_, 71, 72, 73, 74));
    }

    void color() const {
        for (std::uint8_t curve = 0; curve < 5; ++curve) {
            EXPECT_TRUE(Tavra_SetGammaModeEx(camera_, curve, TAVRA_GAMMA_TABLE, 100, 0, 0,
                                             rising<std::uint8_t, 256>(curve, 1).data()));
        }
        EXPECT_TRUE(Tavra_SetWhiteBalanceMode(camera_, 1));
        EXPECT_TRUE(Tavra_SetWhiteBalanceTarget(camera_, 95, 105));
        EXPECT_TRUE(Tavra_SetWhiteBalanceGain(camera_, 150, 129, 131, 170));
        EXPECT_TRUE(Tavra_SetWhiteBalanceToleranceThreshold(camera_, 6, 8));
        EXPECT_TRUE(Tavra_SetAWBWeight(camera_, rising<std::uint8_t, 16>(100, -1).data()));
        EXPECT_TRUE(Tavra_SetColorInterpolationMethod(camera_, 4));
        EXPECT_TRUE(Tavra_SetHueSaturationMode(camera_, 1, static_cast<std::uint16_t>(-300), 120));
        EXPECT_TRUE(
            Tavra_SetColorMatrix(camera_, TAVRA_COLOR_MATRIX_ON, rising<std::int16_t, 12>(-150, 30).data()));
        EXPECT_TRUE(Tavra_SetHighChromaSuppression(camera_, 200, 30));
        EXPECT_TRUE(Tavra_SetLowChromaSuppression(camera_, 40, 55));
    }

    void cameraValues() const {
        EXPECT_TRUE(Tavra_SetCameraGammaValue(camera_, 45));
        EXPECT_TRUE(Tavra_SetVBlankForFPS(camera_, 112));
        EXPECT_TRUE(Tavra_SetDefectPixelCorrectionMode(camera_, 1));
        EXPECT_TRUE(Tavra_SetDigitalClamp(camera_, 220));
        EXPECT_TRUE(Tavra_SetAnalogBlackLevel(camera_, 230));
        EXPECT_TRUE(Tavra_SetAdjustmentMode(camera_, 3));
        const std::uint32_t parameters[] = {501, 502, 503};
        EXPECT_TRUE(Tavra_SetHDRParameter(camera_, parameters, sizeof parameters));
    }

  private:
    TavraHandle camera_;
};

void setEverything(TavraHandle camera) {
    const Setter setter(camera);
    setter.image();
    setter.exposure();
    setter.color();
    setter.cameraValues();
}

TEST_F(GoldenFile, IsWhatACameraWithItsSettingsSaves) {
    open(fullCamera());
    setEverything(handle);
    save();
    const auto golden = goldenFile();
    ASSERT_FALSE(golden.empty());
    EXPECT_TRUE(readFile(path()) == golden);
    save();
    EXPECT_TRUE(readFile(path()) == golden) << "and a second time";
}

TEST_F(GoldenFile, GivesACameraItsSettings) {
    open(fullCamera());
    ASSERT_TRUE(platform::replaceWholeFile(name(), goldenFile()).ok());
    load();
    save();
    EXPECT_TRUE(readFile(path()) == goldenFile());
    const CameraState now = stateOf(handle);
    const auto expect = [&](const char* what, const Numbers& values) {
        EXPECT_EQ(now.at(what), values) << what;
    };
    expect("movie quality", {61});
    expect("clock", {0, 24545455});
    expect("image size", {4, 8, 6, 320, 240});
    expect("region 1", {1, 16, 10, 64, 32});
    expect("skipping and binning", {1, 2, 3, 4});
    expect("binning sum", {5});
    expect("preview mask", {31, 23, 301, 203});
    expect("preview destination", {static_cast<std::uint32_t>(-42), 34, 402, 304});
    expect("magnification, aspect", {11, 254});
    expect("display mode", {5});
    expect("color key, alpha", {0x123456, 77});
    expect("preview format", {8});
    expect("mirror, rotation, interpolation", {3, 2, 4});
    expect("alc mode", {2});
    expect("target brightness", {91, 7, 9});
    expect("gains", {140, 33});
    expect("shutter", {19, 5, 19 * 780 + 5});
    expect("shutter range", {12, 13, 50, 14});
    expect("gain range", {21, 60});
    expect("control area", {1001, 3002, 8003, 504, 6005, 9006});
    expect("alc speed", {71, 72, 73, 74});
    expect("sharpness", {1, 462, 15});
    expect("white balance", {1, 150, 129, 131, 170});
    expect("white balance target", {95, 105, 6, 8});
    expect("hue and saturation", {1, 0x10000 - 300, 120});
    expect("chroma suppression", {200, 30, 40, 55});
    expect("camera gamma", {45});
    expect("v-blank", {112});
    expect("defect pixels", {1});
    expect("clamp", {220});
    expect("black level", {230});
    expect("adjustment", {3});
    expect("hdr", {501, 502, 503});
    for (std::uint32_t i = 0; i < 16; ++i) {
        EXPECT_EQ(now.at("alc weights")[i], 10 + i);
        EXPECT_EQ(now.at("white balance weights")[i], 100 - i);
    }
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(static_cast<std::int16_t>(now.at("matrix")[1 + static_cast<unsigned>(i)]), -150 + 30 * i);
    }
    for (std::uint32_t curve = 0; curve < 5; ++curve) {
        const Numbers& table = now.at("gamma " + std::to_string(curve));
        EXPECT_EQ(table[0], 255u);
        for (std::uint32_t i = 0; i < 256; ++i) EXPECT_EQ(table[4 + i], (curve + i) & 255) << curve;
    }
}

// The three numbers of a curve that is not a table.
TEST_F(GoldenFile, APowerCurveHasItsNumbersUnderTheirNames) {
    open();
    for (std::uint8_t curve = 0; curve < 5; ++curve) {
        const auto plus = [curve](int value) { return static_cast<std::uint16_t>(value + curve); };
        ASSERT_TRUE(Tavra_SetGammaModeEx(handle, curve, static_cast<std::uint8_t>(1 + curve % 2), plus(150),
                                         plus(-20), static_cast<std::uint8_t>(plus(110)), nullptr));
    }
    save();
    const char16_t* const sections[] = {u"GammaY-2016", u"GammaR-2016", u"GammaGR-2016", u"GammaGB-2016",
                                        u"GammaB-2016"};
    for (int curve = 0; curve < 5; ++curve) {
        const auto text = [](int value) {
            const std::string narrow = std::to_string(value);
            return std::u16string(narrow.begin(), narrow.end());
        };
        EXPECT_EQ(valueOf(sections[curve], u"GammaMode"), text(1 + curve % 2));
        EXPECT_EQ(valueOf(sections[curve], u"Gamma"), text(150 + curve));
        EXPECT_EQ(valueOf(sections[curve], u"Brightness"), text(-20 + curve));
        EXPECT_EQ(valueOf(sections[curve], u"Contrast"), text(110 + curve));
    }
}

}  // namespace
}  // namespace tavra::test
