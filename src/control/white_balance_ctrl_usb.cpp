#include "control/white_balance_ctrl_usb.h"

namespace tavra {
namespace {

// Bit 15 makes a write take effect.
constexpr std::uint16_t kTakeEffect = 0x8000;
constexpr std::uint16_t kGains = 64;  // four words: R, Gr, Gb, B
constexpr std::uint16_t kMode = 68;

}  // namespace

CWhiteBalanceCtrlUSB::CWhiteBalanceCtrlUSB(IStatusWords& camera, const WhiteBalanceGains& resetGain,
                                           std::uint16_t colorArray, bool hardwareWhiteBalance)
    : CWhiteBalanceCtrl(resetGain, colorArray, hardwareWhiteBalance), camera_(camera) {}

Status CWhiteBalanceCtrlUSB::WriteMode(std::uint8_t mode) {
    const std::uint16_t word = mode;
    return camera_.writeStatus(0, kMode | kTakeEffect, {&word, 1});
}

Status CWhiteBalanceCtrlUSB::ReadMode(std::uint8_t& mode) {
    std::uint16_t word = 0;
    TAVRA_RETURN_IF_ERROR(camera_.readStatus(0, kMode, {&word, 1}));
    mode = static_cast<std::uint8_t>(word);
    return Status();
}

Status CWhiteBalanceCtrlUSB::WriteGain(const WhiteBalanceGains& gains) {
    return camera_.writeStatus(0, kGains | kTakeEffect, gains);
}

Status CWhiteBalanceCtrlUSB::ReadGain(WhiteBalanceGains& gains) {
    WhiteBalanceGains words{};
    TAVRA_RETURN_IF_ERROR(camera_.readStatus(0, kGains, words));
    gains = words;
    return Status();
}

}  // namespace tavra
