// The colour matrix, with hue and saturation: one transform of the BGR image that comes out of interpolation.
//
// Owned by the camera handle and the movie converter, made by CreateStageObject. Any thread; a mutex guards
// the settings and is held for a whole image, so a change lands between two images.
#pragma once

#include <cstdint>
#include <mutex>

#include "stages/color_matrix/lines.h"
#include "stages/color_matrix/tables.h"
#include "stages/unknown.h"

namespace tavra {

class IColorMatrix : public ISUnknown {
  public:
    // mode: 0 off, which restores the identity, or 0xFF. matrix: 12 values in hundredths, three rows of four
    // for R, G and B, each (from R, from G, from B, offset); not read with mode 0. Result: 0, or 87 for
    // another mode or no matrix, which changes nothing and sets the thread's last error too.
    virtual std::uint32_t SetColorMatrix(std::uint8_t mode, const std::int16_t* matrix) = 0;
    // Each pointer may be null. Result: 0.
    virtual std::uint32_t GetColorMatrix(std::uint8_t* mode, std::int16_t* matrix) = 0;
    // mode: 1 on; 0 off, which stores hue 0 and saturation 100. hue: tenths of a degree. saturation:
    // hundredths. Result: 0, or 87 for another mode, which changes nothing and sets the thread's last error
    // too.
    virtual std::uint32_t SetHueSaturation(std::uint8_t mode, std::int16_t hue, std::uint16_t saturation) = 0;
    // Each pointer may be null. Result: 0.
    virtual std::uint32_t GetHueSaturation(std::uint8_t* mode, std::int16_t* hue,
                                           std::uint16_t* saturation) = 0;
    // In place, on an image of
    // - width, height: pixels; 0 changes nothing.
    // - stride: bytes from row to row, even in the 16-bit form; 0: width pixels, rounded up to a multiple of
    //   four bytes.
    // - format: 4 or 256 for three samples a pixel, 8 or 512 for four, of which the last stays. Mono
    //   (1, 2, 16, 32, 64) is left as it is.
    // - bits: depth of the samples; results end at 2^bits - 1, or at the largest sample.
    // Words above 4095 count as 4095. Result: 0, or 87 for another format, even with both modes off, which
    // sets the thread's last error too.
    virtual std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint32_t format, std::uint8_t* pixels, std::uint8_t bits) = 0;
    virtual std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint32_t format, std::uint16_t* pixels, std::uint8_t bits) = 0;

  protected:
    ~IColorMatrix() = default;
};

class CColorMatrix final : public CountedStage<CColorMatrix, IColorMatrix> {
  public:
    CColorMatrix();

    std::uint32_t SetColorMatrix(std::uint8_t mode, const std::int16_t* matrix) override;
    std::uint32_t GetColorMatrix(std::uint8_t* mode, std::int16_t* matrix) override;
    std::uint32_t SetHueSaturation(std::uint8_t mode, std::int16_t hue, std::uint16_t saturation) override;
    std::uint32_t GetHueSaturation(std::uint8_t* mode, std::int16_t* hue, std::uint16_t* saturation) override;
    std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         std::uint32_t format, std::uint8_t* pixels, std::uint8_t bits) override;
    std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint32_t format, std::uint16_t* pixels, std::uint8_t bits) override;

  private:
    void rebuild();  // under the mutex
    bool off() const { return matrixMode_ == 0 && hueSaturationMode_ == 0; }

    std::mutex mutex_;
    std::uint8_t matrixMode_ = 0;
    std::uint8_t hueSaturationMode_ = 0;
    ColorMatrixSettings settings_;
    ColorTables tables_;
    PackedColorTables packed_;
    ColorLines lines_;
};

}  // namespace tavra
