// White balance: four gains on the mosaic, and the loop that moves them until a grey scene is grey.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "base/status.h"
#include "control/average_pixel_value.h"
#include "control/white_balance_gains.h"

namespace tavra {

// Gains in the order R, Gr, Gb, B. 128 is 1.0.
using WhiteBalanceGains = std::array<std::uint16_t, 4>;

struct WhiteBalanceTarget {
    std::uint16_t r = 100;  // percent of the mean of green
    std::uint16_t b = 100;
};

struct WhiteBalanceBand {
    std::uint16_t tolerance = 5;  // kept and given back; no decision goes by it
    std::uint16_t threshold = 5;  // tenths of a level, see CWhiteBalanceCtrl::controlStep
};

// The gains and the control law. Knows of no camera: one that does the white balance itself is reached
// through the pure operations, and leaves nothing to do here.
//
// Owned by the handle record. Application threads set and read; the capture thread asks frameIsDue, applies
// the gains, and makes one step on the statistics of a frame that is due. Everything stands under one mutex,
// so that gains never change half way through a frame. The lock of the statistics is taken inside it, never
// the other way round.
class CWhiteBalanceCtrl {
  public:
    CWhiteBalanceCtrl(const WhiteBalanceGains& resetGain, std::uint16_t colorArray,
                      bool hardwareWhiteBalance);
    // The slot order is part of the contract.
    virtual ~CWhiteBalanceCtrl();
    virtual Status WriteMode(std::uint8_t mode) = 0;
    virtual Status ReadMode(std::uint8_t& mode) = 0;
    virtual Status WriteGain(const WhiteBalanceGains& gains) = 0;
    virtual Status ReadGain(WhiteBalanceGains& gains) = 0;

    CWhiteBalanceCtrl(const CWhiteBalanceCtrl&) = delete;
    CWhiteBalanceCtrl& operator=(const CWhiteBalanceCtrl&) = delete;

    // Settings. With white balance in the camera, mode and gains are the camera's and a failed request fails
    // the call; what only the loop has cannot be set (87), and reads as what it would be at rest.
    Status setMode(std::uint8_t mode);  // not checked
    Status getMode(std::uint8_t& mode);
    Status setGains(const WhiteBalanceGains& gains);  // not checked
    Status getGains(WhiteBalanceGains& gains);
    Status setTarget(const WhiteBalanceTarget& target);  // 100, 100 is accepted anywhere
    WhiteBalanceTarget target() const;
    Status setBand(const WhiteBalanceBand& band);
    WhiteBalanceBand band() const;
    Status setWeights(const CAveragePixelValue::Weights& weights);
    CAveragePixelValue::Weights weights() const;

    // Everything as in a new object. A camera with its own white balance is not asked.
    void Reset();

    // Whether the loop wants the statistics of this frame. Counts down the frames that it leaves out, so it
    // is to be asked once for each.
    bool frameIsDue();
    // Applies the gains to an 8-bit mosaic of dense rows in place, ahead of the statistics. 87, without work,
    // where the camera has applied its own.
    Status ApplyGain(std::uint32_t width, std::uint32_t height, std::uint16_t frameColorArray,
                     std::uint8_t* image);
    // One step of the loop, on a frame that is due and has been measured: takes the means in, and once in
    // ten such frames decides. False where there is no loop to run.
    bool controlStep(const CAveragePixelValue& statistics);

  private:
    // Means of the frames of one decision.
    struct FrameMeans {
        std::uint32_t r, gr, gb, b;
    };

    bool isMosaic() const;
    std::uint8_t defaultMode() const;
    void resetLocked();
    void storeGain(std::size_t color, std::uint32_t gain);
    void decide(const FrameMeans& means);
    bool adjustGains(const FrameMeans& means, std::uint32_t wantR, std::uint32_t wantB);

    const bool hardwareWhiteBalance_;
    const std::uint16_t colorArray_;  // the camera's
    std::uint8_t whiteBalanceMode_ = 0;
    WhiteBalanceBand band_;
    WhiteBalanceTarget target_;
    const WhiteBalanceGains resetGain_;
    CAveragePixelValue::Weights awbWeight_{};
    std::array<GainCurve, 4> gainCurves_;        // by colour, with the gains
    std::array<std::uint32_t, 4> averageSum_{};  // by colour
    std::uint32_t averageCount_ = 0;             // frames in the sums
    bool lastAdjusted_ = false;                  // the last decision moved a gain
    std::uint8_t skipCounter_ = 0;
    mutable std::mutex whiteBalanceMutex_;
};

}  // namespace tavra
