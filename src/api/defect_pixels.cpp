// Defect pixels: the camera's list, its mode, and the search that fills it.
#include "camera/defect_pixels.h"

#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_DetectDefectPixel(TavraHandle handle, uint32_t width, uint32_t height, const uint8_t* image,
                                  uint16_t threshold) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return detectDefectPixels(camera, {width, height, image}, threshold);
    });
}

TavraBool Tavra_GetEnableDefectPixelCorrectionCount(TavraHandle handle, uint16_t* count) {
    return api::getNumber(handle, count, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = defectPixelCapacity(camera);
        return Status();
    });
}

TavraBool Tavra_SetDefectPixelCorrectionMode(TavraHandle handle, uint16_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setDefectPixelMode(camera, mode); });
}

TavraBool Tavra_GetDefectPixelCorrectionMode(TavraHandle handle, uint16_t* mode) {
    return api::getNumber(handle, mode, getDefectPixelMode);
}

TavraBool Tavra_SetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t x, uint32_t y) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return writeDefectPosition(camera, index, {x, y});
    });
}

TavraBool Tavra_GetDefectPixelCorrectionPosition(TavraHandle handle, uint16_t index, uint32_t* x,
                                                 uint32_t* y) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(x, y));
        DefectPosition position;
        TAVRA_RETURN_IF_ERROR(readDefectPosition(camera, index, position));
        *x = position.x;
        *y = position.y;
        return Status();
    });
}
