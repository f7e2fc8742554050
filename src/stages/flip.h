// Mirror and rotation in the library, in one pass, on raw frames and on images.
//
// Owned by the camera handle, made by CreateStageObject. It has no settings and no lock: one thread at a time
// calls an object, the capture thread that of the handle.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "stages/unknown.h"

namespace tavra {

// Arguments of all four operations:
// - mirror: bit 0 horizontal, bit 1 vertical; other bits have no effect.
// - rotation: behind the mirror, 1 a quarter turn clockwise, 2 anticlockwise; any other none.
// - width, height: pixels, in those of the source, out those of the result: exchanged by a quarter turn.
// - source, destination: rows are dense in both. The same buffer, or two that do not overlap.
//
// Without mirror and rotation nothing is done, and nothing copied, whatever the other arguments are.
// A quarter turn in place works from a copy in memory of the object's own, which grows on demand and is kept.
//
// Result: 0; 87 for an unknown number of bytes a pixel or a null pointer, 8 without memory for the copy; both
// also set the thread's last error. With a result other than 0 nothing is written.
class IFlip : public ISUnknown {
  public:
    // bytesPerPixel: 1, 3 or 4. A mirror moves the fourth byte with its pixel; a quarter turn, with or
    // without a mirror, leaves the fourth bytes of the destination as they are (they are rewritten with the
    // values they had).
    virtual std::uint32_t Flip8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                                std::uint32_t* height, const std::uint8_t* source, std::uint8_t* destination,
                                std::uint16_t bytesPerPixel) = 0;
    // The same on 16-bit words: wordsPerPixel is 1, 3 or 4.
    virtual std::uint32_t Flip16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                                 std::uint32_t* height, const std::uint16_t* source,
                                 std::uint16_t* destination, std::uint16_t wordsPerPixel) = 0;
    // One sample a pixel. colorArray: in that of the source, out that of the result.
    virtual std::uint32_t FlipRaw8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                                   std::uint32_t* height, const std::uint8_t* source,
                                   std::uint8_t* destination, std::uint16_t* colorArray) = 0;
    virtual std::uint32_t FlipRaw16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                                    std::uint32_t* height, const std::uint16_t* source,
                                    std::uint16_t* destination, std::uint16_t* colorArray) = 0;

  protected:
    ~IFlip() = default;
};

class CFlip final : public CountedStage<CFlip, IFlip> {
  public:
    std::uint32_t Flip8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                        std::uint32_t* height, const std::uint8_t* source, std::uint8_t* destination,
                        std::uint16_t bytesPerPixel) override;
    std::uint32_t Flip16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                         std::uint32_t* height, const std::uint16_t* source, std::uint16_t* destination,
                         std::uint16_t wordsPerPixel) override;
    std::uint32_t FlipRaw8(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                           std::uint32_t* height, const std::uint8_t* source, std::uint8_t* destination,
                           std::uint16_t* colorArray) override;
    std::uint32_t FlipRaw16(std::uint8_t mirror, std::uint8_t rotation, std::uint32_t* width,
                            std::uint32_t* height, const std::uint16_t* source, std::uint16_t* destination,
                            std::uint16_t* colorArray) override;

  private:
    // An image as an operation got it; pixelBytes is 0 for a number of samples that is not served.
    struct Request {
        std::uint8_t mirror, rotation;
        std::uint32_t *width, *height;
        const void* source;
        void* destination;
        std::size_t pixelBytes;
    };
    std::uint32_t flip(const Request& request);
    std::uint32_t flipRaw(const Request& request, std::uint16_t* colorArray);
    bool copyToScratch(const std::uint8_t* source, std::size_t width, std::size_t height,
                       std::size_t pixelBytes);

    std::unique_ptr<std::uint8_t[]> scratch_;
    std::size_t scratchSize_ = 0;
};

}  // namespace tavra
