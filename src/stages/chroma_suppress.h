// Colour suppression: pulls R and B towards G where a sensor's colour is unreliable, in the highlights and in
// the shadows. The last stage of a colour image.
//
// Owned by the camera handle, made by CreateStageObject. Any thread may set and get while another applies; a
// change may land in the middle of an image.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "stages/unknown.h"

namespace tavra {

// Luminance is that of luma_tables.h. A pixel above the high threshold, or below the low one, moves by
// k / 16384 of the distance between G and the channel, k being strength times the levels past the threshold,
// the first one counted twice (distance + 1), at most 16384; where both apply, the larger k. A low threshold
// or a strength of 0 turns a side off, and so does a high threshold at the largest value of a sample (255 in
// Apply8, 65535 in Apply16) or above.
//
// Setters and getters always succeed, but for a null pointer, which gives 87. Those without High or Low in
// their names are those of the high side.
class IChromaSuppress : public ISUnknown {
  public:
    // In place, on an image of
    // - width, height: pixels; 0 changes nothing.
    // - stride: bytes from row to row, even in the 16-bit form; 0: width pixels, rounded up to a multiple of
    //   four bytes.
    // - format: 4 and 8 in Apply8, 256 and 512 in Apply16; a fourth sample keeps its value. Mono (1; 2, 16,
    //   32 and 64) is left as it is. Words above 4095 have the luminance of 4095.
    // Result: 0, or 87 for another format while a side is on. With both sides off every format succeeds.
    virtual std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint32_t format, std::uint8_t* pixels) = 0;
    virtual std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint32_t format, std::uint16_t* pixels) = 0;
    virtual std::uint32_t SetThreshold(std::uint16_t value) = 0;
    virtual std::uint32_t GetThreshold(std::uint16_t* value) = 0;
    virtual std::uint32_t SetStrength(std::uint16_t value) = 0;
    virtual std::uint32_t GetStrength(std::uint16_t* value) = 0;
    virtual std::uint32_t SetLowThreshold(std::uint16_t value) = 0;
    virtual std::uint32_t GetLowThreshold(std::uint16_t* value) = 0;
    virtual std::uint32_t SetLowStrength(std::uint16_t value) = 0;
    virtual std::uint32_t GetLowStrength(std::uint16_t* value) = 0;
    virtual std::uint32_t SetHighThreshold(std::uint16_t value) = 0;
    virtual std::uint32_t GetHighThreshold(std::uint16_t* value) = 0;
    virtual std::uint32_t SetHighStrength(std::uint16_t value) = 0;
    virtual std::uint32_t GetHighStrength(std::uint16_t* value) = 0;

  protected:
    ~IChromaSuppress() = default;
};

class CChromaSuppress final : public CountedStage<CChromaSuppress, IChromaSuppress> {
  public:
    std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         std::uint32_t format, std::uint8_t* pixels) override;
    std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint32_t format, std::uint16_t* pixels) override;
    std::uint32_t SetThreshold(std::uint16_t value) override;
    std::uint32_t GetThreshold(std::uint16_t* value) override;
    std::uint32_t SetStrength(std::uint16_t value) override;
    std::uint32_t GetStrength(std::uint16_t* value) override;
    std::uint32_t SetLowThreshold(std::uint16_t value) override;
    std::uint32_t GetLowThreshold(std::uint16_t* value) override;
    std::uint32_t SetLowStrength(std::uint16_t value) override;
    std::uint32_t GetLowStrength(std::uint16_t* value) override;
    std::uint32_t SetHighThreshold(std::uint16_t value) override;
    std::uint32_t GetHighThreshold(std::uint16_t* value) override;
    std::uint32_t SetHighStrength(std::uint16_t value) override;
    std::uint32_t GetHighStrength(std::uint16_t* value) override;

  private:
    using Field = std::atomic<std::uint16_t>;

    template <class Sample>
    std::uint32_t apply(std::uint32_t width, std::uint32_t height, std::uint32_t stride, std::uint32_t format,
                        Sample* pixels);
    std::uint32_t set(Field& field, std::uint16_t value);
    std::uint32_t get(const Field& field, std::uint16_t* value);

    std::mutex mutex_;
    // By design: atomic, for an image reads them behind the mutex.
    Field lowThreshold_{0};
    Field highThreshold_{255};
    Field lowStrength_{0};
    Field highStrength_{0};
};

}  // namespace tavra
