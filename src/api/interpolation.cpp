// Exports of colour interpolation: its method, and the conversions of frames and images in the caller's
// memory.
#include "stages/color_interpolation.h"

#include "api/output.h"
#include "base/pixel_format.h"
#include "stages/bit_reduction.h"
#include "stages/channel_swap.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_SetColorInterpolationMethod(TavraHandle handle, uint8_t method) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (method > TAVRA_INTERPOLATION_CELL_BILINEAR) return Status(error::kInvalidArgument);
        camera.interpolationMethod = method;
        return Status();
    });
}

TavraBool Tavra_GetColorInterpolationMethod(TavraHandle handle, uint8_t* method) {
    return api::getNumber(handle, method, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.interpolationMethod;
        return Status();
    });
}

TavraBool Tavra_ConvertRawToBGR(TavraHandle handle, uint32_t width, uint32_t height, const uint8_t* source,
                                uint8_t* destination, uint8_t method, uint32_t format) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(source, destination));
        const auto pixelBytes = static_cast<std::uint16_t>(bytesPerPixel(format));
        return Status(camera.colorInterpolation->ConvertEx(width, height, width, source, 0, destination,
                                                           method, camera.colorArrayInForce(), pixelBytes));
    });
}

// An unknown code is told by the result alone: the last error stays.
TavraBool Tavra_ConvTo8BitsImage(TavraHandle handle, uint32_t width, uint32_t height, uint32_t transferCode,
                                 const void* source, uint8_t* destination) {
    bool known = false;
    const TavraBool result = api::call(handle, [&](TAVRA_COMMON_PARAM&) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(source, destination));
        known = reduceTo8Bits(width, height, transferCode, source, destination);
        return Status();
    });
    return result != 0 && known ? 1 : 0;
}

TavraBool Tavra_ConvertBitmapBGR24ToRGB24(TavraHandle handle, uint32_t width, uint32_t height,
                                          uint8_t* image) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM&) {
        if (height == 0) return Status();
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(image));
        swapRedBlue24(width, height, image);
        return Status();
    });
}
