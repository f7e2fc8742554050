// Exports of how the preview is drawn, of drawing on top of it, and of the information overlay.
#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetDisplayMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.preview.setDisplayMode(mode); });
}

TavraBool Tavra_GetDisplayMode(TavraHandle handle, std::uint8_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.displayMode;
        return Status();
    });
}

TavraBool Tavra_SetColorKey(TavraHandle handle, std::uint32_t color) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.setColorKey(color);
        return Status();
    });
}

TavraBool Tavra_GetColorKey(TavraHandle handle, std::uint32_t* color) {
    return api::getNumber(handle, color, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.colorKey;
        return Status();
    });
}

TavraBool Tavra_SetAlphaChannel(TavraHandle handle, std::uint8_t alpha) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.setAlphaChannel(alpha);
        return Status();
    });
}

TavraBool Tavra_GetAlphaChannel(TavraHandle handle, std::uint8_t* alpha) {
    return api::getNumber(handle, alpha, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.alphaChannel;
        return Status();
    });
}

TavraBool Tavra_GetDC(TavraHandle handle, TavraDC* dc) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(dc));
        return camera.preview.getDC(*dc);
    });
}

TavraBool Tavra_ReleaseDC(TavraHandle handle, TavraDC dc) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.preview.releaseDC(dc); });
}

TavraBool Tavra_GetDCWithReset(TavraHandle handle, TavraDC* dc) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(dc));
        return camera.preview.getDCWithReset(*dc);
    });
}

TavraBool Tavra_ResetOverlay(TavraHandle handle) {
    return api::call(handle, [](TAVRA_COMMON_PARAM& camera) { return camera.preview.resetOverlay(); });
}

TavraBool Tavra_SetDisplayInfoMode(TavraHandle handle, std::uint32_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.preview.displayInfoMode = mode;
        return Status();
    });
}

TavraBool Tavra_GetDisplayInfoMode(TavraHandle handle, std::uint32_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.preview.displayInfoMode;
        return Status();
    });
}
