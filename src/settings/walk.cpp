#include "settings/walk.h"

#include <string_view>

#include "settings/walk_access.h"
#include "tavra/tavra_api.h"

namespace tavra {
namespace {

// Numbers of functions, see Tavra_HasFunction().
constexpr std::uint32_t kCameraWhiteBalance = 24;       // capability word 1 bit 8
constexpr std::uint32_t kClampFunction = 55;            // word 3 bit 7
constexpr std::uint32_t kBlackLevelFunction = 0x50006;  // word 8 bit 6
constexpr std::uint32_t kGainInGroup = 0x90004;         // word 16 bit 4
constexpr std::uint32_t kAdjustmentFunction = 0x9000A;  // word 16 bit 10

std::u16string widened(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

std::u16string suffixOf(ISettingCamera& camera) {
    std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
    std::uint32_t samePid = 0;
    Tavra_GetCameraVersion(camera.handle(), &vendor, &type, &hardware, &firmware);
    Tavra_GetSamePIDCameraType(camera.handle(), &samePid);
    std::u16string suffix = u"-" + hexadecimalWord(type);
    if (!camera.legacy() && samePid != 0) suffix += u"-" + hexadecimalWord(samePid);
    return suffix;
}

bool correctsDefects(ISettingCamera& camera) {
    std::uint16_t count = 0;
    return Tavra_GetEnableDefectPixelCorrectionCount(camera.handle(), &count) != 0 && count != 0;
}

}  // namespace

const char* describe(Condition condition) {
    switch (condition) {
        case Condition::Always: return "";
        case Condition::Geometry: return "unless the mode leaves sizes out";
        case Condition::PreviewWindow: return "with a preview window, unless the mode leaves sizes out";
        case Condition::Rotation: return "unless the mode leaves the rotation out";
        case Condition::NotLegacy: return "not on the four oldest types";
        case Condition::GainByItself: return "not with function 0x90004";
        case Condition::Color: return "colour";
        case Condition::OwnWhiteBalance: return "colour, without white balance in the camera";
        case Condition::CameraGamma: return "cameras with a gamma of their own";
        case Condition::VBlank: return "cameras with V-blank";
        case Condition::DefectPixels: return "cameras that correct defect pixels";
        case Condition::Clamp: return "cameras with a digital clamp";
        case Condition::AnalogBlackLevel: return "cameras with an analogue black level";
        case Condition::AdjustmentMode: return "cameras with sensor adjustment";
        case Condition::Hdr: return "cameras with HDR";
    }
    return "";
}

WalkCamera::WalkCamera(ISettingCamera& camera)
    : camera_(camera),
      suffix_(suffixOf(camera)),
      regions_(access::regionCount(camera)),
      skipping_(access::hasSkippingAndBinning(camera)),
      sum_(access::hasBinningSum(camera)) {
    std::uint16_t array = 0;
    color_ = Tavra_GetColorArray(camera.handle(), &array) != 0 && !isMonoForSettings(array);
}

bool WalkCamera::meets(Condition condition) const {
    const auto function = [this](std::uint32_t number) { return access::hasFunction(camera_, number); };
    const std::uint32_t mode = camera_.fileMode();
    switch (condition) {
        case Condition::Always: return true;
        case Condition::Geometry: return keepsGeometry(mode);
        case Condition::PreviewWindow: return keepsGeometry(mode) && camera_.hasPreviewWindow();
        case Condition::Rotation: return keepsRotation(mode);
        case Condition::NotLegacy: return !camera_.legacy();
        case Condition::GainByItself: return !function(kGainInGroup);
        case Condition::Color: return color_;
        case Condition::OwnWhiteBalance: return color_ && !function(kCameraWhiteBalance);
        case Condition::CameraGamma: return function(access::kCameraGammaFunction);
        case Condition::VBlank: return function(access::kVBlankFunction);
        case Condition::DefectPixels: return correctsDefects(camera_);
        case Condition::Clamp: return function(kClampFunction);
        case Condition::AnalogBlackLevel: return function(kBlackLevelFunction);
        case Condition::AdjustmentMode: return function(kAdjustmentFunction);
        case Condition::Hdr: return access::hasHdr(camera_);
    }
    return false;
}

bool WalkCamera::has(const Group& group) const {
    return meets(group.condition);
}

std::uint32_t WalkCamera::times(Times times) const {
    switch (times) {
        case Times::Once: return 1;
        case Times::Three: return 3;
        case Times::Twelve: return 12;
        case Times::Sixteen: return 16;
        case Times::TableSize: return 256;
        case Times::Regions: return regions_;
        case Times::IfSkipping: return skipping_ ? 1 : 0;
        case Times::IfSum: return sum_ ? 1 : 0;
        case Times::HdrSettings:
            if (!hdrSettings_) hdrSettings_ = access::hdrParameterCount(camera_);
            return *hdrSettings_;
    }
    return 0;
}

std::size_t WalkCamera::size(const Group& group) const {
    std::size_t count = 0;
    for (const Block& block : group.blocks) count += times(block.times) * block.keys.size();
    return count;
}

std::u16string hexadecimalWord(std::uint32_t word) {
    constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
    std::u16string text;
    for (int shift = 12; shift >= 0; shift -= 4) text += kDigits[word >> shift & 15];
    return text;
}

std::u16string keyName(const Key& key, std::uint32_t index) {
    std::u16string name = widened(key.name);
    const bool parted = key.naming == Naming::Underscore || (key.naming == Naming::Region && index != 0);
    if (parted) name += u'_';
    if (parted || key.naming == Naming::Behind) name += textOf(Form::Unsigned, index);
    return name;
}

}  // namespace tavra
