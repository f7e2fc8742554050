// White balance: mode, gains and the settings of the loop, and the gains on a frame of the caller.
#include <algorithm>

#include "api/output.h"
#include "camera/white_balance_modes.h"
#include "control/white_balance_ctrl_usb.h"
#include "tavra/tavra_api.h"

using namespace tavra;

using Weights = CAveragePixelValue::Weights;

namespace {

// Four numbers, out where the caller wants them.
Status giveGains(const WhiteBalanceGains& gains, std::uint16_t* r, std::uint16_t* gr, std::uint16_t* gb,
                 std::uint16_t* b) {
    *r = gains[0];
    *gr = gains[1];
    *gb = gains[2];
    *b = gains[3];
    return Status();
}

}  // namespace

TavraBool Tavra_SetWhiteBalanceMode(TavraHandle handle, std::uint8_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return camera.whiteBalance->setMode(mode); });
}

TavraBool Tavra_GetWhiteBalanceMode(TavraHandle handle, std::uint8_t* mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(mode));
        return camera.whiteBalance->getMode(*mode);
    });
}

TavraBool Tavra_SetWhiteBalanceGain(TavraHandle handle, std::uint16_t r, std::uint16_t gr, std::uint16_t gb,
                                    std::uint16_t b) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.whiteBalance->setGains({r, gr, gb, b});
    });
}

TavraBool Tavra_GetWhiteBalanceGain(TavraHandle handle, std::uint16_t* r, std::uint16_t* gr,
                                    std::uint16_t* gb, std::uint16_t* b) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(r, gr, gb, b));
        WhiteBalanceGains gains{};
        TAVRA_RETURN_IF_ERROR(camera.whiteBalance->getGains(gains));
        return giveGains(gains, r, gr, gb, b);
    });
}

TavraBool Tavra_GetWhiteBalanceMaxGain(TavraHandle handle, std::uint16_t* r, std::uint16_t* gr,
                                       std::uint16_t* gb, std::uint16_t* b) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(r, gr, gb, b));
        return giveGains(camera.maximumGains, r, gr, gb, b);
    });
}

TavraBool Tavra_SetWhiteBalanceTarget(TavraHandle handle, std::uint16_t r, std::uint16_t b) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.whiteBalance->setTarget({r, b});
    });
}

TavraBool Tavra_GetWhiteBalanceTarget(TavraHandle handle, std::uint16_t* r, std::uint16_t* b) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(r, b));
        const WhiteBalanceTarget target = camera.whiteBalance->target();
        *r = target.r;
        *b = target.b;
        return Status();
    });
}

TavraBool Tavra_SetWhiteBalanceToleranceThreshold(TavraHandle handle, std::uint16_t tolerance,
                                                  std::uint16_t threshold) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return camera.whiteBalance->setBand({tolerance, threshold});
    });
}

TavraBool Tavra_GetWhiteBalanceToleranceThreshold(TavraHandle handle, std::uint16_t* tolerance,
                                                  std::uint16_t* threshold) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(tolerance, threshold));
        const WhiteBalanceBand band = camera.whiteBalance->band();
        *tolerance = band.tolerance;
        *threshold = band.threshold;
        return Status();
    });
}

// By design: success also where the camera does the white balance and the weights are lost; that shows in the
// last error.
TavraBool Tavra_SetAWBWeight(TavraHandle handle, const std::uint8_t* weights) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(weights));
        Weights cells;
        std::copy_n(weights, cells.size(), cells.begin());
        camera.noteFailure(camera.whiteBalance->setWeights(cells));
        return Status();
    });
}

TavraBool Tavra_GetAWBWeight(TavraHandle handle, std::uint8_t* weights) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(weights));
        const Weights cells = camera.whiteBalance->weights();
        std::copy(cells.begin(), cells.end(), weights);
        return Status();
    });
}

TavraBool Tavra_RawWhiteBalance(TavraHandle handle, std::uint32_t width, std::uint32_t height,
                                std::uint16_t colorArray, std::uint8_t* image) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(image));
        return camera.whiteBalance->ApplyGain(width, height, colorArray, image);
    });
}

TavraBool Tavra_GetEnableWhiteBalanceMode(TavraHandle handle, std::uint32_t* mask) {
    return api::getNumber(handle, mask, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = enabledWhiteBalanceModes(camera);
        return Status();
    });
}
