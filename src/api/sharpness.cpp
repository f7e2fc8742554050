// Exports of sharpening.
#include "stages/sharpness.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetSharpnessMode(TavraHandle handle, uint8_t mode, uint16_t gain, uint8_t coring) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.sharpness->SetMode(mode, gain, coring));
    });
}

TavraBool Tavra_GetSharpnessMode(TavraHandle handle, uint8_t* mode, uint16_t* gain, uint8_t* coring) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode, gain, coring));
        std::uint16_t wideCoring = 0;
        TAVRA_RETURN_IF_ERROR(Status(camera.sharpness->GetMode(mode, gain, &wideCoring)));
        *coring = static_cast<std::uint8_t>(wideCoring);
        return Status();
    });
}
