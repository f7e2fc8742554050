#include "capture/exposure_mode.h"

#include "camera/function_table.h"
#include "capture/trigger.h"
#include "capture/trigger_registers.h"
#include "control/luminance_ctrl_usb.h"

namespace tavra {
namespace {

using namespace trigger;

constexpr std::uint32_t kTriggerWidth = 2;
constexpr std::uint32_t kFurtherMode = 3;
constexpr std::uint32_t kOnlyShutterMode = 2;  // of a camera without a choice

// Sensor shutter modes that a camera offers, as bits of the mode numbers.
std::uint32_t shutterModes(const TAVRA_COMMON_PARAM& camera) {
    const bool first = camera.can(1, 12);
    const bool second = camera.can(4, 8);
    if (!first && !second) return 1u << kOnlyShutterMode;
    return 1u << 0 | (first ? 1u << 1 : 0u) | (second ? 1u << 2 : 0u);
}

bool hasShutterChoice(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(1, 12) || camera.can(4, 8);
}

bool hasFurtherMode(const TAVRA_COMMON_PARAM& camera) {
    return !camera.legacy() && (isFirstBoardOfEarlyType(camera.info) || camera.can(0, 1));
}

// A register write, then it takes effect, then the camera drops the frames from before.
Status writeAndRestart(TAVRA_COMMON_PARAM& camera, std::uint32_t page, std::uint32_t offset,
                       std::uint32_t value) {
    TAVRA_RETURN_IF_ERROR(camera.registerPages->write(page, offset, value));
    TAVRA_RETURN_IF_ERROR(camera.control.applyChange());
    return camera.control.clearBuffer();
}

Status changeTriggerWord(TAVRA_COMMON_PARAM& camera, std::uint32_t mask, unsigned shift,
                         std::uint32_t value) {
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    return writeTriggerWord(camera, withField(word, mask, shift, value));
}

}  // namespace

Status setExposureMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode) {
    if (mode > kFurtherMode) return Status(error::kInvalidArgument);
    if (mode == kFurtherMode && !hasFurtherMode(camera)) return Status(error::kInvalidArgument);
    if (camera.registerPages) return writeAndRestart(camera, page::kAcquisition, kExposureModeOffset, mode);
    const std::uint32_t bits = mode >= kTriggerWidth ? mode - 1 : 0;
    TAVRA_RETURN_IF_ERROR(changeTriggerWord(camera, kExposureMask, kExposureShift, bits));
    return mode == 0 ? camera.exposure->setExposureClocks(0) : Status();
}

Status exposureMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode) {
    mode = 1;
    if (camera.registerPages)
        return camera.registerPages->read(page::kAcquisition, kExposureModeOffset, mode);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    const std::uint32_t bits = field(word, kExposureMask, kExposureShift);
    if (bits == 0) {
        std::uint32_t clocks = 0;
        TAVRA_RETURN_IF_ERROR(camera.exposure->exposureClocks(clocks));
        mode = clocks != 0 ? 1 : 0;
    } else if (bits < kFurtherMode) {
        mode = bits + 1;
    }  // else both bits, which no mode sets: 1
    return Status();
}

Status setSensorShutterMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode) {
    if (mode > 2 || (shutterModes(camera) >> mode & 1u) == 0) return Status(error::kInvalidArgument);
    if (!hasShutterChoice(camera)) return Status();
    if (camera.registerPages) return writeAndRestart(camera, page::kSensor, kSensorShutterOffset, mode * 2);
    return changeTriggerWord(camera, kShutterMask, kShutterShift, mode);
}

Status sensorShutterMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode) {
    mode = kOnlyShutterMode;
    if (!hasShutterChoice(camera)) return Status();
    std::uint32_t value = 0;
    if (camera.registerPages) {
        TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kSensor, kSensorShutterOffset, value));
        mode = value / 2;
        return Status();
    }
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, value));
    mode = field(value, kShutterMask, kShutterShift);
    return Status();
}

}  // namespace tavra
