#include "stages/multi_roi_image.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace tavra {
namespace {

constexpr std::uint32_t kComposedByCamera = 2;  // region mode

constexpr std::uint64_t bitsOfPixel(std::uint64_t pixelFormat) {
    return pixelFormat >> 16 & 0xFF;
}

constexpr std::uint64_t bytesOfPixels(std::uint64_t count, std::uint64_t bits) {
    return (count * bits + 7) >> 3;
}

// Whether `rows` rows of rowBytes (not 0) lie within `size` bytes. No product of what a camera tells is
// formed before it is known to be small.
constexpr bool rowsFit(std::uint64_t rows, std::uint64_t rowBytes, std::uint64_t stride, std::uint64_t size) {
    if (rows == 0) return true;
    if (rowBytes > size) return false;
    return stride == 0 || rows - 1 <= (size - rowBytes) / stride;
}

}  // namespace

std::uint32_t CMultiROIImage::Setup(IRegionInfo* regions, std::uint32_t rowAlignment) {
    regionCount_ = 0;
    regionMode_ = 0;
    freeCanvas();
    rowAlignment_ = rowAlignment;
    if (regions != nullptr) {
        try {
            readRegions(*regions);
        } catch (...) {  // the regions told so far are the layout
        }
    }
    columns_.clear();
    rows_.clear();
    for (const Region& region : this->regions()) {
        columns_.add(region.x, region.width);
        rows_.add(region.y, region.height);
    }
    return regionCount_;
}

void CMultiROIImage::readRegions(IRegionInfo& info) {
    const std::uint32_t offered = std::min<std::uint32_t>(info.GetMaxROICount(), CoveredAxis::kMaxRegions);
    regionMode_ = info.GetROIMode();
    for (std::uint32_t index = 0; index < offered; ++index) {
        std::uint32_t enabled = 0, x = 0, y = 0, width = 0, height = 0;
        info.GetROI(index, &enabled, &x, &y, &width, &height);
        if (enabled == 0 || width == 0 || height == 0) continue;
        regions_[regionCount_++] = {x, y, width, height};
    }
}

std::uint32_t CMultiROIImage::GetRegionCount() {
    return regionCount_;
}

std::uint8_t* CMultiROIImage::GetRegionImage(std::uint32_t index, std::uint8_t* frame,
                                             std::uint64_t frameSize, std::uint64_t pixelFormat,
                                             std::uint64_t* x, std::uint64_t* y, std::uint64_t* width,
                                             std::uint64_t* height, std::uint64_t* stride) {
    const std::uint64_t bits = bitsOfPixel(pixelFormat);
    if (frame == nullptr || bits == 0 || index >= regionCount_) return nullptr;
    Place place{};
    const bool found = regionMode_ == kComposedByCamera ? findInGrid(index, frameSize, bits, place)
                                                        : findInSequence(index, frameSize, bits, place);
    if (!found) return nullptr;
    *x = regions_[index].x;
    *y = regions_[index].y;
    *width = regions_[index].width;
    *height = regions_[index].height;
    *stride = place.stride;
    return frame + place.offset;
}

// One region behind the other.
bool CMultiROIImage::findInSequence(std::uint32_t index, std::uint64_t frameSize, std::uint64_t bits,
                                    Place& place) const {
    std::uint64_t offset = 0;
    for (std::uint32_t i = 0;; ++i) {
        const std::uint64_t rowBytes = bytesOfPixels(regions_[i].width, bits);
        if (!rowsFit(regions_[i].height, rowBytes, rowBytes, frameSize - offset)) return false;
        if (i == index) {
            place = {offset, rowBytes};
            return true;
        }
        offset += rowBytes * regions_[i].height;
    }
}

// Side by side in rows of regions, which lie one below the other.
bool CMultiROIImage::findInGrid(std::uint32_t index, std::uint64_t frameSize, std::uint64_t bits,
                                Place& place) const {
    const Region& region = regions_[index];
    std::uint64_t left = 0, top = 0;
    for (const Region& other : regions()) {
        if (other.y == region.y && other.x < region.x) left += other.width;
        if (other.y < region.y && isFirstOfItsRow(other)) top += other.height;
    }
    const std::uint64_t stride = bytesOfPixels(columns_.total(), bits);
    const std::uint64_t offset = bytesOfPixels(left, bits);
    const std::uint64_t rowBytes = bytesOfPixels(region.width, bits);
    if (!rowsFit(top + region.height, offset + rowBytes, stride, frameSize)) return false;
    place = {top * stride + offset, stride};
    return true;
}

// Regions of one row begin at the same y; the first of them by index tells the row's height.
bool CMultiROIImage::isFirstOfItsRow(const Region& region) const {
    const auto first = std::find_if(regions_.begin(), regions_.end(),
                                    [&](const Region& other) { return other.y == region.y; });
    return &*first == &region;
}

std::uint8_t* CMultiROIImage::PasteRegion(std::uint64_t frameId, const std::uint8_t* pixels,
                                          std::uint64_t size, std::uint64_t pixelFormat, std::uint64_t x,
                                          std::uint64_t y, std::uint32_t width, std::uint64_t height,
                                          std::uint64_t sourceStride) {
    const std::uint64_t rowBytes = bytesOfPixels(width, bitsOfPixel(pixelFormat));
    const Rows rows = {pixels, rowBytes, sourceStride != 0 ? sourceStride : rowBytes, height};
    if (pixels == nullptr || !rowsFit(height, rowBytes, rows.stride, size)) return nullptr;
    setPixelFormat(pixelFormat);
    if (!makeCanvas()) return nullptr;
    countRegion(frameId);
    copyToCanvas(rows, columns_.compressed(x), rows_.compressed(y));
    return pastedRegions_ >= regionCount_ ? canvas_.get() : nullptr;
}

void CMultiROIImage::countRegion(std::uint64_t frameId) {
    if (frameId != lastFrameId_) {
        lastFrameId_ = frameId;
        pastedRegions_ = 0;
    }
    ++pastedRegions_;
}

// A packed row that begins between two bytes of the canvas goes to the later one.
// By design: so it may reach one byte into the canvas row below.
void CMultiROIImage::copyToCanvas(const Rows& rows, std::uint64_t column, std::uint64_t row) {
    // Beyond these nothing falls on the canvas; up to these nothing overflows.
    if (column / 8 >= canvasSize_ || row >= rows_.total()) return;
    const std::uint64_t count = std::min(rows.count, rows_.total() - row);
    std::uint64_t at = row * canvasStride_ + bytesOfPixels(column, bitsOfPixel(pixelFormat_));
    const std::uint8_t* source = rows.first;
    for (std::uint64_t i = 0; i < count && at < canvasSize_; ++i) {
        std::memcpy(canvas_.get() + at, source, std::min<std::uint64_t>(rows.bytes, canvasSize_ - at));
        at += canvasStride_;
        source += rows.stride;
    }
}

std::uint8_t* CMultiROIImage::Compose(std::uint64_t frameId, std::uint8_t* frame, std::uint64_t frameSize,
                                      std::uint64_t pixelFormat) {
    if (regionMode_ == kComposedByCamera) {
        setPixelFormat(pixelFormat);
        return frame;
    }
    const std::uint64_t bits = bitsOfPixel(pixelFormat);
    if (frame == nullptr || bits == 0) return nullptr;
    std::uint8_t* image = nullptr;
    std::uint64_t offset = 0;
    for (const Region& region : regions()) {
        const std::uint64_t rowBytes = bytesOfPixels(region.width, bits);
        // None behind a region that is cut off can be there either.
        if (!rowsFit(region.height, rowBytes, rowBytes, frameSize - offset)) break;
        const std::uint64_t bytes = rowBytes * region.height;
        image = PasteRegion(frameId, frame + offset, bytes, pixelFormat, region.x, region.y,
                            static_cast<std::uint32_t>(region.width), region.height, 0);
        offset += bytes;
    }
    return image;
}

void CMultiROIImage::setPixelFormat(std::uint64_t pixelFormat) {
    if (pixelFormat != pixelFormat_) freeCanvas();
    pixelFormat_ = pixelFormat;
}

// False without memory, and for a canvas without bytes, which is no image.
bool CMultiROIImage::makeCanvas() {
    if (canvas_ != nullptr) return true;
    std::uint64_t stride = bytesOfPixels(columns_.total(), bitsOfPixel(pixelFormat_));
    if (rowAlignment_ > 1) stride = (stride + rowAlignment_ - 1) / rowAlignment_ * rowAlignment_;
    const std::uint64_t height = rows_.total();
    constexpr std::uint64_t kMostBytes = std::numeric_limits<std::ptrdiff_t>::max();
    if (stride == 0 || height == 0 || height > kMostBytes / stride) return false;
    const auto size = static_cast<std::size_t>(stride * height);
    canvas_.reset(new (std::nothrow) std::uint8_t[size]());
    if (canvas_ == nullptr) return false;
    canvasSize_ = size;
    canvasStride_ = stride;
    return true;
}

void CMultiROIImage::freeCanvas() {
    canvas_.reset();
    canvasSize_ = 0;
    canvasStride_ = 0;
}

std::uint64_t CMultiROIImage::GetComposedSize(std::int32_t axis) {
    switch (axis) {
        case 0: return columns_.total();
        case 1: return rows_.total();
        default: return 0;
    }
}

std::uint64_t CMultiROIImage::GetComposedStride() {
    return canvasStride_;
}

void CMultiROIImage::ClearComposed() {
    if (canvas_ != nullptr) std::memset(canvas_.get(), 0, canvasSize_);
}

}  // namespace tavra
