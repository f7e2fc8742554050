// Shading correction: flattens the response of sensor and lens, pixel by pixel, on raw frames.
//
// Owned by the camera handle, made by CreateStageObject. The capture thread applies it, applications set it,
// any thread each: one mutex is held for a whole image, mode and map; targets and colour array are atomic.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "base/status.h"
#include "stages/shading_correction/calibration.h"
#include "stages/unknown.h"

namespace tavra {

// Modes: 0 off, 1 calibrate for gain, 2 gain correction, 3 calibrate for offset, 4 offset correction, 255
// show the map; any other acts as off.
//
// A calibration mode averages the frames it gets. The first frame in mode 2 or 4 after that makes the map of
// that mode from the mean, whichever calibration mode it was; by design, one in mode 255 drops the mean and
// makes none. Setting a calibration mode begins anew, a new size or stride does too, and so does a map of
// another size.
//
// Results: 0, or an error code, which is also the thread's last error. A null pointer for a result is passed
// over.
class IShadingCorrection : public ISUnknown {
  public:
    virtual std::uint32_t SetMode(std::uint32_t mode) = 0;
    virtual std::uint32_t GetMode(std::uint32_t* mode) = 0;

    // A raw frame in place. stride: bytes from row to row (an even number with words); 0: dense rows. bits:
    // significant bits of a sample; more than it holds count as all that it holds.
    //
    // By design: a calibration compares the stride with that of its map, 4 x width, and begins anew when they
    // differ. So with dense rows each frame starts the mean, and the map is made from the last one; a caller
    // whose stride is 4 x width gets a running mean.
    //
    // 87 without pixels, 8 without memory for the mean of a calibration. Memory for the map that cannot be
    // had is not told: the calibration then leads to no map. A map of another size than the frame, or none,
    // leaves the frame as it is.
    virtual std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                  std::uint16_t* pixels, std::uint16_t bits) = 0;
    virtual std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint8_t* pixels, std::uint16_t bits) = 0;

    // The level that a flat field is to have, 0: as in the middle of the image. One for all four positions of
    // the mosaic's cell; read as their mean, cut to a whole level.
    virtual std::uint32_t SetTarget(std::uint16_t target) = 0;
    virtual std::uint32_t GetTarget(std::uint16_t* target) = 0;
    // One for each position: that of (x & 1) + 2 x (y & 1) = k in bits 16 k to 16 k + 15.
    virtual std::uint32_t SetTargets(std::uint64_t targets) = 0;
    virtual std::uint32_t GetTargets(std::uint64_t* targets) = 0;

    // With 1 and 12 to 15 the positions share one measured target.
    virtual std::uint32_t SetColorArray(std::uint16_t colorArray) = 0;
    virtual std::uint32_t GetColorArray(std::uint16_t* colorArray) = 0;

    // The map: height x stride bytes, an int32_t a pixel in each row. What is set is copied; 8 without
    // memory, 87 without data or with a stride below 4 x width, and the map there was stays. Without a map
    // the sizes read are 0.
    virtual std::uint32_t SetMap(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 const void* data) = 0;
    virtual std::uint32_t GetMap(std::uint32_t* width, std::uint32_t* height, std::uint32_t* stride,
                                 void* data) = 0;

  protected:
    ~IShadingCorrection() = default;
};

class CShadingCorrection final : public CountedStage<CShadingCorrection, IShadingCorrection> {
  public:
    std::uint32_t SetMode(std::uint32_t mode) override;
    std::uint32_t GetMode(std::uint32_t* mode) override;
    std::uint32_t Apply16(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                          std::uint16_t* pixels, std::uint16_t bits) override;
    std::uint32_t Apply8(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         std::uint8_t* pixels, std::uint16_t bits) override;
    std::uint32_t SetTarget(std::uint16_t target) override;
    std::uint32_t GetTarget(std::uint16_t* target) override;
    std::uint32_t SetTargets(std::uint64_t targets) override;
    std::uint32_t GetTargets(std::uint64_t* targets) override;
    std::uint32_t SetColorArray(std::uint16_t colorArray) override;
    std::uint32_t GetColorArray(std::uint16_t* colorArray) override;
    std::uint32_t SetMap(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                         const void* data) override;
    std::uint32_t GetMap(std::uint32_t* width, std::uint32_t* height, std::uint32_t* stride,
                         void* data) override;
    // By design: the one stage whose table of operations ends with its destructor.
    virtual ~CShadingCorrection() = default;

  private:
    struct MapSize {
        std::uint32_t width = 0, height = 0;
        std::uint32_t stride = 0;  // bytes

        std::uint64_t bytes() const { return std::uint64_t{height} * stride; }
        bool operator==(const MapSize&) const = default;
    };
    // A raw frame in place; stride in bytes.
    template <class Sample>
    struct Frame {
        std::uint32_t width, height, stride;
        Sample* pixels;

        Sample* row(std::size_t y) const;
    };

    template <class Sample>
    std::uint32_t apply(const Frame<Sample>& frame, std::uint16_t bits);
    template <class Sample>
    Status calibrate(const Frame<Sample>& frame);
    template <class Sample>
    void correct(const Frame<Sample>& frame, std::uint32_t maximum) const;
    Status beginCalibration(std::uint32_t width, std::uint32_t height);
    void finishCalibration(std::uint32_t maximum);

    std::atomic<std::uint64_t> targets_{0};
    std::atomic<std::uint16_t> colorArray_{1};

    std::mutex mutex_;  // for all below
    std::uint32_t mode_ = 0;
    std::uint32_t frameCount_ = 0;  // averaged; above 0 the mean has the size of the map
    MapSize size_;
    std::unique_ptr<std::uint8_t[]> map_;
    std::size_t meanCount_ = 0;
    std::unique_ptr<double[]> mean_;
};

}  // namespace tavra
