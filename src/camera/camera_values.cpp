#include "camera/camera_values.h"

#include "camera/common_param.h"
#include "camera/function_table.h"

namespace tavra {
namespace {

constexpr std::uint32_t kNoPage = 0xFFFFFFFF;
constexpr std::uint16_t kNoAddress = 0xFFFF;

struct ValueRow {
    unsigned capabilityWord;
    unsigned capabilityBit;
    std::uint32_t page;  // kNoPage: the status word in any case
    std::uint32_t offset;
    std::uint16_t readAddress;  // kNoAddress: only in a register page
    std::uint16_t writeAddress;
};

constexpr ValueRow kValues[] = {
    {8, 6, page::kAnalog, 8, 19, 0x8013},                 // AnalogBlackLevel
    {3, 7, kNoPage, 0, 21, 0x8015},                       // DigitalClamp
    {3, 9, kNoPage, 0, 77, 0x804D},                       // Gamma
    {16, 10, page::kSensor, 12, kNoAddress, kNoAddress},  // AdjustmentMode
};

struct LimitRow {
    unsigned capabilityWord;
    unsigned capabilityBit;
    std::uint32_t offset;  // in the page of limits
};

constexpr LimitRow kLimits[] = {
    {8, 6, 112},  // AnalogBlackLevel
    {3, 7, 116},  // DigitalClamp
};
constexpr std::uint32_t kLimitUntold = 255;

constexpr std::uint32_t kResetSwitchOffset = 24;
constexpr std::uint16_t kResetSwitchAddress = 14;
constexpr std::uint32_t kPriorityOffset = 40;
constexpr std::uint32_t kPriorityShift = 2;
constexpr std::uint32_t kPriorityBits = 3;
constexpr std::uint32_t kTemperatureOffset = 92;

const ValueRow& row(CameraValue which) {
    return kValues[static_cast<unsigned>(which)];
}

bool inPage(const TAVRA_COMMON_PARAM& camera, const ValueRow& value) {
    return value.page != kNoPage && camera.registerPages != nullptr;
}

bool present(const TAVRA_COMMON_PARAM& camera, const ValueRow& value) {
    return camera.can(value.capabilityWord, value.capabilityBit) &&
           (inPage(camera, value) || value.readAddress != kNoAddress);
}

Status readWord(TAVRA_COMMON_PARAM& camera, std::uint16_t address, std::uint32_t& value) {
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera.control.readStatusWord(address, word));
    value = word;
    return Status();
}

Status readResetWord(TAVRA_COMMON_PARAM& camera, std::uint32_t& word) {
    if (camera.registerPages) return camera.registerPages->read(page::kDevice, kResetSwitchOffset, word);
    return readWord(camera, kResetSwitchAddress, word);
}

bool hasResetSwitch(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(4, 4);
}

bool hasPriorityMode(const TAVRA_COMMON_PARAM& camera) {
    return camera.registerPages != nullptr && camera.hasFunction(function::kPriorityMode);
}

}  // namespace

Status getCameraValue(TAVRA_COMMON_PARAM& camera, CameraValue which, std::uint32_t& value) {
    const ValueRow& place = row(which);
    value = 0;
    if (!present(camera, place)) return Status();
    if (inPage(camera, place)) return camera.registerPages->read(place.page, place.offset, value);
    return readWord(camera, place.readAddress, value);
}

Status setCameraValue(TAVRA_COMMON_PARAM& camera, CameraValue which, std::uint32_t value) {
    const ValueRow& place = row(which);
    if (!present(camera, place)) return Status(error::kInvalidArgument);
    if (inPage(camera, place)) return camera.registerPages->write(place.page, place.offset, value);
    return camera.control.writeStatusWord(place.writeAddress, static_cast<std::uint16_t>(value));
}

Status getCameraLimit(TAVRA_COMMON_PARAM& camera, CameraLimit which, std::uint32_t& limit) {
    const LimitRow& place = kLimits[static_cast<unsigned>(which)];
    limit = 0;
    if (!camera.can(place.capabilityWord, place.capabilityBit)) return Status();
    std::uint32_t told = 0;
    if (camera.registerPages) {
        TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kLimits, place.offset, told));
    }
    limit = told != 0 ? told : kLimitUntold;
    return Status();
}

Status getResetSwitch(TAVRA_COMMON_PARAM& camera, std::uint32_t& enabled) {
    if (!hasResetSwitch(camera)) return Status(error::kInvalidArgument);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readResetWord(camera, word));
    enabled = word & 1u;
    return Status();
}

Status setResetSwitch(TAVRA_COMMON_PARAM& camera, std::uint32_t enabled) {
    if (!hasResetSwitch(camera)) return Status(error::kInvalidArgument);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readResetWord(camera, word));
    word = (word & ~1u) | (enabled & 1u);
    if (camera.registerPages) return camera.registerPages->write(page::kDevice, kResetSwitchOffset, word);
    return camera.control.writeStatusWord(kResetSwitchAddress, static_cast<std::uint16_t>(word));
}

// By design: what is read is not shifted down to what is set; applications rely on either.
Status getPriorityMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode) {
    if (!hasPriorityMode(camera)) return Status(error::kNotSupported);
    return camera.registerPages->read(page::kPriority, kPriorityOffset, mode);
}

Status setPriorityMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode) {
    if (!hasPriorityMode(camera)) return Status(error::kNotSupported);
    std::uint32_t value = 0;
    TAVRA_RETURN_IF_ERROR(camera.registerPages->read(page::kPriority, kPriorityOffset, value));
    value = (value & ~(kPriorityBits << kPriorityShift)) | (mode & kPriorityBits) << kPriorityShift;
    return camera.registerPages->write(page::kPriority, kPriorityOffset, value);
}

// By design: one register for every sensor number.
Status getTemperature(TAVRA_COMMON_PARAM& camera, std::uint32_t sensor, std::uint32_t& temperature) {
    temperature = 0;
    const bool missing = sensor == 1 && !camera.can(16, 9);
    if (missing || camera.registerPages == nullptr) return Status(error::kInvalidArgument);
    return camera.registerPages->read(page::kLimits, kTemperatureOffset, temperature);
}

}  // namespace tavra
