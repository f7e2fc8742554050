// Exports of noise reduction.
#include "stages/noise_reduction.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetNoiseReductionMode(TavraHandle handle, uint32_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.noiseReduction.setMode(mode);
        return Status();
    });
}

TavraBool Tavra_GetNoiseReductionMode(TavraHandle handle, uint32_t* mode) {
    api::giveIfWanted(mode, std::uint32_t{TAVRA_NOISE_REDUCTION_OFF});
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.noiseReduction.mode();
        return Status();
    });
}
