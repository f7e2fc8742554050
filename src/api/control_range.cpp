// The ranges that the automatic exposure control keeps to.
#include "api/output.h"
#include "control/luminance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

template <typename Number>
TavraBool getShutterRange(TavraHandle handle, Number* minLine, Number* minClock, Number* maxLine,
                          Number* maxClock) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(minLine, minClock, maxLine, maxClock));
        const ShutterRange range = camera.exposure->shutterRange();
        *minLine = static_cast<Number>(range.min.line);
        *minClock = static_cast<Number>(range.min.clock);
        *maxLine = static_cast<Number>(range.max.line);
        *maxClock = static_cast<Number>(range.max.clock);
        return Status();
    });
}

}  // namespace

TavraBool Tavra_SetGainControlRange(TavraHandle handle, std::uint16_t minGain, std::uint16_t maxGain) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        // By design: a range upside down is told of and taken all the same.
        if (maxGain < minGain) camera.noteFailure(Status(error::kInvalidArgument));
        return camera.exposure->setGainRange({minGain, maxGain});
    });
}

TavraBool Tavra_GetGainControlRange(TavraHandle handle, std::uint16_t* minGain, std::uint16_t* maxGain) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(minGain, maxGain));
        const GainRange range = camera.exposure->gainRange();
        *minGain = range.min;
        *maxGain = range.max;
        return Status();
    });
}

TavraBool Tavra_SetShutterControlRange(TavraHandle handle, std::uint16_t minLine, std::uint16_t minClock,
                                       std::uint16_t maxLine, std::uint16_t maxClock) {
    return Tavra_SetShutterControlRange2(handle, minLine, minClock, maxLine, maxClock);
}

TavraBool Tavra_SetShutterControlRange2(TavraHandle handle, std::uint32_t minLine, std::uint32_t minClock,
                                        std::uint32_t maxLine, std::uint32_t maxClock) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.exposure->setShutterRange({{minLine, minClock}, {maxLine, maxClock}});
    });
}

TavraBool Tavra_GetShutterControlRange(TavraHandle handle, std::uint16_t* minLine, std::uint16_t* minClock,
                                       std::uint16_t* maxLine, std::uint16_t* maxClock) {
    return getShutterRange(handle, minLine, minClock, maxLine, maxClock);
}

TavraBool Tavra_GetShutterControlRange2(TavraHandle handle, std::uint32_t* minLine, std::uint32_t* minClock,
                                        std::uint32_t* maxLine, std::uint32_t* maxClock) {
    return getShutterRange(handle, minLine, minClock, maxLine, maxClock);
}

TavraBool Tavra_SetAEMaxExposureClock(TavraHandle handle, std::uint32_t clock) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return camera.exposure->setShutterRangeTop(clock); });
}

TavraBool Tavra_SetAEMinExposureClock(TavraHandle handle, std::uint32_t clock) {
    return api::call(
        handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.exposure->setShutterRangeBottom(clock); });
}

TavraBool Tavra_GetAEMaxExposureClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->shutterRangeTop();
        return Status();
    });
}

TavraBool Tavra_GetAEMinExposureClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->shutterRangeBottom();
        return Status();
    });
}
