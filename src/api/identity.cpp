// Who a camera is and what it offers.
#include <algorithm>
#include <string>

#include "api/output.h"
#include "camera/product_names.h"
#include "camera/usb_speed.h"
#include "platform/text.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

// Copies a text with its terminator. 122: it does not fit.
template <typename Unit>
Status copyText(std::basic_string_view<Unit> text, Unit* buffer, std::size_t capacity) {
    TAVRA_RETURN_IF_ERROR(api::requireOutputs(buffer));
    if (text.size() >= capacity) return Status(error::kInsufficientBuffer);
    std::ranges::copy(text, buffer);
    buffer[text.size()] = 0;
    return Status();
}

std::u16string nameOf(const TAVRA_COMMON_PARAM& camera) {
    return productName(camera.info, camera.capabilities.samePid());
}

}  // namespace

TavraBool Tavra_HasFunction(TavraHandle handle, std::uint32_t function, std::uint32_t* present) {
    api::giveIfWanted(present, std::uint32_t{0});
    return api::getNumber(handle, present, [&](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.hasFunction(function) ? 1 : 0;
        return Status();
    });
}

TavraBool Tavra_GetCameraVersion(TavraHandle handle, std::uint16_t* vendor, std::uint16_t* productType,
                                 std::uint16_t* hardwareRevision, std::uint16_t* firmwareRevision) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(vendor, productType, hardwareRevision, firmwareRevision));
        *vendor = camera.info.vendor;
        *productType = camera.info.productType;
        *hardwareRevision = camera.info.hardwareRevision;
        *firmwareRevision = camera.info.firmwareRevision;
        return Status();
    });
}

TavraBool Tavra_GetProductNameA(TavraHandle handle, char* name, std::uint32_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return copyText<char>(platform::toNarrow(nameOf(camera)), name, size);
    });
}

TavraBool Tavra_GetProductNameW(TavraHandle handle, TavraWChar* name, std::uint32_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return copyText<TavraWChar>(nameOf(camera), name, size / sizeof(TavraWChar));
    });
}

TavraBool Tavra_GetSamePIDCameraType(TavraHandle handle, std::uint32_t* type) {
    return api::getNumber(handle, type, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.capabilities.samePid();
        return Status();
    });
}

TavraBool Tavra_GetColorArray(TavraHandle handle, std::uint16_t* code) {
    return api::getNumber(handle, code, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.colorArrayInForce();
        return Status();
    });
}

// By design: a code that is refused leaves the last error alone, and what was derived from the camera's own
// code at open stays.
TavraBool Tavra_SetColorArray(TavraHandle handle, std::uint16_t code) {
    TAVRA_COMMON_PARAM* const camera = api::validated(handle);
    if (camera == nullptr || code < 1 || code > 5) return 0;
    camera->colorArray = code;
    return 1;
}

TavraBool Tavra_GetUSBSpeed(TavraHandle handle, std::uint8_t* speed) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(speed));
        return getUsbSpeed(camera, *speed);
    });
}

TavraBool Tavra_GetUSBMaxSpeed(TavraHandle handle, std::uint8_t* speed) {
    return api::getNumber(handle, speed, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = maximumUsbSpeed(camera.info.firmwareRevision);
        return Status();
    });
}

TavraBool Tavra_GetEnableTransferBitsPerPixel(TavraHandle handle, std::uint32_t* mask) {
    return api::getNumber(handle, mask, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.info.enableTransferBits;
        return Status();
    });
}

TavraBool Tavra_GetEnableImageSize(TavraHandle handle, std::uint32_t* sizeMask, std::uint16_t* scanModeMask) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(scanModeMask));
        api::giveIfWanted(sizeMask, camera.info.enableImageSize);
        *scanModeMask = camera.info.enableScanModes;
        return Status();
    });
}

TavraBool Tavra_GetEnablePreviewPixelFormat(TavraHandle handle, std::uint32_t* mask) {
    return api::getNumber(handle, mask, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.geometry->enablePreviewFormats;
        return Status();
    });
}

TavraBool Tavra_GetEnableClock(TavraHandle handle, std::uint32_t* mask, std::uint32_t* clockValue,
                               std::uint32_t* clockMinimum, std::uint32_t* clockMaximum) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mask, clockValue, clockMinimum, clockMaximum));
        *mask = camera.info.enableClock;
        *clockValue = camera.info.clockValue;
        *clockMinimum = camera.info.clockMinimum;
        *clockMaximum = camera.info.clockMaximum;
        return Status();
    });
}

TavraBool Tavra_GetEnableTriggerVersion(TavraHandle handle, std::uint32_t* version) {
    return api::getNumber(handle, version, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.info.enableTriggerVersion;
        return Status();
    });
}
