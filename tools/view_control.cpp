#include "view_control.h"

#include "control_state.h"
#include "settings_table.h"

namespace tavra::tool {

bool exposureIsAutomatic(const Camera& camera) {
    std::uint8_t mode = 0;
    return Tavra_GetALCMode(camera.handle(), &mode) != 0 && mode != TAVRA_ALC_OFF;
}

bool whiteBalanceIsAutomatic(const Camera& camera) {
    std::uint8_t mode = 0;
    return Tavra_GetWhiteBalanceMode(camera.handle(), &mode) != 0 &&
           (mode == TAVRA_WHITE_BALANCE_CONTINUOUS || mode == TAVRA_WHITE_BALANCE_ONE_PUSH);
}

void toggleAutoExposure(const Camera& camera) {
    const bool on = !exposureIsAutomatic(camera);
    if (on) requireMosaicFormat(camera, "automatic exposure");
    camera.check(Tavra_SetALCMode(camera.handle(), on ? TAVRA_ALC_SHUTTER_AND_GAIN : TAVRA_ALC_OFF),
                 "cannot switch the exposure control");
}

void toggleAutoWhiteBalance(const Camera& camera) {
    const bool on = !whiteBalanceIsAutomatic(camera);
    if (on) {
        requireColor(camera, "white balance");
        requireMosaicFormat(camera, "automatic white balance");
        if (!whiteBalanceActs(camera)) throw Failure("white balance changes nothing on quad mosaics");
    }
    camera.check(Tavra_SetWhiteBalanceMode(camera.handle(),
                                           on ? TAVRA_WHITE_BALANCE_CONTINUOUS : TAVRA_WHITE_BALANCE_MANUAL),
                 "cannot switch the white balance");
}

}  // namespace tavra::tool
