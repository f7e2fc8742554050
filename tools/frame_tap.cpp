#include "frame_tap.h"

#include <utility>

namespace tavra::tool {

FrameTap::FrameTap(const Camera& camera, What what) : camera_(camera), what_(what) {
    camera_.check(what_ == What::RawFrames
                      ? Tavra_AddRawCallback(camera_.handle(), onRaw, this, &identifier_)
                      : Tavra_AddPreviewBitmapCallback(camera_.handle(), onImage, this, &identifier_),
                  "cannot receive frames");
}

FrameTap::~FrameTap() {
    if (what_ == What::RawFrames) {
        Tavra_RemoveRawCallback(camera_.handle(), identifier_);
    } else {
        Tavra_RemovePreviewBitmapCallback(camera_.handle(), identifier_);
    }
}

void FrameTap::ask() {
    const std::lock_guard lock(mutex_);
    wanted_ = true;
    full_ = false;
}

bool FrameTap::take(TappedFrame& frame) {
    const std::lock_guard lock(mutex_);
    if (!full_) return false;
    std::swap(frame, kept_);  // the memory goes back and forth
    full_ = false;
    return true;
}

void FrameTap::onRaw(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                     std::uint32_t number, std::uint16_t colorArray, std::uint32_t transferBits,
                     void* context, std::uint32_t*) {
    static_cast<FrameTap*>(context)->keep(data, size,
                                          {{}, width, height, number, colorArray, transferBits, 0});
}

void FrameTap::onImage(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                       std::uint32_t number, std::uint32_t pixelFormat, void* context, std::uint32_t*) {
    static_cast<FrameTap*>(context)->keep(data, size, {{}, width, height, number, 0, 0, pixelFormat});
}

void FrameTap::keep(const void* data, std::uint32_t size, const TappedFrame& description) {
    const std::lock_guard lock(mutex_);
    if (!wanted_) return;
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    std::vector<std::uint8_t> memory = std::move(kept_.data);
    memory.assign(bytes, bytes + size);
    kept_ = description;
    kept_.data = std::move(memory);
    wanted_ = false;
    full_ = true;
}

}  // namespace tavra::tool
