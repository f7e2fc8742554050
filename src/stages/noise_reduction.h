// Noise reduction on the raw frame, 8 bits a sample: a limit at the median of the neighbourhood, or the
// subtraction of a dark frame that was taken before.
//
// Part of the camera handle's record. Frames are processed by the capture thread alone, without a lock; the
// mode may be set and read from any thread, and is looked at once for each frame.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "tavra/tavra_types.h"

namespace tavra {

class CNoiseReduction {
  public:
    CNoiseReduction() = default;
    virtual ~CNoiseReduction() = default;
    CNoiseReduction(const CNoiseReduction&) = delete;
    CNoiseReduction& operator=(const CNoiseReduction&) = delete;

    // A TAVRA_NOISE_REDUCTION_ code; not checked, an unknown one acts as off.
    void setMode(std::uint32_t mode) { mode_ = mode; }
    std::uint32_t mode() const { return mode_; }

    // Treats a frame of width x height dense bytes in place, as the mode asks. False with the thread's last
    // error set, and the frame as it stands at that point:
    // - 87: the median limit is for colour arrays 1, 2 and 5; there is no dark frame of this size and colour
    //   array; or, after the subtraction, the array is neither 1 nor 2, so that saturated samples stay low;
    // - 8: no memory for a copy of the frame, nothing is changed. (A dark frame is lost by the attempt to
    //   replace it.)
    bool Process(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray, std::uint8_t* pixels);

  private:
    bool limitToMedian(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                       std::uint8_t* pixels);
    bool takeDarkFrame(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                       const std::uint8_t* pixels);
    bool subtractDarkFrame(std::uint32_t width, std::uint32_t height, std::uint16_t colorArray,
                           std::uint8_t* pixels);
    bool copyFrame(const std::uint8_t* pixels, std::size_t size);

    std::atomic<std::uint32_t> mode_{TAVRA_NOISE_REDUCTION_OFF};

    // The excess of each sample over the black level of its position; null: none was taken.
    std::unique_ptr<std::uint8_t[]> darkFrame_;
    std::uint32_t darkWidth_ = 0;
    std::uint32_t darkHeight_ = 0;
    std::uint16_t darkColorArray_ = 0;

    // The frame as it came in. Kept from frame to frame, made anew when the size changes.
    std::unique_ptr<std::uint8_t[]> copy_;
    std::size_t copySize_ = 0;
};

}  // namespace tavra
