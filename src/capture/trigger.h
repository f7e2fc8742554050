// Trigger and exposure modes of a camera, one model over two generations: a 32-bit trigger word on older
// cameras, one register per setting on newer ones.
//
// Operations of the handle record; any thread. The changes of the trigger word are read, modify, write
// without a lock: the application serialises them. No trigger state is kept here.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/common_param.h"

namespace tavra {

// The trigger word as the camera has it. Writing it re-reads the scan information.
Status readTriggerWord(TAVRA_COMMON_PARAM& camera, std::uint32_t& word);
Status writeTriggerWord(TAVRA_COMMON_PARAM& camera, std::uint32_t word);

bool triggerSelectorExists(const TAVRA_COMMON_PARAM& camera, std::uint32_t selector);

// 87: the selector does not exist, or the value is not one of 0 and 1.
Status setTriggerMode(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t value);
Status triggerMode(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& value);

// Sources are numbers of the camera: below 6, below 3 on cameras without registers.
Status setTriggerSource(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t source);
Status triggerSource(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& source);

Status setTriggerDelay(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t delay);
Status triggerDelay(TAVRA_COMMON_PARAM& camera, std::uint32_t selector, std::uint32_t& delay);

// Timings 0 to 5; any other index is timing 0.
Status setTriggerTiming(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t value);
Status triggerTiming(TAVRA_COMMON_PARAM& camera, std::uint32_t index, std::uint32_t& value);

Status softTrigger(TAVRA_COMMON_PARAM& camera);
Status softSubTrigger(TAVRA_COMMON_PARAM& camera);
Status triggerReadOut(TAVRA_COMMON_PARAM& camera);
Status triggerSoftware(TAVRA_COMMON_PARAM& camera, std::uint32_t selector);
Status resetCounter(TAVRA_COMMON_PARAM& camera);

}  // namespace tavra
