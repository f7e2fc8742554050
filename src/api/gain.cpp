// Analogue gain, and the digital gain that the camera has.
#include "api/output.h"
#include "control/luminance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetGain(TavraHandle handle, std::uint16_t gain) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.exposure->setGain(gain); });
}

TavraBool Tavra_GetGain(TavraHandle handle, std::uint16_t* gain) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(gain));
        return camera.exposure->gain(*gain);
    });
}

TavraBool Tavra_GetMaxGain(TavraHandle handle, std::uint16_t* gain) {
    return api::getNumber(handle, gain, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->maxGain();
        return Status();
    });
}

TavraBool Tavra_GetGainDBFromSettingValue(TavraHandle handle, std::uint16_t value, float* decibels) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(decibels));
        *decibels = camera.exposure->gainDecibels(value);
        return Status();
    });
}

TavraBool Tavra_SetDigitalGain(TavraHandle handle, std::uint16_t gain) {
    bool available = false;
    const TavraBool done = api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        available = camera.exposure->hasDigitalGain();
        return camera.exposure->setDigitalGain(gain);
    });
    // By design: a camera without it is no success and no error either.
    return available ? done : 0;
}

TavraBool Tavra_GetDigitalGain(TavraHandle handle, std::uint16_t* gain) {
    return api::getNumber(handle, gain, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->digitalGain();
        return Status();
    });
}
