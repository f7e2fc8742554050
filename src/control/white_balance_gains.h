// Gains on the samples of an 8-bit mosaic, in fixed point. Pure; any thread.
#pragma once

#include <array>
#include <cstdint>

namespace tavra {

// What one gain makes of a sample. 128 is 1.0.
class GainCurve {
  public:
    static constexpr std::uint16_t kUnity = 128;

    constexpr GainCurve() = default;  // unity
    // A product from 255 on is cut. By design: the cut begins with the first sample whose product comes
    // within one gain of it, so that it may jump: with a gain of 2.0 the sample 127 is 255 already.
    explicit constexpr GainCurve(std::uint16_t gain)
        : gain_(gain), cut_(gain == 0 || kFullScale / gain > kSamples ? kSamples : kFullScale / gain) {}

    constexpr std::uint8_t operator()(std::uint8_t sample) const {
        return static_cast<std::uint8_t>(sample < cut_ ? sample * gain_ >> 7 : 255);
    }

    constexpr std::uint16_t gain() const { return gain_; }
    constexpr std::uint16_t cut() const { return cut_; }  // the first sample that becomes 255; 256: none

  private:
    static constexpr std::uint32_t kFullScale = 255 * 128;
    static constexpr std::uint32_t kSamples = 256;

    std::uint16_t gain_ = kUnity;
    std::uint16_t cut_ = kFullScale / kUnity;
};

// Maps the samples of a mosaic of dense rows in place, by pattern position (x & 1) + 2 * (y & 1). An odd last
// row or column stays.
void applyGains(std::uint32_t width, std::uint32_t height, const std::array<GainCurve, 4>& byPosition,
                std::uint8_t* image);

}  // namespace tavra
