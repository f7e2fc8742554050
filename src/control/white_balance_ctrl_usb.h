// White balance of one open camera: the host's loop, or mode and gains that live in the camera.
#pragma once

#include "camera/control_channel.h"
#include "control/white_balance_ctrl.h"

namespace tavra {

// Made at open and owned by the handle record; the camera's status words must outlive it. Threads as
// CWhiteBalanceCtrl; requests to the camera are not serialised.
class CWhiteBalanceCtrlUSB final : public CWhiteBalanceCtrl {
  public:
    CWhiteBalanceCtrlUSB(IStatusWords& camera, const WhiteBalanceGains& resetGain, std::uint16_t colorArray,
                         bool hardwareWhiteBalance);

    Status WriteMode(std::uint8_t mode) override;
    Status ReadMode(std::uint8_t& mode) override;
    Status WriteGain(const WhiteBalanceGains& gains) override;
    Status ReadGain(WhiteBalanceGains& gains) override;

  private:
    IStatusWords& camera_;
};

}  // namespace tavra
