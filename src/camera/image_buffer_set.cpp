#include "camera/image_buffer_set.h"

#include <cstddef>
#include <limits>

#include "base/pixel_format.h"

namespace tavra {
namespace {

// The bits of a row and the bytes of an image are counted in 32 bits: a camera that lies about its size must
// not get a small image for a large one.
bool canExist(const platform::BitmapShape& shape) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    const std::uint64_t rowBytes = paddedStride(shape.width, shape.bitCount / 8);
    return rowBytes <= kMost / 8 && (shape.height == 0 || rowBytes <= kMost / shape.height);
}

}  // namespace

Status ImageBufferSet::create(const platform::BitmapShape& shape) {
    destroy();
    if (!canExist(shape)) return Status(error::kOutOfMemory);
    const std::scoped_lock lock(drawMutex_, mutex_);
    for (Image& image : images_) {
        const Status status = image.bitmap.create(shape);
        if (status.ok()) continue;
        for (Image& made : images_) made.bitmap.free();
        return status;
    }
    shape_ = shape;
    return Status();
}

void ImageBufferSet::destroy() {
    const std::scoped_lock lock(drawMutex_, mutex_);
    for (Image& image : images_) {
        image.bitmap.free();
        image.frameNumber = 0;
    }
    displayIndex_ = 0;
    readyIndex_ = 0;
    shape_ = {};
}

std::uint32_t ImageBufferSet::chooseFree(std::uint32_t frameNumber) {
    const std::lock_guard lock(mutex_);
    std::uint32_t chosen = 0;
    switch (displayIndex_) {
        case 0: chosen = readyIndex_ == 1 ? 2 : 1; break;
        case 1: chosen = readyIndex_ != 0 ? 0 : 2; break;
        default: chosen = readyIndex_ == 0 ? 1 : 0; break;
    }
    images_[chosen].frameNumber = frameNumber;
    return chosen;
}

void ImageBufferSet::publish(std::uint32_t index) {
    const std::lock_guard lock(mutex_);
    readyIndex_ = index;
}

std::uint32_t ImageBufferSet::takeReady() {
    const std::lock_guard lock(mutex_);
    displayIndex_ = readyIndex_;
    return displayIndex_;
}

std::uint32_t ImageBufferSet::beginDrawing() {
    const std::lock_guard lock(mutex_);
    drawing_ = true;
    displayIndex_ = readyIndex_;
    return displayIndex_;
}

void ImageBufferSet::endDrawing() {
    const std::lock_guard lock(mutex_);
    drawing_ = false;
}

}  // namespace tavra
