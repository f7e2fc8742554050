// Exports of shading correction: each is one operation of the stage.
#include "stages/shading_correction.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetShadingCorrectionMode(TavraHandle handle, std::uint32_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        IShadingCorrection& stage = *camera.shadingCorrection;
        TAVRA_RETURN_IF_ERROR(Status(stage.SetColorArray(camera.colorArrayInForce())));
        return Status(stage.SetMode(mode));
    });
}

TavraBool Tavra_GetShadingCorrectionMode(TavraHandle handle, std::uint32_t* mode) {
    return api::call(
        handle, [&](TAVRA_COMMON_PARAM& camera) { return Status(camera.shadingCorrection->GetMode(mode)); });
}

TavraBool Tavra_SetShadingCorrectionTarget(TavraHandle handle, std::uint16_t target) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.shadingCorrection->SetTarget(target));
    });
}

TavraBool Tavra_GetShadingCorrectionTarget(TavraHandle handle, std::uint16_t* target) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(target));
        return Status(camera.shadingCorrection->GetTarget(target));
    });
}

TavraBool Tavra_SetShadingCorrectionMap(TavraHandle handle, std::uint32_t width, std::uint32_t height,
                                        std::uint32_t stride, const void* data) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.shadingCorrection->SetMap(width, height, stride, data));
    });
}

TavraBool Tavra_GetShadingCorrectionMap(TavraHandle handle, std::uint32_t* width, std::uint32_t* height,
                                        std::uint32_t* stride, void* data) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.shadingCorrection->GetMap(width, height, stride, data));
    });
}
