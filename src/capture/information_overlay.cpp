#include "capture/information_overlay.h"

#include "control/luminance_ctrl_usb.h"
#include "control/white_balance_ctrl_usb.h"
#include "display/information_overlay.h"

namespace tavra {
namespace {

void readWeights(TAVRA_COMMON_PARAM& camera, ControlState& state) {
    state.exposureWeights = camera.exposure->weights();
    state.whiteBalanceWeights = camera.whiteBalance->weights();
}

// What cannot be read stays 0. By design: the two tables of weights give different parts of the one text.
void readStatistics(TAVRA_COMMON_PARAM& camera, ControlState& state) {
    camera.statistics.GetWeightedLuminance(state.exposureWeights, state.luminance);
    camera.statistics.GetWeightedAverage(state.whiteBalanceWeights, state.means);
    WhiteBalanceGains gains{};
    if (camera.whiteBalance->getGains(gains).ok()) state.whiteBalanceGains = gains;
    Shutter shutter;
    if (camera.exposure->shutter(shutter).ok()) {
        state.shutterLine = shutter.line;
        state.shutterClock = shutter.clock;
    }
    static_cast<void>(camera.exposure->gain(state.gain));
    state.digitalGain = camera.exposure->digitalGain();
}

void noteDisplayError(TAVRA_COMMON_PARAM& camera, Status status) {
    if (!status.ok()) camera.preview.displayError = status.code();
}

}  // namespace

void drawInformation(TAVRA_COMMON_PARAM& camera, platform::IPaint& paint, std::uint32_t mode) {
    ControlState state;
    readWeights(camera, state);
    if ((mode & TAVRA_DISPLAY_INFO_STATISTICS) != 0) {
        readStatistics(camera, state);
        noteDisplayError(camera, DrawStatisticsText(paint, state));
    }
    if ((mode & TAVRA_DISPLAY_INFO_GRID) != 0) {
        camera.statistics.getControlArea(state.xBoundary, state.yBoundary);
        const ImageSize image = camera.geometry->imageSize();  // not rotated
        noteDisplayError(camera, DrawControlGrid(paint, {image.width, image.height}, state));
    }
}

}  // namespace tavra
