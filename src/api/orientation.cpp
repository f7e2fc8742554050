// Exports of mirror and rotation.
#include "api/output.h"
#include "camera/mirror.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetMirrorMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setMirrorMode(camera, mode); });
}

TavraBool Tavra_GetMirrorMode(TavraHandle handle, std::uint8_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.mirrorMode;
        return Status();
    });
}

TavraBool Tavra_GetEnableMirrorMode(TavraHandle handle, std::uint8_t* mask) {
    return api::getNumber(handle, mask, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = enabledMirrorModes(camera);
        return Status();
    });
}

TavraBool Tavra_SetRotationMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setRotationMode(camera, mode); });
}

TavraBool Tavra_GetRotationMode(TavraHandle handle, std::uint8_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.rotationMode;
        return Status();
    });
}
