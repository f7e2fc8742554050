// From a raw frame to an image with one pixel for each sample: BGR from a Bayer mosaic, grey from mono, BGR
// from packed YCbCr. The methods and their arithmetic are told in docs/image-chain.md.
//
// Owned by the camera handle and the movie converter, made by CreateStageObject. It has no settings and no
// lock: any number of threads may call one object, each with buffers of its own.
#pragma once

#include <cstdint>

#include "stages/unknown.h"

namespace tavra {

// Arguments of all four operations:
// - width, height: pixels; 0 converts nothing and succeeds.
// - sourceStride, destinationStride: bytes from row to row, in the 16-bit forms too (an even number there).
//   0 on the source: rows are dense (width samples; for YCbCr what the layout takes). 0 on the destination:
//   width pixels, rounded up to a multiple of four bytes.
// - source, destination: two buffers that do not overlap.
// - method: 0 off, 1 raw colour, 2 nearest, 3 bilinear, 4 four-tap, 5 cell-centre bilinear,
//   6 cell-centre nearest.
// - colorArray: 1 to 19.
// - bytesPerPixel: of the output; 1 for grey, 3 or 4 for BGR (in the 16-bit forms words, not bytes).
//   A larger number spaces the pixels wider.
//
// What a pixel has behind B, G and R keeps its value; a fourth byte or word is rewritten with the value it
// had, so no other thread may write there meanwhile. The padding of a row is not touched, except where a
// plane is copied with both strides equal: that is one block copy, which carries the source's padding along.
//
// Result: 0; 87 for an array outside 1 to 19 or a method above 6 on a mosaic (both also set the thread's
// last error), and for an output size that the conversion does not have; 8 without memory for a quad
// mosaic. With a result other than 0 nothing is written.
class IColorInterpolation : public ISUnknown {
  public:
    virtual std::uint32_t ConvertEx(std::uint32_t width, std::uint32_t height, std::uint32_t sourceStride,
                                    const std::uint8_t* source, std::uint32_t destinationStride,
                                    std::uint8_t* destination, std::uint8_t method, std::uint16_t colorArray,
                                    std::uint16_t bytesPerPixel) = 0;
    virtual std::uint32_t Convert(std::uint32_t width, std::uint32_t height, const std::uint8_t* source,
                                  std::uint8_t* destination, std::uint8_t method, std::uint16_t colorArray,
                                  std::uint16_t bytesPerPixel) = 0;
    // Samples in words, right-aligned, up to 12 significant bits (8 for method 4, which clamps at 255).
    virtual std::uint32_t ConvertEx16(std::uint32_t width, std::uint32_t height, std::uint32_t sourceStride,
                                      const std::uint16_t* source, std::uint32_t destinationStride,
                                      std::uint16_t* destination, std::uint8_t method,
                                      std::uint16_t colorArray, std::uint16_t wordsPerPixel) = 0;
    virtual std::uint32_t Convert16(std::uint32_t width, std::uint32_t height, const std::uint16_t* source,
                                    std::uint16_t* destination, std::uint8_t method, std::uint16_t colorArray,
                                    std::uint16_t wordsPerPixel) = 0;

  protected:
    ~IColorInterpolation() = default;
};

class CColorInterpolation final : public CountedStage<CColorInterpolation, IColorInterpolation> {
  public:
    std::uint32_t ConvertEx(std::uint32_t width, std::uint32_t height, std::uint32_t sourceStride,
                            const std::uint8_t* source, std::uint32_t destinationStride,
                            std::uint8_t* destination, std::uint8_t method, std::uint16_t colorArray,
                            std::uint16_t bytesPerPixel) override;
    std::uint32_t Convert(std::uint32_t width, std::uint32_t height, const std::uint8_t* source,
                          std::uint8_t* destination, std::uint8_t method, std::uint16_t colorArray,
                          std::uint16_t bytesPerPixel) override;
    std::uint32_t ConvertEx16(std::uint32_t width, std::uint32_t height, std::uint32_t sourceStride,
                              const std::uint16_t* source, std::uint32_t destinationStride,
                              std::uint16_t* destination, std::uint8_t method, std::uint16_t colorArray,
                              std::uint16_t wordsPerPixel) override;
    std::uint32_t Convert16(std::uint32_t width, std::uint32_t height, const std::uint16_t* source,
                            std::uint16_t* destination, std::uint8_t method, std::uint16_t colorArray,
                            std::uint16_t wordsPerPixel) override;
};

}  // namespace tavra
