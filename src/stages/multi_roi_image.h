// One rectangular image out of a frame that holds several regions of the sensor: the regions are pasted at
// their places in a canvas from which all columns and rows that no region covers are taken out.
//
// Made by the handle record, through CreateStageObject, when the camera first offers two regions or more; the
// frame geometry keeps it. It has no lock: Setup is called while no stream runs, one call at a time,
// everything else by the capture thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "base/region_info.h"
#include "stages/multi_roi_image/axis.h"
#include "stages/unknown.h"

namespace tavra {

// Arguments that several operations share:
// - pixelFormat: a code whose bits 16 to 23 are the bits that a pixel takes. With 0 bits nothing is composed.
//   n pixels take (n x bits + 7) / 8 bytes: each row of a packed format begins at a byte.
// - frame, frameSize: a whole raw frame and its bytes. Regions that are in use follow one another in it by
//   index, rows dense. With region mode 2 the camera has composed the image itself.
// - frameId: tells the frames apart whose regions are counted. It begins at 0.
//
// A region is in use if it is enabled and neither empty in width nor in height.
class IMultiROIImage : public ISUnknown {
  public:
    // Takes the layout, from now on for all operations; the canvas is made anew. `rowAlignment`: bytes of
    // which a canvas row is a multiple; 0 and 1 leave it dense. Gives the number of regions in use.
    virtual std::uint32_t Setup(IRegionInfo* regions, std::uint32_t rowAlignment) = 0;
    virtual std::uint32_t GetRegionCount() = 0;

    // Where region `index` (counted among those in use) lies in the frame: its first pixel; place on the
    // sensor and size in pixels; stride in bytes. Null, with nothing given out, if there is no such region or
    // if it, or one before it, passes the end of the frame. All outputs are needed.
    virtual std::uint8_t* GetRegionImage(std::uint32_t index, std::uint8_t* frame, std::uint64_t frameSize,
                                         std::uint64_t pixelFormat, std::uint64_t* x, std::uint64_t* y,
                                         std::uint64_t* width, std::uint64_t* height,
                                         std::uint64_t* stride) = 0;

    // Copies a rectangle of pixels to the canvas; x and y are places on the sensor. sourceStride: bytes, 0
    // for dense rows. Gives the canvas when as many regions as there are have been pasted with this frame ID,
    // or more, else null. Null, with nothing copied and nothing counted, when the rows do not fit in `size`
    // bytes and when there is no memory for the canvas. What would lie behind the canvas is left out.
    virtual std::uint8_t* PasteRegion(std::uint64_t frameId, const std::uint8_t* pixels, std::uint64_t size,
                                      std::uint64_t pixelFormat, std::uint64_t x, std::uint64_t y,
                                      std::uint32_t width, std::uint64_t height,
                                      std::uint64_t sourceStride) = 0;

    // Pastes all regions of a frame that it is long enough for. Gives what the last of them gave: the canvas
    // (valid until the next Setup, and until another pixel format comes), or null. With region mode 2: the
    // frame itself.
    virtual std::uint8_t* Compose(std::uint64_t frameId, std::uint8_t* frame, std::uint64_t frameSize,
                                  std::uint64_t pixelFormat) = 0;

    // Pixels of the composed image: axis 0 its width, 1 its height, any other 0.
    virtual std::uint64_t GetComposedSize(std::int32_t axis) = 0;
    // Bytes from row to row of the canvas; 0 while there is none.
    virtual std::uint64_t GetComposedStride() = 0;
    // Zeroes the canvas, when there is one.
    virtual void ClearComposed() = 0;

  protected:
    ~IMultiROIImage() = default;
};

class CMultiROIImage final : public CountedStage<CMultiROIImage, IMultiROIImage> {
  public:
    std::uint32_t Setup(IRegionInfo* regions, std::uint32_t rowAlignment) override;
    std::uint32_t GetRegionCount() override;
    std::uint8_t* GetRegionImage(std::uint32_t index, std::uint8_t* frame, std::uint64_t frameSize,
                                 std::uint64_t pixelFormat, std::uint64_t* x, std::uint64_t* y,
                                 std::uint64_t* width, std::uint64_t* height, std::uint64_t* stride) override;
    std::uint8_t* PasteRegion(std::uint64_t frameId, const std::uint8_t* pixels, std::uint64_t size,
                              std::uint64_t pixelFormat, std::uint64_t x, std::uint64_t y,
                              std::uint32_t width, std::uint64_t height, std::uint64_t sourceStride) override;
    std::uint8_t* Compose(std::uint64_t frameId, std::uint8_t* frame, std::uint64_t frameSize,
                          std::uint64_t pixelFormat) override;
    std::uint64_t GetComposedSize(std::int32_t axis) override;
    std::uint64_t GetComposedStride() override;
    void ClearComposed() override;

  private:
    struct Region {
        std::uint64_t x = 0, y = 0, width = 0, height = 0;  // pixels of the sensor
    };
    // Rows of equal length at equal distances, in bytes.
    struct Rows {
        const std::uint8_t* first;
        std::uint64_t bytes, stride, count;
    };
    // Of a region in the frame, in bytes.
    struct Place {
        std::uint64_t offset, stride;
    };

    std::span<const Region> regions() const { return std::span(regions_).first(regionCount_); }
    void readRegions(IRegionInfo& info);
    bool findInSequence(std::uint32_t index, std::uint64_t frameSize, std::uint64_t bits, Place& place) const;
    bool findInGrid(std::uint32_t index, std::uint64_t frameSize, std::uint64_t bits, Place& place) const;
    bool isFirstOfItsRow(const Region& region) const;
    void setPixelFormat(std::uint64_t pixelFormat);
    bool makeCanvas();
    void freeCanvas();
    void countRegion(std::uint64_t frameId);
    void copyToCanvas(const Rows& rows, std::uint64_t column, std::uint64_t row);

    std::array<Region, CoveredAxis::kMaxRegions> regions_;
    std::uint32_t regionCount_ = 0;
    CoveredAxis columns_;
    CoveredAxis rows_;
    std::uint32_t rowAlignment_ = 0;
    std::uint32_t regionMode_ = 0;

    std::unique_ptr<std::uint8_t[]> canvas_;
    std::size_t canvasSize_ = 0;
    std::uint64_t canvasStride_ = 0;
    std::uint64_t pixelFormat_ = 0;

    // By design: they begin together, and outlive a setup. A caller that gives every frame ID 0 thus counts
    // on from frame to frame: from its second frame on a single region makes the canvas complete.
    std::uint64_t lastFrameId_ = 0;
    std::uint64_t pastedRegions_ = 0;
};

}  // namespace tavra
