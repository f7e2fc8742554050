// What a virtual camera knows and does between power-up and power-down: its answers to vendor requests, and
// the frame settings that follow from them. Belongs to one camera, which locks around it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "auto_exposure.h"
#include "device.h"
#include "exposure.h"
#include "frame_settings.h"
#include "geometry.h"
#include "light.h"
#include "memories.h"
#include "model.h"
#include "registers.h"

namespace tavra::usbd {

// What a request brings about outside the registers. Called during a request.
class CameraEvents {
  public:
    virtual void triggeredChanged(bool triggered) = 0;
    virtual void trigger() = 0;
    virtual void clearBuffer() = 0;
    virtual void resetCounter() = 0;

  protected:
    ~CameraEvents() = default;
};

class CameraState {
  public:
    // `memories` live longer than a power-up.
    CameraState(const Model& model, bool hasFirmware, Memories& memories, CameraEvents& events);

    // One vendor request: 0 with the bytes moved, or 31, which is how a stall is told.
    ErrorCode request(const ControlSetup& setup, std::span<std::uint8_t> data, std::uint32_t& transferred);

    // The light falls like this from now on.
    void illuminate(const Illumination& light) { light_ = light; }
    // The camera's own exposure control and white balance answer a frame of a mean brightness (0 to 1). True:
    // they have changed what follows.
    bool control(double brightness);

    FrameSettings frameSettings() const;
    double frameSeconds() const { return timing().frameSeconds(); }

  private:
    bool in(const ControlSetup& setup, std::span<std::uint8_t> data, std::uint32_t& transferred);
    bool out(const ControlSetup& setup, std::span<const std::uint8_t> data);

    std::vector<std::uint8_t> identity() const;
    std::vector<std::uint8_t> exposureBlock() const;
    std::vector<std::uint8_t> clockBlock() const;
    bool setClock(std::span<const std::uint8_t> block);
    bool setExposure(std::span<const std::uint8_t> block);
    bool setTransferBits(std::span<const std::uint8_t> block);

    bool readStatus(const ControlSetup& setup, std::span<std::uint8_t> data);
    bool writeStatus(const ControlSetup& setup, std::span<const std::uint8_t> data);
    bool readRegisters(const ControlSetup& setup, std::span<std::uint8_t> data);
    bool writeRegisters(const ControlSetup& setup, std::span<const std::uint8_t> data);
    void runCommand(std::uint16_t command);
    void applyGeometry();
    void updateTrigger();
    void updateWhiteBalance();
    bool followWhiteBalance();
    std::array<std::uint16_t, 4> balancedGains() const;
    void takeDefects();

    bool hasPages() const { return model_.pages.present; }
    bool balances() const { return model_.has(1, 8); }
    std::uint32_t verticalBlank() const;
    double triggerSeconds() const;
    AutoExposure autoExposure() const;
    ExposureTiming timing() const;
    ViewSettings view() const;

    const Model& model_;
    const bool hasFirmware_;
    Memories& memories_;
    CameraEvents& events_;
    Geometry geometry_;
    StatusWords status_;
    RegisterPages pages_;
    ExposureRegisters exposure_;
    Illumination light_;
    std::vector<std::pair<std::uint16_t, std::uint16_t>> defects_;  // the list in force: x, y
    std::uint32_t clockMode_ = 0;
    std::vector<std::uint8_t> settings_;  // of request 129
    const double fullScale_;              // seconds
};

}  // namespace tavra::usbd
