// Exports of trigger, exposure mode, I/O pins and LEDs.
#include "capture/trigger.h"

#include "api/call.h"
#include "capture/exposure_mode.h"
#include "capture/io_pins.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

// A getter with one 32-bit output: 87 without a place for it.
template <typename Operation>
TavraBool get(TavraHandle handle, uint32_t* output, Operation operation) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return output != nullptr ? operation(camera, *output) : Status(error::kInvalidArgument);
    });
}

}  // namespace

TavraBool Tavra_SetTriggerMode(TavraHandle handle, uint32_t mode) {
    return api::call(handle, [=](auto& camera) { return writeTriggerWord(camera, mode); });
}

TavraBool Tavra_GetTriggerMode(TavraHandle handle, uint32_t* mode) {
    return get(handle, mode, readTriggerWord);
}

TavraBool Tavra_SetTriggerMode2(TavraHandle handle, uint32_t selector, uint32_t value) {
    return api::call(handle, [=](auto& camera) { return setTriggerMode(camera, selector, value); });
}

TavraBool Tavra_GetTriggerMode2(TavraHandle handle, uint32_t selector, uint32_t* value) {
    return get(handle, value,
               [=](auto& camera, uint32_t& out) { return triggerMode(camera, selector, out); });
}

TavraBool Tavra_SetTriggerSource(TavraHandle handle, uint32_t selector, uint32_t source) {
    return api::call(handle, [=](auto& camera) { return setTriggerSource(camera, selector, source); });
}

TavraBool Tavra_GetTriggerSource(TavraHandle handle, uint32_t selector, uint32_t* source) {
    return get(handle, source,
               [=](auto& camera, uint32_t& out) { return triggerSource(camera, selector, out); });
}

TavraBool Tavra_SetTriggerDelay(TavraHandle handle, uint32_t selector, uint32_t delay) {
    return api::call(handle, [=](auto& camera) { return setTriggerDelay(camera, selector, delay); });
}

TavraBool Tavra_GetTriggerDelay(TavraHandle handle, uint32_t selector, uint32_t* delay) {
    return get(handle, delay,
               [=](auto& camera, uint32_t& out) { return triggerDelay(camera, selector, out); });
}

TavraBool Tavra_SetTriggerTiming(TavraHandle handle, uint32_t index, uint32_t value) {
    return api::call(handle, [=](auto& camera) { return setTriggerTiming(camera, index, value); });
}

TavraBool Tavra_GetTriggerTiming(TavraHandle handle, uint32_t index, uint32_t* value) {
    return get(handle, value, [=](auto& camera, uint32_t& out) { return triggerTiming(camera, index, out); });
}

TavraBool Tavra_SoftTrigger(TavraHandle handle) {
    return api::call(handle, softTrigger);
}

TavraBool Tavra_SoftSubTrigger(TavraHandle handle) {
    return api::call(handle, softSubTrigger);
}

TavraBool Tavra_TriggerReadOut(TavraHandle handle) {
    return api::call(handle, triggerReadOut);
}

TavraBool Tavra_TriggerSoftware(TavraHandle handle, uint32_t selector) {
    return api::call(handle, [=](auto& camera) { return triggerSoftware(camera, selector); });
}

TavraBool Tavra_ResetCounter(TavraHandle handle) {
    return api::call(handle, resetCounter);
}

TavraBool Tavra_SetExposureMode(TavraHandle handle, uint32_t mode) {
    return api::call(handle, [=](auto& camera) { return setExposureMode(camera, mode); });
}

TavraBool Tavra_GetExposureMode(TavraHandle handle, uint32_t* mode) {
    return get(handle, mode, exposureMode);
}

TavraBool Tavra_SetSensorShutterMode(TavraHandle handle, uint32_t mode) {
    return api::call(handle, [=](auto& camera) { return setSensorShutterMode(camera, mode); });
}

TavraBool Tavra_GetSensorShutterMode(TavraHandle handle, uint32_t* mode) {
    return get(handle, mode, sensorShutterMode);
}

TavraBool Tavra_IsTriggerSelectorSupported(TavraHandle handle, uint32_t selector) {
    const TAVRA_COMMON_PARAM* const camera = api::validated(handle);
    return camera != nullptr && triggerSelectorExists(*camera, selector) ? 1 : 0;
}

TavraBool Tavra_GetIOExistence(TavraHandle handle, uint32_t* mask) {
    return get(handle, mask, [](auto& camera, uint32_t& out) {
        out = ioExistence(camera);
        return Status();
    });
}

TavraBool Tavra_GetIOPinDirection(TavraHandle handle, uint32_t* value) {
    return get(handle, value,
               [](auto& camera, uint32_t& out) { return readIoWord(camera, IoWord::Direction, out); });
}

TavraBool Tavra_SetIOPinDirection(TavraHandle handle, uint16_t value) {
    return api::call(handle, [=](auto& camera) { return writeIoWord(camera, IoWord::Direction, value); });
}

TavraBool Tavra_GetIOPinPolarity(TavraHandle handle, uint32_t* value) {
    return get(handle, value,
               [](auto& camera, uint32_t& out) { return readIoWord(camera, IoWord::Polarity, out); });
}

TavraBool Tavra_SetIOPinPolarity(TavraHandle handle, uint16_t value) {
    return api::call(handle, [=](auto& camera) { return writeIoWord(camera, IoWord::Polarity, value); });
}

TavraBool Tavra_GetIOPinStatus(TavraHandle handle, uint32_t* value) {
    return get(handle, value,
               [](auto& camera, uint32_t& out) { return readIoWord(camera, IoWord::Status, out); });
}

TavraBool Tavra_SetIOPinStatus(TavraHandle handle, uint16_t value) {
    return api::call(handle, [=](auto& camera) { return writeIoWord(camera, IoWord::Status, value); });
}

TavraBool Tavra_GetIOPinMode(TavraHandle handle, uint32_t pin, uint32_t* mode) {
    return get(handle, mode, [=](auto& camera, uint32_t& out) { return readPinMode(camera, pin, out); });
}

TavraBool Tavra_SetIOPinMode(TavraHandle handle, uint32_t pin, uint16_t mode) {
    return api::call(handle, [=](auto& camera) { return writePinMode(camera, pin, mode); });
}

TavraBool Tavra_GetSwStatus(TavraHandle handle, uint32_t* status) {
    return get(handle, status, readSwitches);
}

TavraBool Tavra_GetLEDExistence(TavraHandle handle, uint32_t* mask) {
    return get(handle, mask, [](auto& camera, uint32_t& out) {
        out = ledExistence(camera);
        return Status();
    });
}
