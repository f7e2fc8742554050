// White balance without a camera: a derived class that keeps what would be written, and frames of known
// colours.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "control/white_balance_ctrl.h"

namespace tavra::test {

using Frame = std::vector<std::uint8_t>;
using Gains = WhiteBalanceGains;

inline constexpr std::uint32_t kSide = 16;
inline constexpr Gains kUnityGains{128, 128, 128, 128};

// The operations of a camera, written down.
class PlainControl final : public CWhiteBalanceCtrl {
  public:
    explicit PlainControl(const Gains& resetGain = kUnityGains, std::uint16_t colorArray = 2,
                          bool hardware = false)
        : CWhiteBalanceCtrl(resetGain, colorArray, hardware) {}

    Status WriteMode(std::uint8_t mode) override {
        cameraMode = mode;
        return next();
    }
    Status ReadMode(std::uint8_t& mode) override {
        mode = cameraMode;
        return next();
    }
    Status WriteGain(const Gains& gains) override {
        cameraGains = gains;
        return next();
    }
    Status ReadGain(Gains& gains) override {
        gains = cameraGains;
        return next();
    }

    std::uint8_t cameraMode = 77;
    Gains cameraGains{};
    int requests = 0;
    std::uint32_t failure = 0;

  private:
    Status next() {
        ++requests;
        return Status(failure);
    }
};

inline Frame frameOf(std::uint16_t colorArray, const Gains& rGrGbB) {
    // Index into R, Gr, Gb, B by position, for the codes 2 to 5.
    constexpr std::size_t kColors[4][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}, {2, 3, 0, 1}, {3, 2, 1, 0}};
    Frame frame;
    for (std::uint32_t y = 0; y < kSide; ++y) {
        for (std::uint32_t x = 0; x < kSide; ++x) {
            const std::size_t color = kColors[colorArray - 2][x % 2 + 2 * (y % 2)];
            frame.push_back(static_cast<std::uint8_t>(rGrGbB[color]));
        }
    }
    return frame;
}

class WhiteBalance : public testing::Test {
  protected:
    static std::uint8_t mode(CWhiteBalanceCtrl& control) {
        std::uint8_t value = 99;
        EXPECT_TRUE(control.getMode(value).ok());
        return value;
    }
    static Gains gains(CWhiteBalanceCtrl& control) {
        Gains values{};
        EXPECT_TRUE(control.getGains(values).ok());
        return values;
    }
    static void setMode(CWhiteBalanceCtrl& control, std::uint8_t mode) {
        ASSERT_TRUE(control.setMode(mode).ok());
    }
    static void setGains(CWhiteBalanceCtrl& control, const Gains& values) {
        ASSERT_TRUE(control.setGains(values).ok());
    }

    // Measures means that are R, Gr, Gb, B, whatever the gains.
    void see(const Gains& rGrGbB) { statistics.Accumulate(kSide, kSide, 2, frameOf(2, rGrGbB).data()); }
    // One frame of what is seen, as the capture thread treats it: true if a step was made.
    bool passFrame(CWhiteBalanceCtrl& control) {
        if (!control.frameIsDue()) return false;
        EXPECT_TRUE(control.controlStep(statistics));
        return true;
    }
    // Frames up to a decision, and those that are left out after it.
    void decideOn(CWhiteBalanceCtrl& control, const Gains& rGrGbB) {
        see(rGrGbB);
        for (int i = 0; i < 20; ++i) EXPECT_EQ(passFrame(control), i < 10) << "frame " << i;
    }

    CAveragePixelValue statistics;
};

}  // namespace tavra::test
