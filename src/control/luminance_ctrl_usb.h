// Exposure control of a camera on the USB: where its settings live and what its limits are.
#pragma once

#include <cstdint>

#include "camera/exposure_camera.h"
#include "control/gain_scale.h"
#include "control/luminance_ctrl.h"

namespace tavra {

// The limits that a scan record tells. Whether the clock part takes effect is told elsewhere.
ShutterScale exposureScaleOf(const ScanRecord& scan);

// Owned by the handle record: made at open once the geometry is known, gone at close. The only place that
// writes shutter and gain to the camera.
//
// A camera may control its exposure by itself, by capability word 1: bit 10 the shutter, bit 9 the gain.
// While it does, shutter and gain are read from it whenever they are asked for.
class CLuminanceCtrlUSB final : public CLuminanceCtrl {
  public:
    // Starts with the defaults, in memory only. `camera` outlives the object.
    explicit CLuminanceCtrlUSB(IExposureCamera& camera);
    ~CLuminanceCtrlUSB() = default;

    // Takes over what the camera has; ends at the first failure, and keeps what was read so far.
    Status LoadFromCamera();
    // Restores the defaults, and writes shutter and gains.
    Status reset();

    // Writes the exposure, and what it means for the length of a frame. 87: beyond the longest exposure.
    Status setShutter(const Shutter& shutter);
    Status setExposureClocks(std::uint32_t clocks);

  protected:
    Status GetShutter(Shutter& shutter) override;
    Status GetGain(std::uint16_t& gain) override;
    Status SetShutterControlRange(const ShutterRange& range) override;
    Status SetGainControlRange(const GainRange& range) override;
    Status SetALCMode(std::uint8_t mode) override;
    Status GetALCMode(std::uint8_t& mode) override;
    Status SetTargetBrightness(const BrightnessTarget& target) override;
    float GetGainDBFromSettingValue(std::uint16_t value) const override;
    std::uint32_t GetSettingValueFromGainDB(float decibels) const override;
    Status WriteShutterAndGain() override;
    Status ReadShutterAndGain() override;
    Status WriteDigitalGain() override;
    Status ReadDigitalGain() override;
    Status ReadCameraAlcSettings() override;
    std::uint32_t GetMaxClock() const override;
    Shutter GetMaxLongExposure() const override;
    Shutter GetMaxShortExposure() const override;
    ShutterScale readScale() const override;

  private:
    bool controlsShutter() const;
    bool controlsGain() const;
    bool controlsAnything() const { return controlsShutter() || controlsGain(); }
    // What the camera controls now may have changed since the last look.
    Status refreshWhatCameraControls();
    Status readWord(std::uint16_t address, std::uint16_t& value);
    Status writeWord(std::uint16_t address, std::uint16_t value);
    Status readLines(std::uint16_t address, Shutter& shutter);
    Status writeLines(std::uint16_t address, std::uint32_t lines);

    IExposureCamera& camera_;
    const GainScale gainScale_;
    std::uint8_t cameraAlcMode_ = 0;  // high nibble of the public mode
};

}  // namespace tavra
