// The camera of an open handle as settings see it, with something that happens each time that they ask for
// it.
#pragma once

#include <functional>
#include <utility>

#include "api/setting_camera.h"

namespace tavra::test {

class SettingCameraWrapper final : public ISettingCamera {
  public:
    // `onAsk` comes ahead of each use of the handle, and of what goes past the public functions; `onWindow`
    // when the window is asked for.
    SettingCameraWrapper(
        TAVRA_COMMON_PARAM& record, std::function<void()> onAsk, std::function<void()> onWindow = [] {})
        : camera_(record), onAsk_(std::move(onAsk)), onWindow_(std::move(onWindow)) {}

    TavraHandle handle() const override {
        onAsk_();
        return camera_.handle();
    }
    void noteFailure(Status status) override { camera_.noteFailure(status); }
    bool legacy() const override { return camera_.legacy(); }
    std::uint32_t fileMode() const override { return camera_.fileMode(); }
    bool hasPreviewWindow() const override {
        onWindow_();
        return camera_.hasPreviewWindow();
    }
    Status storeRotation(std::uint8_t mode) override {
        onAsk_();
        return camera_.storeRotation(mode);
    }
    Status resetExposure() override { return camera_.resetExposure(); }
    void resetStatistics() override { camera_.resetStatistics(); }
    void resetWhiteBalance() override { camera_.resetWhiteBalance(); }

  private:
    api::SettingCamera camera_;
    std::function<void()> onAsk_, onWindow_;
};

}  // namespace tavra::test
