// Exports of the colour matrix, hue and saturation.
#include "stages/color_matrix.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetColorMatrix(TavraHandle handle, uint8_t mode, const int16_t* matrix) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.colorMatrix->SetColorMatrix(mode, matrix));
    });
}

TavraBool Tavra_GetColorMatrix(TavraHandle handle, uint8_t* mode, int16_t* matrix) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.colorMatrix->GetColorMatrix(mode, matrix));
    });
}

TavraBool Tavra_SetHueSaturationMode(TavraHandle handle, uint8_t mode, uint16_t hue, uint16_t saturation) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return Status(camera.colorMatrix->SetHueSaturation(mode, static_cast<std::int16_t>(hue), saturation));
    });
}

TavraBool Tavra_GetHueSaturationMode(TavraHandle handle, uint8_t* mode, uint16_t* hue, uint16_t* saturation) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode, hue, saturation));
        std::int16_t angle = 0;
        TAVRA_RETURN_IF_ERROR(Status(camera.colorMatrix->GetHueSaturation(mode, &angle, saturation)));
        *hue = static_cast<std::uint16_t>(angle);
        return Status();
    });
}
