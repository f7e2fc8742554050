#include "capture/trigger.h"

#include "base/first_failure.h"
#include "camera/function_table.h"
#include "camera/geometry.h"
#include "capture/trigger_registers.h"

namespace tavra {
namespace {

using namespace trigger;

constexpr std::uint8_t kSoftTriggerRequest = 48;
constexpr std::uint32_t kWordSources = 3;      // sources of the trigger word
constexpr std::uint32_t kRegisterSources = 6;  // sources of a selector's own register

bool hasSeparateSets(const TAVRA_COMMON_PARAM& camera) {
    return camera.can(18, 12);
}

Status readAcquisition(TAVRA_COMMON_PARAM& camera, std::uint32_t offset, std::uint32_t& value) {
    return camera.registerPages->read(page::kAcquisition, offset, value);
}

Status writeAcquisition(TAVRA_COMMON_PARAM& camera, std::uint32_t offset, std::uint32_t value) {
    return camera.registerPages->write(page::kAcquisition, offset, value);
}

// A mode register is written, then the camera drops its frames, then the change takes effect. All three
// requests go out whatever the ones before gave; the register's failure is the one told.
Status writeModeRegister(TAVRA_COMMON_PARAM& camera, std::uint32_t offset, std::uint32_t value) {
    const Status written = writeAcquisition(camera, offset, value);
    const Status cleared = camera.control.clearBuffer();
    const Status applied = camera.control.applyChange();
    return firstFailure(written, firstFailure(cleared, applied));
}

Status setModeByRegister(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t value) {
    if (selector >= kSelectors.size()) return Status(error::kInvalidArgument);
    if (hasSeparateSets(camera)) return writeModeRegister(camera, kSelectors[selector].mode, value);
    if (selector != 3) return writeModeRegister(camera, kSelectors[selector == 1 ? 1 : 0].mode, value);
    std::uint32_t exposureMode = 0;
    TAVRA_RETURN_IF_ERROR(readAcquisition(camera, kExposureModeOffset, exposureMode));
    return exposureMode == 3 ? writeModeRegister(camera, kSelectors[0].mode, value) : Status();
}

// The low pair of the trigger word after a selector is switched on or off.
std::uint32_t switchedWord(std::uint32_t word, std::uint32_t selector, bool on) {
    const std::uint32_t pair = word & kOnMask;
    const std::uint32_t rest = word & ~kOnMask;
    if (selector == 4) {
        if (on) return rest | kSecondMode;
        return rest | (pair == kSecondMode ? kFirstMode : pair);
    }
    if (!on) return rest;
    return rest | (pair == 0 ? kFirstMode : pair);
}

Status modeByRegister(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& value) {
    if (selector >= kSelectors.size()) return Status(error::kInvalidArgument);
    if (hasSeparateSets(camera)) return readAcquisition(camera, kSelectors[selector].mode, value);
    if (selector == 0 || selector == 2) return readAcquisition(camera, kSelectors[0].mode, value);
    std::uint32_t exposureMode = 0;
    TAVRA_RETURN_IF_ERROR(readAcquisition(camera, kExposureModeOffset, exposureMode));
    if (selector == 1)
        return exposureMode > 1 ? Status() : readAcquisition(camera, kSelectors[1].mode, value);
    return exposureMode == 3 ? readAcquisition(camera, kSelectors[0].mode, value) : Status();
}

Status modeByWord(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& value) {
    if (selector == 1 || selector > 4) return Status(error::kInvalidArgument);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    const std::uint32_t pair = word & kOnMask;
    switch (selector) {
        case 3: value = field(word, kExposureMask, kExposureShift) == 2 && pair != 0; break;
        case 4: value = pair == kSecondMode; break;
        default: value = pair != 0; break;
    }
    return Status();
}

Status setSourceByRegister(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t source) {
    if (selector >= kSelectors.size() || source >= kRegisterSources) return Status(error::kInvalidArgument);
    std::uint32_t offset = kSelectors[selector].source;
    if (!hasSeparateSets(camera) && selector != 1) {
        if (source >= kWordSources) return Status(error::kInvalidArgument);
        offset = kSelectors[0].source;
    }
    TAVRA_RETURN_IF_ERROR(writeAcquisition(camera, offset, source));
    return camera.control.applyChange();
}

Status setSourceByWord(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t source) {
    if (selector == 1 || selector > 4 || source >= kWordSources) return Status(error::kInvalidArgument);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    if (selector == 4) {
        word = source == 2 ? word | kSelector4Source : word & ~kSelector4Source;
    } else {
        word = withField(word, kSourceMask, kSourceShift, source);
    }
    return writeTriggerWord(camera, word);
}

Status sourceByRegister(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& source) {
    if (selector >= kSelectors.size()) return Status(error::kInvalidArgument);
    const std::size_t set = hasSeparateSets(camera) || selector == 1 ? selector : 0;
    return readAcquisition(camera, kSelectors[set].source, source);
}

Status sourceByWord(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& source) {
    if (selector == 1) return Status();  // the trigger word has no such source: 0
    if (selector > 4) return Status(error::kInvalidArgument);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    if (selector == 4) {
        source = (word & kSelector4Source) != 0 ? 2 : 1;
    } else if (selector != 3 || field(word, kExposureMask, kExposureShift) == 2) {
        source = field(word, kSourceMask, kSourceShift);
    }
    return Status();
}

std::uint16_t timingAddress(std::uint32_t index) {
    return static_cast<std::uint16_t>(kFirstTiming + (index < kTimings ? 2 * index : 0));
}

Status command(TAVRA_COMMON_PARAM& camera, std::uint16_t value) {
    return camera.control.writeStatusWord(ControlChannel::kCommandWord, value);
}

}  // namespace

Status readTriggerWord(TAVRA_COMMON_PARAM& camera, std::uint32_t& word) {
    return camera.control.readStatusLong(kWord, word);
}

Status writeTriggerWord(TAVRA_COMMON_PARAM& camera, std::uint32_t word) {
    TAVRA_RETURN_IF_ERROR(camera.control.writeStatusLong(kWord | kWrite, word));
    return readScanInformation(camera);
}

bool triggerSelectorExists(const TAVRA_COMMON_PARAM& camera, std::uint32_t selector) {
    switch (selector) {
        case 0: return camera.hasFunction(function::kTriggerSelector0);
        case 1: return camera.hasFunction(function::kTriggerSelector1);
        case 2:
        case 3: return camera.hasFunction(function::kTriggerSelectors2And3);
        case 4: return camera.legacy() || !camera.can(1, 13);
        default: return false;
    }
}

Status setTriggerMode(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t value) {
    if (!triggerSelectorExists(camera, selector) || value > 1) return Status(error::kInvalidArgument);
    if (camera.registerPages) return setModeByRegister(camera, selector, value);
    std::uint32_t word = 0;
    TAVRA_RETURN_IF_ERROR(readTriggerWord(camera, word));
    return writeTriggerWord(camera, switchedWord(word, selector, value == 1));
}

Status triggerMode(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& value) {
    value = 0;
    return camera.registerPages ? modeByRegister(camera, selector, value)
                                : modeByWord(camera, selector, value);
}

Status setTriggerSource(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t source) {
    if (!triggerSelectorExists(camera, selector)) return Status(error::kInvalidArgument);
    return camera.registerPages ? setSourceByRegister(camera, selector, source)
                                : setSourceByWord(camera, selector, source);
}

Status triggerSource(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& source) {
    source = 0;
    return camera.registerPages ? sourceByRegister(camera, selector, source)
                                : sourceByWord(camera, selector, source);
}

Status setTriggerDelay(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t delay) {
    if (!triggerSelectorExists(camera, selector)) return Status(error::kInvalidArgument);
    if (camera.registerPages) return writeAcquisition(camera, kDelayOffset, delay);
    return camera.control.writeStatusLong(kFirstTiming | kWrite, delay);
}

Status triggerDelay(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& delay) {
    delay = 0;
    if (!triggerSelectorExists(camera, selector)) return Status(error::kInvalidArgument);
    if (camera.registerPages) return readAcquisition(camera, kDelayOffset, delay);
    return camera.control.readStatusLong(kFirstTiming, delay);
}

Status setTriggerTiming(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t value) {
    return camera.control.writeStatusLong(timingAddress(index) | kWrite, value);
}

Status triggerTiming(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t& value) {
    value = 0;
    return camera.control.readStatusLong(timingAddress(index), value);
}

Status softTrigger(TAVRA_COMMON_PARAM& camera) {
    return camera.control.out(kSoftTriggerRequest, 0, 0, {});
}

Status softSubTrigger(TAVRA_COMMON_PARAM& camera) {
    return command(camera, kCommandSoftSubTrigger);
}

Status triggerReadOut(TAVRA_COMMON_PARAM& camera) {
    return command(camera, kCommandReadOut);
}

Status resetCounter(TAVRA_COMMON_PARAM& camera) {
    return command(camera, kCommandResetCounter);
}

Status triggerSoftware(TAVRA_COMMON_PARAM& camera, std::uint32_t selector) {
    if (selector > 4) return Status(error::kInvalidArgument);
    if (camera.registerPages) {
        const std::uint32_t masks[] = {1, 8, hasSeparateSets(camera) ? 16u : 1u, 2, 4};
        return writeAcquisition(camera, kSoftwareOffset, masks[selector]);
    }
    switch (selector) {
        case 0:
        case 2: return softTrigger(camera);
        case 3: return softSubTrigger(camera);
        case 4: return triggerReadOut(camera);
        default: return Status(error::kInvalidArgument);
    }
}

}  // namespace tavra
