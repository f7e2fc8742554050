// Exposure control: the settings of shutter and gain, and the loop that holds the brightness of the frames.
#pragma once

#include <cstdint>
#include <mutex>

#include "base/status.h"
#include "control/average_pixel_value.h"
#include "control/luminance_settings.h"
#include "control/shutter.h"

namespace tavra {

// The control law and its state; it knows no camera. A derived class writes and reads the settings, and knows
// the gain scale and the limits of the shutter.
//
// The public operations take the control mutex, and may be called from any thread; due and step only from the
// capture thread. The virtual ones are called with the mutex held. Settings are written with the mutex held
// too: a call waits for a request of the loop. Where a write fails, the value stays in memory.
class CLuminanceCtrl {
  public:
    using Weights = CAveragePixelValue::Weights;

    CLuminanceCtrl(const CLuminanceCtrl&) = delete;
    CLuminanceCtrl& operator=(const CLuminanceCtrl&) = delete;

    // Whether the loop wants statistics of this frame. Counts down the frames that are left out.
    bool due();
    // Takes one frame that was due; after as many as are averaged, decides, and writes to the camera at most
    // once. What a failure was about is in memory all the same.
    Status step(const CAveragePixelValue& frame);

    // The public mode, host and camera. 87: not a legal code, or a camera without that control.
    Status setMode(std::uint8_t mode);
    Status mode(std::uint8_t& mode);
    void setControlSpeed(const ControlSpeed& speed);
    ControlSpeed controlSpeed() const;
    Status setBrightnessTarget(const BrightnessTarget& target);
    BrightnessTarget brightnessTarget() const;
    void setWeights(const Weights& weights);
    Weights weights() const;

    // Setting values. 87: above the camera's highest.
    Status setGain(std::uint16_t gain);
    Status gain(std::uint16_t& gain);
    std::uint16_t maxGain() const;
    // A range upside down is taken. 87: its top above the camera's highest.
    Status setGainRange(const GainRange& range);
    GainRange gainRange() const;
    float gainDecibels(std::uint16_t gain) const;

    // Kept also on cameras that have none to set.
    Status setDigitalGain(std::uint16_t gain);
    std::uint16_t digitalGain() const;
    bool hasDigitalGain() const { return traits_.digitalGain; }

    // The shutter as it stands, and cut to the longest exposure.
    Status shutter(Shutter& shutter);
    Status limitedShutter(Shutter& shutter);
    ShutterScale shutterScale() const;
    // As one number, cut to the longest exposure; 0 is the free-running one.
    Status exposureClocks(std::uint32_t& clocks);

    // 87: see shutter_range.h.
    Status setShutterRange(const ShutterRange& range);
    ShutterRange shutterRange() const;
    // The ends as one number of clocks each.
    Status setShutterRangeTop(std::uint32_t clocks);
    Status setShutterRangeBottom(std::uint32_t clocks);
    std::uint32_t shutterRangeTop() const;
    std::uint32_t shutterRangeBottom() const;

  protected:
    struct Defaults {
        std::uint16_t gain = 0;
        std::uint16_t digitalGain = 0;
        Shutter shutter;
    };
    // What a camera is for its whole life.
    struct Traits {
        bool digitalGain = true;
        bool clockUnit = false;  // the clock part of the shutter takes effect
    };
    CLuminanceCtrl(const Defaults& defaults, const Traits& traits) : defaults_(defaults), traits_(traits) {}
    ~CLuminanceCtrl() = default;

    // The slot order is part of the contract.
    virtual Status GetShutter(Shutter& shutter);
    virtual Status GetGain(std::uint16_t& gain);
    virtual Status SetShutterControlRange(const ShutterRange& range);
    virtual Status SetGainControlRange(const GainRange& range);
    virtual Status SetALCMode(std::uint8_t mode);
    virtual Status GetALCMode(std::uint8_t& mode);
    virtual Status SetTargetBrightness(const BrightnessTarget& target);
    virtual float GetGainDBFromSettingValue(std::uint16_t value) const = 0;
    virtual std::uint32_t GetSettingValueFromGainDB(float decibels) const = 0;
    virtual Status WriteShutterAndGain() = 0;
    virtual Status ReadShutterAndGain() = 0;
    virtual Status WriteDigitalGain() = 0;
    virtual Status ReadDigitalGain() = 0;
    virtual Status ReadCameraAlcSettings() = 0;
    virtual std::uint32_t GetMaxClock() const = 0;    // clocks of an exposure line less one
    virtual Shutter GetMaxLongExposure() const = 0;   // the longest exposure
    virtual Shutter GetMaxShortExposure() const = 0;  // the longest that fits a frame
    // Behind the slots of the contract: the last three of them by one read of the geometry, so that they
    // agree where it changes meanwhile. clockUnit is not the geometry's.
    virtual ShutterScale readScale() const = 0;

    // All settings and the state of the loop, in memory only.
    void restoreDefaults(std::uint16_t maxGain);
    // Takes a shutter within the longest exposure, and writes it. 87: out of range.
    Status changeShutter(const Shutter& shutter, const ShutterScale& limits);
    // The limits as the camera has them now; they change with its geometry. An operation asks once.
    ShutterScale scale() const;

    std::mutex& controlMutex() const { return controlMutex_; }

    // Guarded by the control mutex.
    std::uint16_t gain_ = 0;
    Shutter shutter_;
    std::uint16_t maxGain_ = 0;  // highest setting value of the camera
    std::uint16_t digitalGain_ = 0;
    BrightnessTarget target_;
    ShutterRange shutterRange_;
    GainRange gainRange_;

  private:
    struct Totals;  // the ends of the shutter's range and its place, as clocks

    Totals totals() const;
    Status decide(std::uint8_t average);
    bool clampToRanges(const Totals& at);
    bool clampShutter(const Totals& at, std::uint32_t& clocks);
    bool adjust(const Totals& at, std::uint8_t average);
    bool shutterIsFirst(const Totals& at, bool tooDark) const;
    bool adjustShutter(const Totals& at, std::uint8_t average, bool tooDark);
    bool adjustGain(std::uint8_t average, bool tooDark);

    const Defaults defaults_;
    const Traits traits_;

    std::uint8_t alcMode_ = alc_mode::kOff;
    ControlSpeed speed_;
    Weights weights_{};
    bool lastAdjusted_ = false;  // the last decision changed something
    std::uint8_t skipCounter_ = 0;
    std::uint8_t averageCounter_ = 0;
    std::uint32_t brightnessSum_ = 0;  // of the frames in hand

    mutable std::mutex controlMutex_;
};

}  // namespace tavra
