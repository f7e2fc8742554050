#include "control/luminance_ctrl_usb.h"

#include <array>

#include "camera/control_channel.h"

namespace tavra {
namespace {

constexpr unsigned kClockPart = 1;  // bit of the enable word of the shutter

constexpr std::uint8_t kHostNibble = 0x0F;
constexpr unsigned kCameraShift = 4;

// Status words. By the cameras' convention bit 15 marks a write that takes effect: of a range, the second.
constexpr std::uint16_t kReadDigitalGain = 20;
constexpr std::uint16_t kWriteDigitalGain = 0x8014;
constexpr std::uint16_t kShutterTop = 69;  // lines, in two words
constexpr std::uint16_t kReadShutterBottom = 71;
constexpr std::uint16_t kWriteShutterBottom = 0x8047;
constexpr std::uint16_t kReadMode = 73;
constexpr std::uint16_t kWriteMode = 0x8049;
constexpr std::uint16_t kReadTarget = 74;
constexpr std::uint16_t kWriteTarget = 0x804A;
constexpr std::uint16_t kGainTop = 75;
constexpr std::uint16_t kReadGainBottom = 76;
constexpr std::uint16_t kWriteGainBottom = 0x804C;

bool hasClockPart(const CameraInfo& info) {
    return (info.enableShutterSpeed & kClockPart) != 0;
}

}  // namespace

ShutterScale exposureScaleOf(const ScanRecord& scan) {
    return {scan.lastExposureClock(),
            {scan.shortExposureLines(), scan.shortExposureClocks()},
            {scan.longExposureLines(), scan.longExposureClocks()}};
}

CLuminanceCtrlUSB::CLuminanceCtrlUSB(IExposureCamera& camera)
    : CLuminanceCtrl(
          {camera.scanRecord().defaultGain(), camera.scanRecord().defaultDigitalGain(), {}},
          {!isLegacyType(camera.exposureIdentity().productType), hasClockPart(camera.exposureIdentity())}),
      camera_(camera),
      gainScale_(GainScale::of(camera.exposureCapabilities())) {
    restoreDefaults(camera.scanRecord().maximumGain());
}

// False on the oldest types, which have no capability words.
bool CLuminanceCtrlUSB::controlsShutter() const {
    return camera_.exposureCapabilities().bit(1, 10);
}
bool CLuminanceCtrlUSB::controlsGain() const {
    return camera_.exposureCapabilities().bit(1, 9);
}

Status CLuminanceCtrlUSB::LoadFromCamera() {
    const std::lock_guard lock(controlMutex());
    TAVRA_RETURN_IF_ERROR(ReadShutterAndGain());
    if (hasDigitalGain()) TAVRA_RETURN_IF_ERROR(ReadDigitalGain());
    return ReadCameraAlcSettings();
}

Status CLuminanceCtrlUSB::reset() {
    const std::lock_guard lock(controlMutex());
    restoreDefaults(camera_.scanRecord().maximumGain());
    TAVRA_RETURN_IF_ERROR(WriteShutterAndGain());
    return hasDigitalGain() ? WriteDigitalGain() : Status();
}

Status CLuminanceCtrlUSB::setShutter(const Shutter& shutter) {
    const std::lock_guard lock(controlMutex());
    TAVRA_RETURN_IF_ERROR(changeShutter(shutter, scale()));
    return camera_.sendFrameTiming();
}

Status CLuminanceCtrlUSB::setExposureClocks(std::uint32_t clocks) {
    const std::lock_guard lock(controlMutex());
    const ShutterScale limits = scale();
    TAVRA_RETURN_IF_ERROR(changeShutter(limits.split(clocks), limits));
    return camera_.sendFrameTiming();
}

// Shutter and gain: one block.

Status CLuminanceCtrlUSB::WriteShutterAndGain() {
    return camera_.writeExposure({shutter_.line, static_cast<std::uint16_t>(shutter_.clock), gain_});
}

Status CLuminanceCtrlUSB::ReadShutterAndGain() {
    ExposureBlock block;
    TAVRA_RETURN_IF_ERROR(camera_.readExposure(block));
    shutter_ = {block.lines, block.clocks};
    gain_ = block.gain;
    return Status();
}

Status CLuminanceCtrlUSB::refreshWhatCameraControls() {
    return cameraAlcMode_ != 0 ? ReadShutterAndGain() : Status();
}

Status CLuminanceCtrlUSB::GetShutter(Shutter& shutter) {
    TAVRA_RETURN_IF_ERROR(refreshWhatCameraControls());
    return CLuminanceCtrl::GetShutter(shutter);
}

Status CLuminanceCtrlUSB::GetGain(std::uint16_t& gain) {
    TAVRA_RETURN_IF_ERROR(refreshWhatCameraControls());
    return CLuminanceCtrl::GetGain(gain);
}

// Digital gain.

Status CLuminanceCtrlUSB::WriteDigitalGain() {
    return writeWord(kWriteDigitalGain, digitalGain_);
}

Status CLuminanceCtrlUSB::ReadDigitalGain() {
    return readWord(kReadDigitalGain, digitalGain_);
}

// What a camera that controls by itself is told, and tells.

Status CLuminanceCtrlUSB::SetShutterControlRange(const ShutterRange& range) {
    TAVRA_RETURN_IF_ERROR(CLuminanceCtrl::SetShutterControlRange(range));
    if (!controlsShutter()) return Status();
    TAVRA_RETURN_IF_ERROR(writeLines(kShutterTop, range.max.line));
    return writeLines(kWriteShutterBottom, range.min.line);
}

Status CLuminanceCtrlUSB::SetGainControlRange(const GainRange& range) {
    TAVRA_RETURN_IF_ERROR(CLuminanceCtrl::SetGainControlRange(range));
    if (!controlsGain()) return Status();
    TAVRA_RETURN_IF_ERROR(writeWord(kGainTop, range.max));
    return writeWord(kWriteGainBottom, range.min);
}

Status CLuminanceCtrlUSB::SetTargetBrightness(const BrightnessTarget& target) {
    TAVRA_RETURN_IF_ERROR(CLuminanceCtrl::SetTargetBrightness(target));
    return controlsAnything() ? writeWord(kWriteTarget, target.target) : Status();
}

Status CLuminanceCtrlUSB::SetALCMode(std::uint8_t mode) {
    const bool both = (mode & kHostNibble) != 0 && mode >> kCameraShift != 0;
    const bool noShutter = (mode & alc_mode::kCameraShutter) != 0 && !controlsShutter();
    const bool noGain = (mode & alc_mode::kCameraGain) != 0 && !controlsGain();
    if (both || noShutter || noGain) return Status(error::kInvalidArgument);
    TAVRA_RETURN_IF_ERROR(CLuminanceCtrl::SetALCMode(mode));
    if (!controlsAnything()) return Status();
    cameraAlcMode_ = static_cast<std::uint8_t>(mode >> kCameraShift);
    TAVRA_RETURN_IF_ERROR(writeWord(kWriteMode, cameraAlcMode_));
    return ReadShutterAndGain();
}

Status CLuminanceCtrlUSB::GetALCMode(std::uint8_t& mode) {
    TAVRA_RETURN_IF_ERROR(CLuminanceCtrl::GetALCMode(mode));
    mode = static_cast<std::uint8_t>(mode | cameraAlcMode_ << kCameraShift);
    return Status();
}

Status CLuminanceCtrlUSB::ReadCameraAlcSettings() {
    if (!controlsAnything()) return Status();
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(readWord(kReadMode, word));
    cameraAlcMode_ = word & kHostNibble;
    TAVRA_RETURN_IF_ERROR(readWord(kGainTop, gainRange_.max));
    TAVRA_RETURN_IF_ERROR(readWord(kReadGainBottom, gainRange_.min));
    TAVRA_RETURN_IF_ERROR(readLines(kShutterTop, shutterRange_.max));
    TAVRA_RETURN_IF_ERROR(readLines(kReadShutterBottom, shutterRange_.min));
    TAVRA_RETURN_IF_ERROR(readWord(kReadTarget, word));
    target_.target = static_cast<std::uint8_t>(word);
    return Status();
}

Status CLuminanceCtrlUSB::readWord(std::uint16_t address, std::uint16_t& value) {
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera_.statusWords().readStatus(0, address, {&word, 1}));
    value = word;
    return Status();
}

Status CLuminanceCtrlUSB::writeWord(std::uint16_t address, std::uint16_t value) {
    return camera_.statusWords().writeStatus(0, address, {&value, 1});
}

// The clock part of a range does not travel.
Status CLuminanceCtrlUSB::readLines(std::uint16_t address, Shutter& shutter) {
    std::array<std::uint16_t, 2> words{};
    TAVRA_RETURN_IF_ERROR(camera_.statusWords().readStatus(0, address, words));
    shutter = {words[0] | std::uint32_t{words[1]} << 16, 0};
    return Status();
}

Status CLuminanceCtrlUSB::writeLines(std::uint16_t address, std::uint32_t lines) {
    const std::array words{static_cast<std::uint16_t>(lines), static_cast<std::uint16_t>(lines >> 16)};
    return camera_.statusWords().writeStatus(0, address, words);
}

// Scale and limits.

float CLuminanceCtrlUSB::GetGainDBFromSettingValue(std::uint16_t value) const {
    return gainScale_.decibels(value);
}

std::uint32_t CLuminanceCtrlUSB::GetSettingValueFromGainDB(float decibels) const {
    return gainScale_.settingValue(decibels, maxGain_);
}

std::uint32_t CLuminanceCtrlUSB::GetMaxClock() const {
    return readScale().maxClock;
}

Shutter CLuminanceCtrlUSB::GetMaxLongExposure() const {
    return readScale().maxLong;
}

Shutter CLuminanceCtrlUSB::GetMaxShortExposure() const {
    return readScale().maxShort;
}

ShutterScale CLuminanceCtrlUSB::readScale() const {
    return exposureScaleOf(camera_.scanRecord());
}

}  // namespace tavra
