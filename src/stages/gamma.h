// Tone curves: one for each position of a mosaic, applied to the raw frame, and one for luminance, applied to
// the image after interpolation.
//
// Owned by the camera handle and the movie converter, made by CreateStageObject. Any thread; a mutex guards
// the curves and is held for a whole image, so a change lands between two images.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "stages/gamma/curve.h"
#include "stages/gamma/lookup.h"
#include "stages/gamma/shift.h"
#include "stages/unknown.h"

namespace tavra {

// index: 0 luminance, 1 R, 2 G on the rows of R, 3 G on the rows of B, 4 B.
// mode: 0 off, 1 power curve, 2 the same reversed, 255 a table of the caller's.
class IGamma : public ISUnknown {
  public:
    // Reads a curve; every pointer may be null. `bits` tells on the way in how the caller wants the table,
    // and on the way out what depth the curve was made for:
    // - 8 or less, or a null pointer: `table` gets 256 bytes, the low bytes of the entries, `contrast` a
    // byte;
    // - 9 to 12 (more counts as 12): `table` gets 2^bits words, `contrast` a word.
    // Result: 0, or 87 for an index above 4.
    virtual std::uint32_t GetGamma(std::uint8_t index, std::uint8_t* mode, std::uint16_t* gamma,
                                   std::int16_t* brightness, void* contrast, void* table,
                                   std::uint16_t* bits) = 0;
    // Sets a curve of a depth of `bits`, 0 to 12.
    // - gamma times 100, brightness and contrast in levels of the depth: for modes 1 and 2; the others store
    //   100, 0 and 0. Formula: docs of include/tavra/api/gamma.h, with 2^bits - 1 for 255 but in the slope
    //   and in the value past the end.
    // - table: for mode 255, 2^bits bytes, or words above 8 bits; not read in the others. Entries past the
    //   depth keep what they were.
    // Result: 0; 87, and nothing changed, for an index above 4, more than 12 bits, another mode, a gamma of 0
    // in mode 1 or 2, no table in mode 255.
    virtual std::uint32_t SetGamma(std::uint8_t index, std::uint8_t mode, std::uint16_t gamma,
                                   std::int16_t brightness, std::uint16_t contrast, const void* table,
                                   std::uint16_t bits) = 0;
    // In place, on a raw frame: each sample by the curve of its position. Mono, patterns and quad mosaics
    // (arrays 1, 12 to 19) stay as they are, an array that is not known counts as 2. stride: bytes from row
    // to row, even in the 16-bit form; 0: the samples of a row, rounded up to a multiple of four bytes. Words
    // above 4095 count as 4095. Result: 0.
    virtual std::uint32_t ApplyRaw8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                    std::uint16_t colorArray, std::uint8_t* pixels) = 0;
    virtual std::uint32_t ApplyRaw16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                     std::uint16_t colorArray, std::uint16_t* pixels) = 0;
    // In place, on an image, by the luminance curve. format: 1, 4 and 8 in the first, 16, 32, 256 and 512 in
    // the second; a fourth sample keeps its value. A grey sample is replaced by its entry. A pixel of
    // luminance Y (luma_tables.h) has table[Y] - Y added to its three channels; what rises ends at 255
    // (4095), what falls at 0. Result: 0, or 87 for another format while the curve is on.
    virtual std::uint32_t ApplyImage8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                      std::uint32_t format, std::uint8_t* pixels) = 0;
    virtual std::uint32_t ApplyImage16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                       std::uint32_t format, std::uint16_t* pixels) = 0;

  protected:
    ~IGamma() = default;
};

class CGamma final : public CountedStage<CGamma, IGamma> {
  public:
    CGamma();

    std::uint32_t GetGamma(std::uint8_t index, std::uint8_t* mode, std::uint16_t* gamma,
                           std::int16_t* brightness, void* contrast, void* table,
                           std::uint16_t* bits) override;
    std::uint32_t SetGamma(std::uint8_t index, std::uint8_t mode, std::uint16_t gamma,
                           std::int16_t brightness, std::uint16_t contrast, const void* table,
                           std::uint16_t bits) override;
    std::uint32_t ApplyRaw8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                            std::uint16_t colorArray, std::uint8_t* pixels) override;
    std::uint32_t ApplyRaw16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                             std::uint16_t colorArray, std::uint16_t* pixels) override;
    std::uint32_t ApplyImage8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                              std::uint32_t format, std::uint8_t* pixels) override;
    std::uint32_t ApplyImage16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                               std::uint32_t format, std::uint16_t* pixels) override;

  private:
    struct Curve {
        Curve();

        std::uint8_t mode = 0;
        std::uint16_t gamma = 100;
        std::int16_t brightness = 0;
        std::uint16_t contrast = 0;
        std::uint16_t bits = 8;
        GammaTable table;
        ByteCurve bytes;  // of the table, kept in step with it
    };

    bool positionsOn() const;

    std::mutex mutex_;
    std::array<Curve, 5> curves_;
    LumaShift lumaShift_;  // of the luminance curve, kept in step with it
};

}  // namespace tavra
