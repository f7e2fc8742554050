// Sharpening of a finished image: the difference of a pixel from the mean of its eight neighbours is made
// larger, small differences are left alone. On a colour image the difference is that of the luminance, and
// the same correction goes to all three channels, so that no coloured fringes arise.
//
// Made by CreateStageObject, owned by the camera handle and the movie converter. Any thread: every operation
// holds the object's mutex from start to end.
#pragma once

#include <cstdint>
#include <mutex>

#include "stages/sharpness/corrections.h"
#include "stages/unknown.h"

namespace tavra {

// Arguments of Apply16 and Apply8:
// - width, height: pixels; the outermost rows and columns are never changed, so anything below 3 x 3 stays.
// - stride: bytes from row to row, an even number in Apply16. 0: the width times the bytes of a pixel,
//   rounded up to a multiple of four.
// - format: pixel format code. With 8 bits: 1 grey, 4 B, G, R, 8 B, G, R and a fourth sample that stays. With
//   more: 2, 16, 32 and 64 grey, 256 B, G, R, 512 B, G, R and a fourth sample.
// - pixels: the image, changed in place; the padding of a row stays.
// - bits: significant bits of a sample, 8 to 12. Words above 4095 are the caller's mistake: what comes out is
//   not told. Bytes of more than 8 bits are held back by nothing, and of a sum the low byte stays.
//
// Result: 0; with the thread's last error set: 87 for another depth or format, 8 without memory for the lines
// that the work goes by (8 bytes for a pixel of the width, in Apply16 10). Nothing is written then. While the
// mode is 0, nothing of this is looked at.
class ISharpness : public ISUnknown {
  public:
    // mode: 0 off, any other value on. gain: hundredths, 100 adds the whole difference. coring: levels up to
    // which a difference is left alone. Always 0.
    virtual std::uint32_t SetMode(std::uint8_t mode, std::uint16_t gain, std::uint16_t coring) = 0;
    virtual std::uint32_t GetMode(std::uint8_t* mode, std::uint16_t* gain, std::uint16_t* coring) = 0;

    virtual std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint32_t format, std::uint16_t* pixels, std::uint16_t bits) = 0;
    virtual std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint32_t format, std::uint8_t* pixels, std::uint16_t bits) = 0;

  protected:
    ~ISharpness() = default;
};

class CSharpness final : public CountedStage<CSharpness, ISharpness> {
  public:
    std::uint32_t SetMode(std::uint8_t mode, std::uint16_t gain, std::uint16_t coring) override;
    std::uint32_t GetMode(std::uint8_t* mode, std::uint16_t* gain, std::uint16_t* coring) override;
    std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint32_t format, std::uint16_t* pixels, std::uint16_t bits) override;
    std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         std::uint32_t format, std::uint8_t* pixels, std::uint16_t bits) override;

  private:
    template <class Sample>
    std::uint32_t apply(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::uint32_t format,
                        Sample* pixels, std::uint16_t bits);

    std::mutex mutex_;
    std::uint8_t mode_ = 0;
    std::uint16_t gain_ = 0;
    std::uint16_t coring_ = 0;
    sharpness::Corrections corrections_;  // for gain_ and coring_ while mode_ is not 0
};

}  // namespace tavra
