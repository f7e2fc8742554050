// Exposure control without a camera: a derived class that keeps what would be written, and frames of one
// brightness.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "control/gain_scale.h"
#include "control/luminance_ctrl.h"

namespace tavra::test {

// Lines of 100 clocks; a frame takes 50 lines and 20 clocks, the longest exposure 200 lines and 30.
class ControlDouble final : public CLuminanceCtrl {
  public:
    explicit ControlDouble(bool clockUnit = true, unsigned gainClass = 4)
        : CLuminanceCtrl({20, 64, {}}, {true, clockUnit}), gainScale(gainClass) {
        restoreDefaults();
    }

    void restoreDefaults() { CLuminanceCtrl::restoreDefaults(680); }

    // What a write to the camera gives, and what was written.
    struct Block {
        Shutter shutter;
        std::uint16_t gain;
        bool operator==(const Block&) const = default;
    };
    Status writeResult;
    std::vector<Block> written;

    GainScale gainScale;
    std::uint32_t maxClock = 99;
    Shutter maxShort{50, 20};
    Shutter maxLong{200, 30};

    // The settings in memory.
    Shutter& shutterInMemory() { return shutter_; }
    std::uint16_t& gainInMemory() { return gain_; }
    ShutterRange& rangeInMemory() { return shutterRange_; }
    GainRange& gainRangeInMemory() { return gainRange_; }

    std::uint8_t presentMode() {
        std::uint8_t value = 99;
        EXPECT_TRUE(mode(value).ok());
        return value;
    }
    std::uint32_t total() { return shutterScale().ToTotalClocks(shutter_); }

    // One frame of this brightness, the way of the capture thread. False: it was left out.
    bool frame(std::uint8_t luminance, Status* result = nullptr) {
        if (!due()) return false;
        const std::vector<std::uint8_t> pixels(16, luminance);
        statistics.Accumulate(4, 4, 1, pixels.data());
        const Status status = step(statistics);
        if (result != nullptr) *result = status;
        return true;
    }
    // Frames until the next decision has been made; the code of its result.
    std::uint32_t decide(std::uint8_t luminance) {
        while (!due()) {
        }
        Status result;
        const unsigned frames = std::max<unsigned>(controlSpeed().averageFrames, 1);
        for (unsigned i = 0; i < frames; ++i) EXPECT_TRUE(frame(luminance, &result));
        return result.code();
    }

    CAveragePixelValue statistics;

  protected:
    float GetGainDBFromSettingValue(std::uint16_t value) const override { return gainScale.decibels(value); }
    std::uint32_t GetSettingValueFromGainDB(float decibels) const override {
        return gainScale.settingValue(decibels, maxGain_);
    }
    Status WriteShutterAndGain() override {
        written.push_back({shutter_, gain_});
        return writeResult;
    }
    Status ReadShutterAndGain() override { return Status(); }
    Status WriteDigitalGain() override { return Status(); }
    Status ReadDigitalGain() override { return Status(); }
    Status ReadCameraAlcSettings() override { return Status(); }
    std::uint32_t GetMaxClock() const override { return maxClock; }
    Shutter GetMaxLongExposure() const override { return maxLong; }
    Shutter GetMaxShortExposure() const override { return maxShort; }
    ShutterScale readScale() const override { return {maxClock, maxShort, maxLong}; }
};

}  // namespace tavra::test
