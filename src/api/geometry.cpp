// Image size, regions, skipping and binning, clock, frame rate and formats.
#include "camera/geometry.h"

#include "api/output.h"
#include "camera/frame_timing.h"
#include "tavra/tavra_api.h"

using namespace tavra;

TavraBool Tavra_GetImageSize(TavraHandle handle, std::uint32_t, std::uint16_t* mode, std::uint32_t* x,
                             std::uint32_t* y, std::uint32_t* width, std::uint32_t* height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode, x, y, width, height));
        const ScanRecord scan = camera.geometry->scanRecord();
        const ScanRecord::Region main = scan.region(0);
        *mode = scan.scanMode();
        *x = main.x;
        *y = main.y;
        *width = main.width;
        *height = main.height;
        return Status();
    });
}

TavraBool Tavra_SetImageSize(TavraHandle handle, std::uint32_t, std::uint16_t mode, std::uint32_t x,
                             std::uint32_t y, std::uint32_t width, std::uint32_t height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return setImageSize(camera, mode, {width, height, x, y});
    });
}

TavraBool Tavra_GetMaximumImageSize(TavraHandle handle, std::uint32_t* width, std::uint32_t* height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(width, height));
        *width = camera.info.maximumWidth;
        *height = camera.info.maximumHeight;
        return Status();
    });
}

TavraBool Tavra_GetMaxROICount(TavraHandle handle, std::uint32_t* count) {
    return api::getNumber(handle, count, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.geometry->GetMaxROICount();
        return Status();
    });
}

TavraBool Tavra_GetROI(TavraHandle handle, std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x,
                       std::uint32_t* y, std::uint32_t* width, std::uint32_t* height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        const ScanRecord scan = camera.geometry->scanRecord();
        if (index >= scan.regionCount()) return Status(error::kInvalidArgument);
        const ScanRecord::Region region = scan.region(index);
        api::giveIfWanted(enabled, std::uint32_t{scan.regionEnabled(index) ? 1u : 0u});
        api::giveIfWanted(x, region.x);
        api::giveIfWanted(y, region.y);
        api::giveIfWanted(width, region.width);
        api::giveIfWanted(height, region.height);
        return Status();
    });
}

TavraBool Tavra_SetROI(TavraHandle handle, std::uint32_t index, std::uint32_t enabled, std::uint32_t x,
                       std::uint32_t y, std::uint32_t width, std::uint32_t height) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return setRegion(camera, index, enabled, {width, height, x, y});
    });
}

TavraBool Tavra_GetSkippingAndBinning(TavraHandle handle, std::uint8_t* hSkipping, std::uint8_t* vSkipping,
                                      std::uint8_t* hBinning, std::uint8_t* vBinning) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(hSkipping, vSkipping, hBinning, vBinning));
        SkippingAndBinning factors;
        TAVRA_RETURN_IF_ERROR(getSkippingAndBinning(camera, factors));
        *hSkipping = factors.horizontalSkipping;
        *vSkipping = factors.verticalSkipping;
        *hBinning = factors.horizontalBinning;
        *vBinning = factors.verticalBinning;
        return Status();
    });
}

TavraBool Tavra_SetSkippingAndBinning(TavraHandle handle, std::uint8_t hSkipping, std::uint8_t vSkipping,
                                      std::uint8_t hBinning, std::uint8_t vBinning) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return setSkippingAndBinning(camera, {hSkipping, vSkipping, hBinning, vBinning});
    });
}

TavraBool Tavra_GetBinningSumMode(TavraHandle handle, std::uint16_t* mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode));
        return getBinningSumMode(camera, *mode);
    });
}

TavraBool Tavra_SetBinningSumMode(TavraHandle handle, std::uint16_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setBinningSumMode(camera, mode); });
}

TavraBool Tavra_GetClock(TavraHandle handle, std::uint32_t* mode, std::uint32_t* clock) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode, clock));
        const CameraClock now = camera.geometry->clock();
        *mode = now.mode;
        *clock = now.hz;
        return Status();
    });
}

TavraBool Tavra_SetClock(TavraHandle handle, std::uint32_t mode, std::uint32_t clock) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setClock(camera, mode, clock); });
}

TavraBool Tavra_GetFrameClock(TavraHandle handle, std::uint16_t* lines, std::uint16_t* clocks) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(lines, clocks));
        const ScanRecord scan = camera.geometry->scanRecord();
        *lines = scan.linesPerFrame();
        *clocks = scan.clocksPerLine();
        return Status();
    });
}

TavraBool Tavra_GetOutputFPS(TavraHandle handle, float* fps) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(fps));
        return getOutputFps(camera, *fps);
    });
}

TavraBool Tavra_GetVBlankForFPS(TavraHandle handle, std::uint32_t* vBlank) {
    return api::getNumber(handle, vBlank, getVBlank);
}

TavraBool Tavra_SetVBlankForFPS(TavraHandle handle, std::uint32_t vBlank) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setVBlank(camera, vBlank); });
}

TavraBool Tavra_GetMaxVBlankForFPS(TavraHandle handle, std::uint32_t* vBlank) {
    return api::getNumber(handle, vBlank, getMaximumVBlank);
}

TavraBool Tavra_GetRawDataSize(TavraHandle handle, std::uint32_t* size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        api::giveIfWanted(size, camera.geometry->rawDataSize);
        return Status();
    });
}

TavraBool Tavra_GetPreviewDataSize(TavraHandle handle, std::uint32_t* total, std::uint32_t* width,
                                   std::uint32_t* height, std::uint32_t* lineBytes) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        const PreviewSize size = previewSize(camera);
        api::giveIfWanted(total, size.total);
        api::giveIfWanted(width, size.width);
        api::giveIfWanted(height, size.height);
        api::giveIfWanted(lineBytes, size.lineBytes);
        return Status();
    });
}

TavraBool Tavra_SetPreviewPixelFormat(TavraHandle handle, std::uint32_t format) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return setPreviewPixelFormat(camera, format); });
}

TavraBool Tavra_GetPreviewPixelFormat(TavraHandle handle, std::uint32_t* format) {
    return api::getNumber(handle, format, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.geometry->previewPixelFormat;
        return Status();
    });
}

TavraBool Tavra_SetTransferBitsPerPixel(TavraHandle handle, std::uint32_t code) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setTransferBits(camera, code); });
}

TavraBool Tavra_GetTransferBitsPerPixel(TavraHandle handle, std::uint32_t* code) {
    return api::getNumber(handle, code, getTransferBits);
}
