// Exposure clocks and seconds.
#include <algorithm>

#include "api/output.h"
#include "camera/geometry.h"
#include "control/exposure_timing.h"
#include "control/luminance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr double kHertzPerMegahertz = 1000000;

Status readTiming(TAVRA_COMMON_PARAM& camera, const ScanRecord& scan, ExposureTiming& timing) {
    timing.timing = timingClass(camera.info.productType, camera.capabilities.samePid());
    timing.clockHz = camera.geometry->clock().hz;
    timing.clocksPerLine = scan.clocksPerLine();
    timing.baseHz = camera.exposureBaseClockMHz * kHertzPerMegahertz;
    timing.minimumClocks = camera.minimumExposureClock;
    timing.imageWidth = scan.width();
    if (timing.timing != TimingClass::SensorTicks) return Status();
    SkippingAndBinning factors;
    TAVRA_RETURN_IF_ERROR(getSkippingAndBinning(camera, factors));
    timing.horizontalBinning = factors.horizontalBinning;
    timing.verticalBinning = factors.verticalBinning;
    return Status();
}

// By design: a camera whose timing cannot be read leaves the output as it is, and the call succeeds.
template <typename Output, typename Convert>
TavraBool convert(TavraHandle handle, Output* output, Convert conversion) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(output));
        const ScanRecord scan = camera.geometry->scanRecord();  // of one moment, for timing and limits
        ExposureTiming timing;
        const Status status = readTiming(camera, scan, timing);
        camera.noteFailure(status);
        if (status.ok()) *output = conversion(timing, exposureScaleOf(scan));
        return Status();
    });
}

}  // namespace

TavraBool Tavra_GetExposureClockFromTime(TavraHandle handle, float seconds, std::uint32_t* clock) {
    return convert(handle, clock, [&](const ExposureTiming& timing, const ShutterScale& scale) {
        return timing.clocks(seconds, scale.maxLongClocks());
    });
}

TavraBool Tavra_GetExposureTimeFromClock(TavraHandle handle, std::uint32_t clock, float* seconds) {
    return convert(handle, seconds, [&](const ExposureTiming& timing, const ShutterScale& scale) {
        const std::uint32_t limited = std::min(clock, scale.maxLongClocks());
        return timing.seconds(limited != 0 ? limited : scale.maxShortClocks());
    });
}
