// Setting files of every shipped camera model: what was set comes back, and the file holds the keys that it
// is documented to hold.
#include <algorithm>
#include <ostream>

#include "e2e/camera_fixture.h"
#include "platform/profile_file.h"
#include "settings_api/camera_state.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using e2e::Camera;
using e2e::useCameras;

// Gives everything another value than a new camera has; each round other ones. What a model lacks it refuses.
void changeImage(TavraHandle camera, std::uint16_t round) {
    std::uint32_t regions = 0;
    Tavra_SetImageSize(camera, 0, 1, 8, 4, 48u - 8 * round, 8);
    Tavra_GetMaxROICount(camera, &regions);
    if (regions > 1) Tavra_SetROI(camera, 1, 1, 0, 12, 32, 2u + round);
    Tavra_SetSkippingAndBinning(camera, 0, 0, 1, static_cast<std::uint8_t>(round & 1));
    Tavra_SetBinningSumMode(camera, 1);
    Tavra_SetPreviewPixelFormat(camera, TAVRA_PIXEL_BGR_32);
    std::uint8_t mirrors = 0;
    Tavra_GetEnableMirrorMode(camera, &mirrors);
    Tavra_SetMirrorMode(camera, static_cast<std::uint8_t>(mirrors & (0x21 + round)));
    Tavra_SetRotationMode(camera, static_cast<std::uint8_t>(1 + round));
}

void changePreview(TavraHandle camera, std::uint16_t round) {
    const auto byte = [round](unsigned value) { return static_cast<std::uint8_t>(value + round); };
    Tavra_SetPreviewMaskSize(camera, 3u + round, 5, 17, 19u + round);
    Tavra_SetPreviewDestSize(camera, static_cast<std::uint32_t>(-7), 11u + round, 23u + round, 29);
    Tavra_SetMagnificationMode(camera, byte(1));
    Tavra_SetAspectMode(camera, byte(2));
    Tavra_SetDisplayMode(camera, byte(3));
    Tavra_SetColorKey(camera, 0x123456u + round);
    Tavra_SetAlphaChannel(camera, byte(77));
}

bool isMono(TavraHandle camera) {
    std::uint16_t array = 0;
    Tavra_GetColorArray(camera, &array);
    return array == 1 || (array >= 12 && array <= 15);
}

void changeExposure(TavraHandle camera, std::uint16_t round) {
    const auto byte = [round](unsigned value) { return static_cast<std::uint8_t>(value + round); };
    const auto word = [round](unsigned value) { return static_cast<std::uint16_t>(value + round); };
    Tavra_SetTargetBrightness(camera, byte(90), byte(7), byte(9));
    std::uint32_t hasDigitalGain = 0;
    Tavra_HasFunction(camera, 257, &hasDigitalGain);
    if (hasDigitalGain != 0) Tavra_SetDigitalGain(camera, word(140));
    Tavra_SetGain(camera, word(3));
    Tavra_SetShutterSpeed(camera, word(5), 0);
    Tavra_SetShutterControlRange(camera, word(1), 0, word(11), 0);
    Tavra_SetGainControlRange(camera, word(1), word(6));
    const std::uint16_t x[] = {word(1000), 3000, 8000}, y[] = {word(500), 6000, 9000};
    Tavra_SetControlArea(camera, x, y);
    std::array<std::uint8_t, 16> weights{};
    for (unsigned i = 0; i < 16; ++i) weights[i] = byte(10 + i);
    Tavra_SetALCWeight(camera, weights.data());
    Tavra_SetALCControlSpeed(camera, byte(1), byte(2), byte(3), byte(4));
    Tavra_SetALCMode(camera, static_cast<std::uint8_t>(1 + round));
}

void changeCurve(TavraHandle camera, std::uint8_t curve, std::uint16_t round) {
    std::array<std::uint8_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) table[i] = static_cast<std::uint8_t>(255 - i + curve + round);
    const bool own = (curve + round) % 2 == 0;
    Tavra_SetGammaModeEx(camera, curve, own ? TAVRA_GAMMA_TABLE : TAVRA_GAMMA_ON,
                         static_cast<std::uint16_t>(120 + round), static_cast<std::uint16_t>(-20 - curve),
                         static_cast<std::uint8_t>(110 + round), table.data());
}

void changeColor(TavraHandle camera, std::uint16_t round) {
    const auto word = [round](int value) { return static_cast<std::uint16_t>(value + round); };
    for (std::uint8_t curve = 1; curve < 5; ++curve) changeCurve(camera, curve, round);
    Tavra_SetColorInterpolationMethod(camera, static_cast<std::uint8_t>(4 + round));
    Tavra_SetWhiteBalanceMode(camera, 1);
    Tavra_SetWhiteBalanceGain(camera, word(150), word(129), word(131), word(170));
    Tavra_SetWhiteBalanceTarget(camera, word(95), word(105));
    Tavra_SetWhiteBalanceToleranceThreshold(camera, word(6), word(8));
    std::array<std::uint8_t, 16> weights{};
    for (unsigned i = 0; i < 16; ++i) weights[i] = static_cast<std::uint8_t>(100 - i - round);
    Tavra_SetAWBWeight(camera, weights.data());
    Tavra_SetHueSaturationMode(camera, 1, word(-300), word(120));
    std::array<std::int16_t, 12> matrix{};
    for (int i = 0; i < 12; ++i) {
        matrix[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(30 * i - 150 + round);
    }
    Tavra_SetColorMatrix(camera, TAVRA_COLOR_MATRIX_ON, matrix.data());
    Tavra_SetHighChromaSuppression(camera, word(200), word(30));
    Tavra_SetLowChromaSuppression(camera, word(40), word(50));
}

// A mode of the camera's own, and back to the default.
void changeClock(TavraHandle camera, std::uint16_t round) {
    std::uint32_t modes = 0, usual = 0, least = 0, most = 0;
    Tavra_GetEnableClock(camera, &modes, &usual, &least, &most);
    const std::uint32_t low = modes & 0x7FFFFFFF;  // a free clock is not read back
    Tavra_SetClock(camera, round == 0 ? low & (0 - low) : 0, usual);
}

void changeHdr(TavraHandle camera, std::uint16_t round) {
    std::uint32_t size = 0;
    if (Tavra_GetHDRParameter(camera, nullptr, &size) == 0) return;
    std::vector<std::uint32_t> parameters(size / 4);
    for (std::uint32_t i = 0; i < parameters.size(); ++i) parameters[i] = 40 + 10 * round + i;
    Tavra_SetHDRParameter(camera, parameters.data(), size);
}

void changeEverything(TavraHandle camera, std::uint16_t round) {
    changeClock(camera, round);
    changeHdr(camera, round);
    changeImage(camera, round);
    changePreview(camera, round);
    changeExposure(camera, round);
    Tavra_SetAVIQuality(camera, 60u + round);
    Tavra_SetSharpnessMode(camera, 1, static_cast<std::uint16_t>(60 + round), 5);
    changeCurve(camera, TAVRA_GAMMA_INDEX_Y, round);
    if (!isMono(camera)) changeColor(camera, round);  // a mono camera's file has no colour
    Tavra_SetCameraGammaValue(camera, static_cast<std::uint16_t>(45 + round));
    Tavra_SetVBlankForFPS(camera, 12u + round);
    Tavra_SetDefectPixelCorrectionMode(camera, round == 0 ? 1 : 0);
    Tavra_SetDigitalClamp(camera, static_cast<std::uint16_t>(20 + round));
    Tavra_SetAnalogBlackLevel(camera, static_cast<std::uint16_t>(30 + round));
    Tavra_SetAdjustmentMode(camera, 1u + round);
}

// Section and key, as "section/key", of every key in a file, in their order.
std::vector<std::string> keysIn(const std::vector<std::uint8_t>& file) {
    std::vector<std::string> keys;
    std::string line, section;
    for (std::size_t i = 2; i + 1 < file.size(); i += 2) {
        const char character = static_cast<char>(file[i]);
        if (character != '\n') {
            if (character != '\r') line += character;
            continue;
        }
        if (line.front() == '[') section = line.substr(1, line.size() - 2);
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) keys.push_back(section + "/" + line.substr(0, equals));
        line.clear();
    }
    return keys;
}

// The keys that a camera's file is documented to have, from what the camera tells about itself.
class Expected {
  public:
    explicit Expected(TavraHandle camera) : camera_(camera) {
        std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
        std::uint32_t variant = 0;
        Tavra_GetCameraVersion(camera, &vendor, &type, &hardware, &firmware);
        Tavra_GetSamePIDCameraType(camera, &variant);
        legacy_ = type == 773 || type == 1541 || type == 1797 || type == 2053;
        mono_ = isMono(camera);
        char suffix[16];
        std::snprintf(suffix, sizeof suffix, legacy_ || variant == 0 ? "-%04X" : "-%04X-%04X", type, variant);
        suffix_ = suffix;
        addShape();
        addExposure();
        addOther();
        if (!mono_) addColor();
        addTail();
    }
    // Section by section, as they come first; a section has all of its keys together.
    std::vector<std::string> keys() const {
        std::vector<std::string> all;
        for (const auto& [section, names] : sections_) {
            for (const std::string& name : names) all.push_back(section + suffix_ + "/" + name);
        }
        return all;
    }

  private:
    bool has(std::uint32_t function) const {
        std::uint32_t present = 0;
        Tavra_HasFunction(camera_, function, &present);
        return present != 0;
    }
    void addKey(const std::string& section, const std::string& name) {
        auto place = std::ranges::find(sections_, section, &Section::first);
        if (place == sections_.end()) place = sections_.insert(place, Section{section, {}});
        place->second.push_back(name);
    }
    void add(const std::string& section, std::initializer_list<const char*> names) {
        for (const char* name : names) addKey(section, name);
    }
    void addNumbered(const std::string& section, const std::string& name, unsigned count) {
        for (unsigned i = 0; i < count; ++i) addKey(section, name + std::to_string(i));
    }
    void addGamma(const std::string& section) {
        add(section, {"GammaMode", "Gamma", "Brightness", "Contrast"});
        addNumbered(section, "GammaTable_", 256);
    }
    void addShape() {
        add("AVI", {"Quality"});
        add("Clock", {"ClockMode", "Clock"});
        add("ImageSize", {"ScanMode", "RegionMode", "OffsetX", "OffsetY", "Width", "Height"});
        std::uint32_t regions = 0, sizes = 0;
        std::uint16_t scanModes = 0;
        Tavra_GetMaxROICount(camera_, &regions);
        for (std::uint32_t i = 1; i < regions; ++i) {
            for (const char* name : {"RegionMode_", "OffsetX_", "OffsetY_", "Width_", "Height_"}) {
                addKey("ImageSize", name + std::to_string(i));
            }
        }
        Tavra_GetEnableImageSize(camera_, &sizes, &scanModes);
        if ((scanModes & 0x8000) != 0) add("ImageSize", {"HSkipping", "VSkipping", "HBinning", "VBinning"});
        if (has(61) || has(131)) add("ImageSize", {"BinningSumMode"});
        // No preview window is open.
        add("PreviewMaskSize", {"Width", "Height", "OffsetX", "OffsetY"});
        add("PreviewDestSize", {"Width", "Height", "OffsetX", "OffsetY"});
    }
    void addExposure() {
        const char* const s = "GainShutter";
        add(s, {"ALCMode", "BrightnessTarget", "BrightnessTolerance", "BrightnessThreshold"});
        if (!legacy_) add(s, {"CurrentDigitalGain"});
        if (!has(0x90004)) add(s, {"CurrentGain"});
        add(s, {"CurrentShutterLine", "CurrentShutterClock", "ExposureClock", "ALCMaxShutterLine",
                "ALCMaxShutterClock", "ALCMinShutterLine", "ALCMinShutterClock", "AGCMinGain", "AGCMaxGain"});
        for (const char* line : {"0", "1", "2"}) {
            addKey(s, std::string("SepalateX_") + line);
            addKey(s, std::string("SepalateY_") + line);
        }
        addNumbered(s, "ALCWeight_", 16);
        add(s, {"ShutterCtrlSpeedLimit", "GainCtrlSpeedLimit", "SkipFrameCount", "AverageFrameCount"});
    }
    void addOther() {
        add("Other", {"MirrorMode", "MagnificationMode", "AspectMode", "RotationMode", "DisplayMode",
                      "ColorKey", "AlphaChannel", "PreviewPixelFormat"});
        add("Sharpness", {"SharpnessMode", "SharpnessGain", "SharpnessCoring"});
        addGamma("GammaY");
    }
    void addColor() {
        const char* const s = "WhiteBalance";
        const bool loop = !has(24);
        add(s, {"WhiteBalanceMode"});
        if (loop) add(s, {"AWBTargetR", "AWBTargetB"});
        add(s, {"WBGainR", "WBGainGr", "WBGainGb", "WBGainB"});
        if (loop) {
            add(s, {"AWBThreshold", "AWBTolerance"});
            addNumbered(s, "AWBWeight", 16);
        }
        add("Other", {"ColorInterpolationMethod"});
        add("HueSaturation", {"HueSaturationMode", "Hue", "Saturation"});
        add("ColorMatrix", {"ColorMatrixMode"});
        addNumbered("ColorMatrix", "ColorMatrix_", 12);
        add("ChromaSuppression", {"StartLevel", "Suppression", "LowStartLevel", "LowSuppression"});
        for (const char* curve : {"GammaR", "GammaGR", "GammaGB", "GammaB"}) addGamma(curve);
    }
    void addTail() {
        if (has(57)) add("CameraGamma", {"Raw"});
        if (has(21)) add("Clock", {"VBlankForFPS"});
        std::uint16_t defects = 0;
        Tavra_GetEnableDefectPixelCorrectionCount(camera_, &defects);
        if (defects != 0) add("DefectPixelCorrection", {"DefectPixelCorrectionMode"});
        if (has(55)) add("Clamp", {"DigitalClamp"});
        if (has(0x50006)) add("AnalogBlackLevel", {"AnalogBlackLevel"});
        if (has(0x9000A)) add("Adjustment", {"AdjustmentMode"});
        std::uint32_t type = 0, size = 0;
        Tavra_GetHDRType(camera_, &type);
        if (type != 0 && Tavra_GetHDRParameter(camera_, nullptr, &size) != 0) {
            addNumbered("HDR", "HDRParameter_", size / 4);
        }
    }

    TavraHandle camera_;
    bool legacy_ = false, mono_ = false;
    std::string suffix_;
    using Section = std::pair<std::string, std::vector<std::string>>;
    std::vector<Section> sections_;
};

class SettingFileOfModel : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        useCameras(GetParam() + e2e::kSmallSensor);
        name_ = wideName(folder_ / "settings.ini");
    }
    std::vector<std::uint8_t> file() const { return readFile(folder_ / "settings.ini"); }

    const TempFolder folder_;
    std::u16string name_;
};

void expectSame(const CameraState& now, const CameraState& expected) {
    ASSERT_EQ(now.size(), expected.size());
    for (const auto& [what, values] : expected) EXPECT_EQ(now.at(what), values) << what;
}

TEST_P(SettingFileOfModel, BringsBackEverythingThatWasSet) {
    const Camera camera;
    ASSERT_TRUE(camera.isOpen());
    changeEverything(camera, 0);
    const CameraState saved = stateOf(camera);
    ASSERT_TRUE(Tavra_SaveSettingFileW(camera, name_.c_str())) << std::hex << Tavra_GetLastError(camera);
    expectSame(stateOf(camera), saved);
    changeEverything(camera, 1);
    EXPECT_NE(stateOf(camera), saved);
    ASSERT_TRUE(Tavra_LoadSettingFileW(camera, name_.c_str())) << std::hex << Tavra_GetLastError(camera);
    expectSame(stateOf(camera), saved);
    ASSERT_TRUE(Tavra_ResetSetting(camera)) << std::hex << Tavra_GetLastError(camera);
    EXPECT_NE(stateOf(camera), saved);
    ASSERT_TRUE(Tavra_LoadSettingFileW(camera, name_.c_str())) << std::hex << Tavra_GetLastError(camera);
    expectSame(stateOf(camera), saved);
}

TEST_P(SettingFileOfModel, HasTheKeysOfTheModelAndTheSameOnesTheSecondTime) {
    const Camera camera;
    ASSERT_TRUE(Tavra_SaveSettingFileW(camera, name_.c_str()));
    const auto first = file();
    const std::vector<std::string> keys = keysIn(first);
    EXPECT_EQ(keys, Expected(camera).keys());
    ASSERT_TRUE(Tavra_SaveSettingFileW(camera, name_.c_str()));
    EXPECT_EQ(file(), first);
    changeEverything(camera, 1);
    ASSERT_TRUE(Tavra_SaveSettingFileW(camera, name_.c_str()));
    EXPECT_EQ(keysIn(file()), keys);
}

TEST_P(SettingFileOfModel, ResetShowsTheWholeImage) {
    const Camera camera;
    changeEverything(camera, 1);
    ASSERT_TRUE(Tavra_ResetSetting(camera)) << std::hex << Tavra_GetLastError(camera);
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetImageSize(camera, 0, &mode, &x, &y, &width, &height));
    const CameraState now = stateOf(camera);
    using Values = std::vector<std::uint32_t>;
    EXPECT_EQ(now.at("preview mask"), (Values{0, 0, width, height}));
    EXPECT_EQ(now.at("preview destination"), (Values{0, 0, width, height}));
    EXPECT_EQ(now.at("magnification, aspect"), (Values{0, 0}));
    EXPECT_EQ(now.at("display mode"), (Values{0}));
    EXPECT_EQ(now.at("color key, alpha"), (Values{0xFF00FF, 78})) << "the opacity stays";
}

// A person who edits the file may sort it as they like.
TEST_P(SettingFileOfModel, LoadsAlikeWithTheKeysInAnotherOrder) {
    const Camera camera;
    changeEverything(camera, 0);
    const CameraState saved = stateOf(camera);
    ASSERT_TRUE(Tavra_SaveSettingFileW(camera, name_.c_str()));
    platform::ProfileText text;
    ASSERT_TRUE(platform::readProfile(name_, text).ok());
    std::vector<std::string> keys = keysIn(file());
    std::ranges::reverse(keys);
    platform::ProfileText reversed;
    for (const std::string& key : keys) {
        const std::u16string wide(key.begin(), key.end());
        const std::size_t slash = wide.find(u'/');
        const std::u16string section = wide.substr(0, slash), name = wide.substr(slash + 1);
        reversed.set(section, name, text.find(section, name).value());
    }
    ASSERT_TRUE(platform::writeProfile(name_, reversed).ok());
    changeEverything(camera, 1);
    ASSERT_TRUE(Tavra_LoadSettingFileW(camera, name_.c_str()));
    expectSame(stateOf(camera), saved);
}

INSTANTIATE_TEST_SUITE_P(Shipped, SettingFileOfModel,
                         testing::Values("alc", "bayer", "bayer12p", "bgr", "binning", "legacy1541",
                                         "legacy1797", "legacy2053", "legacy773", "mirror", "mono", "mono16",
                                         "pattern", "quad", "regions", "statusword", "usb2", "wb", "ycbcr"),
                         [](const auto& tested) { return std::string(tested.param); });

}  // namespace
}  // namespace tavra::test
