// Exports of the tone curves. The camera's own gamma is in camera_values.cpp.
#include "stages/gamma.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr std::uint16_t kBits = 8;  // of the curves that this interface sets and reads

}  // namespace

TavraBool Tavra_SetGammaMode(TavraHandle handle, uint8_t index, uint8_t mode, uint16_t gamma,
                             const uint8_t* table) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.gamma->SetGamma(index, mode, gamma, 0, 0, table, kBits));
    });
}

TavraBool Tavra_GetGammaMode(TavraHandle handle, uint8_t index, uint8_t* mode, uint16_t* gamma,
                             uint8_t* table) {
    return Tavra_GetGammaModeEx(handle, index, mode, gamma, nullptr, nullptr, table);
}

TavraBool Tavra_SetGammaModeEx(TavraHandle handle, uint8_t index, uint8_t mode, uint16_t gamma,
                               uint16_t brightness, uint8_t contrast, const uint8_t* table) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.gamma->SetGamma(index, mode, gamma, static_cast<std::int16_t>(brightness),
                                             contrast, table, kBits));
    });
}

TavraBool Tavra_GetGammaModeEx(TavraHandle handle, uint8_t index, uint8_t* mode, uint16_t* gamma,
                               uint16_t* brightness, uint8_t* contrast, uint8_t* table) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::int16_t offset = 0;
        std::uint16_t bits = 0;  // bytes
        TAVRA_RETURN_IF_ERROR(
            Status(camera.gamma->GetGamma(index, mode, gamma, &offset, contrast, table, &bits)));
        api::giveIfWanted(brightness, static_cast<std::uint16_t>(offset));
        return Status();
    });
}
