// White balance of a raw mosaic: a gain for each of R, Gr, Gb and B, set by the caller or found from the
// frame itself. For images outside a camera handle; the gains of a camera are kept by its own control.
//
// Made by CreateStageObject, owned by whoever made it. Any thread: every operation holds the object's mutex
// from start to end.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "stages/unknown.h"
#include "stages/wb/histogram.h"

namespace tavra {

// Arguments of Apply8 and Apply16:
// - width, height: samples; 0 changes nothing.
// - stride: bytes from row to row, an even number in Apply16. 0: the width in bytes, rounded up to a multiple
//   of four.
// - colorArray: 2 to 5; for fixed gains every other code counts as 2, automatic gains refuse 0 and codes
//   above 5, and take 1 as 2.
// - pixels: the frame, changed in place; the padding of a row stays.
// - bits: significant bits of a sample, up to 12.
//
// With max = 2^bits - 1, a sample v becomes min(max, (v * gain) >> 7); a gain of 128 leaves it as it is. With
// all four gains at 128 nothing is written, whatever the samples.
//
// Result: 0; 87 for more than 12 bits, and in the automatic modes for a colour array that they refuse (0 also
// sets the thread's last error). Nothing is written then.
class IWB : public ISUnknown {
  public:
    virtual std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint16_t colorArray, std::uint8_t* pixels, std::uint16_t bits) = 0;
    virtual std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint16_t colorArray, std::uint16_t* pixels, std::uint16_t bits) = 0;

    // 0 off, 1 fixed gains, 2 gains found anew from every frame, 3 found from the next frame, then 1. Not
    // checked; other values act as 1.
    virtual std::uint32_t SetMode(std::uint8_t mode) = 0;
    virtual std::uint32_t GetMode(std::uint8_t* mode) = 0;

    // Four gains: R, Gr, Gb, B; 128 is 1.0. A user sets them before the first Apply.
    virtual std::uint32_t SetGains(const std::uint16_t* gains) = 0;
    virtual std::uint32_t GetGains(std::uint16_t* gains) = 0;  // null: nothing is given out

  protected:
    ~IWB() = default;
};

class CWB final : public CountedStage<CWB, IWB> {
  public:
    std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         std::uint16_t colorArray, std::uint8_t* pixels, std::uint16_t bits) override;
    std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint16_t colorArray, std::uint16_t* pixels, std::uint16_t bits) override;
    std::uint32_t SetMode(std::uint8_t mode) override;
    std::uint32_t GetMode(std::uint8_t* mode) override;
    std::uint32_t SetGains(const std::uint16_t* gains) override;
    std::uint32_t GetGains(std::uint16_t* gains) override;

  private:
    template <class Sample>
    std::uint32_t apply(const white_balance::Mosaic<Sample>& mosaic);

    std::mutex mutex_;
    std::uint8_t mode_ = 0;
    white_balance::Gains gains_{128, 128, 128, 128};  // neutral until set, so that a frame stays as it is
    white_balance::Histograms histograms_;            // of the last automatic frame
};

}  // namespace tavra
