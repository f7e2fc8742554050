// The automatic exposure control: mode, speed, target, weights.
#include <algorithm>

#include "api/output.h"
#include "control/luminance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetALCMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.exposure->setMode(mode); });
}

TavraBool Tavra_GetALCMode(TavraHandle handle, std::uint8_t* mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode));
        return camera.exposure->mode(*mode);
    });
}

TavraBool Tavra_SetALCControlSpeed(TavraHandle handle, std::uint8_t shutterSpeed, std::uint8_t gainSpeed,
                                   std::uint8_t skipFrameCount, std::uint8_t averageFrameCount) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.exposure->setControlSpeed({shutterSpeed, gainSpeed, skipFrameCount, averageFrameCount});
        return Status();
    });
}

TavraBool Tavra_GetALCControlSpeed(TavraHandle handle, std::uint8_t* shutterSpeed, std::uint8_t* gainSpeed,
                                   std::uint8_t* skipFrameCount, std::uint8_t* averageFrameCount) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(
            api::requireOutputs(shutterSpeed, gainSpeed, skipFrameCount, averageFrameCount));
        const ControlSpeed speed = camera.exposure->controlSpeed();
        *shutterSpeed = speed.shutter;
        *gainSpeed = speed.gain;
        *skipFrameCount = speed.skipFrames;
        *averageFrameCount = speed.averageFrames;
        return Status();
    });
}

TavraBool Tavra_SetTargetBrightness(TavraHandle handle, std::uint8_t target, std::uint8_t tolerance,
                                    std::uint8_t threshold) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.exposure->setBrightnessTarget({target, tolerance, threshold});
    });
}

TavraBool Tavra_GetTargetBrightness(TavraHandle handle, std::uint8_t* target, std::uint8_t* tolerance,
                                    std::uint8_t* threshold) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(target, tolerance, threshold));
        const BrightnessTarget wanted = camera.exposure->brightnessTarget();
        *target = wanted.target;
        *tolerance = wanted.tolerance;
        *threshold = wanted.threshold;
        return Status();
    });
}

TavraBool Tavra_SetALCWeight(TavraHandle handle, const std::uint8_t* weights) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(weights));
        CLuminanceCtrl::Weights table{};
        std::copy_n(weights, table.size(), table.begin());
        camera.exposure->setWeights(table);
        return Status();
    });
}

TavraBool Tavra_GetALCWeight(TavraHandle handle, std::uint8_t* weights) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(weights));
        std::ranges::copy(camera.exposure->weights(), weights);
        return Status();
    });
}
