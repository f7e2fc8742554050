// The camera as saving, loading and resetting settings see it.
#pragma once

#include "api/call.h"
#include "camera/mirror.h"
#include "control/luminance_ctrl_usb.h"
#include "control/white_balance_ctrl_usb.h"
#include "settings/setting_camera.h"

namespace tavra::api {

// Lives for one call.
class SettingCamera final : public ISettingCamera {
  public:
    explicit SettingCamera(TAVRA_COMMON_PARAM& record) : record_(record) {}

    TavraHandle handle() const override { return &record_; }
    void noteFailure(Status status) override { record_.noteFailure(status); }
    bool legacy() const override { return record_.legacy(); }
    std::uint32_t fileMode() const override { return record_.settingFileMode; }
    bool hasPreviewWindow() const override { return record_.preview.alive(); }
    Status storeRotation(std::uint8_t mode) override { return storeRotationMode(record_, mode); }
    Status resetExposure() override { return record_.exposure->reset(); }
    void resetStatistics() override { record_.statistics.Reset(); }
    void resetWhiteBalance() override { record_.whiteBalance->Reset(); }

  private:
    TAVRA_COMMON_PARAM& record_;
};

// Runs `operation(camera)` while no stream runs: 1 if it gives true. False: it has noted its failure itself.
template <typename Operation>
TavraBool whileStopped(TavraHandle handle, Operation operation) {
    bool done = false;
    const TavraBool called = call(handle, [&](TAVRA_COMMON_PARAM& record) {
        if (record.transferRunning()) return Status(error::kTransferRunning);
        SettingCamera camera(record);
        done = operation(camera);
        return Status();
    });
    return called != 0 && done ? 1 : 0;
}

}  // namespace tavra::api
