// The shutter by hand: lines and clocks, one number of clocks, and its limits.
#include "api/output.h"
#include "control/luminance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

template <typename Number>
TavraBool getShutterSpeed(TavraHandle handle, Number* line, Number* clock) {
    api::giveIfWanted(line, Number{0});
    api::giveIfWanted(clock, Number{0});
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        Shutter shutter;
        TAVRA_RETURN_IF_ERROR(camera.exposure->limitedShutter(shutter));
        api::giveIfWanted(line, static_cast<Number>(shutter.line));
        api::giveIfWanted(clock, static_cast<Number>(shutter.clock));
        return Status();
    });
}

}  // namespace

TavraBool Tavra_SetShutterSpeed(TavraHandle handle, std::uint16_t line, std::uint16_t clock) {
    return Tavra_SetShutterSpeed2(handle, line, clock);
}

TavraBool Tavra_SetShutterSpeed2(TavraHandle handle, std::uint32_t line, std::uint32_t clock) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.exposure->setShutter({line, clock});
    });
}

TavraBool Tavra_GetShutterSpeed(TavraHandle handle, std::uint16_t* line, std::uint16_t* clock) {
    return getShutterSpeed(handle, line, clock);
}

TavraBool Tavra_GetShutterSpeed2(TavraHandle handle, std::uint32_t* line, std::uint32_t* clock) {
    return getShutterSpeed(handle, line, clock);
}

TavraBool Tavra_SetExposureClock(TavraHandle handle, std::uint32_t clock) {
    return api::call(handle,
                     [&](TAVRA_COMMON_PARAM& camera) { return camera.exposure->setExposureClocks(clock); });
}

TavraBool Tavra_GetExposureClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        return camera.exposure->exposureClocks(value);
    });
}

TavraBool Tavra_GetShutterMaxClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->shutterScale().maxClock;
        return Status();
    });
}

TavraBool Tavra_GetMaxLongExposureClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->shutterScale().maxLongClocks();
        return Status();
    });
}

TavraBool Tavra_GetMaxShortExposureClock(TavraHandle handle, std::uint32_t* clock) {
    return api::getNumber(handle, clock, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.exposure->shutterScale().maxShortClocks();
        return Status();
    });
}

TavraBool Tavra_GetEnableShutterSpeed(TavraHandle handle, std::uint16_t* mask) {
    return api::getNumber(handle, mask, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.info.enableShutterSpeed;
        return Status();
    });
}
