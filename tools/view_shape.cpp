#include "view_shape.h"

namespace tavra::tool {

ShapeWatch::ShapeWatch(const Camera& camera) : camera_(camera) {
    camera_.check(Tavra_AddPreviewBitmapCallback(camera_.handle(), onImage, this, &identifier_),
                  "cannot receive images");
}

ShapeWatch::~ShapeWatch() {
    Tavra_RemovePreviewBitmapCallback(camera_.handle(), identifier_);
}

// Numbers wrap at 32 bits.
std::optional<Extent> ShapeWatch::changeBy(std::uint32_t published) {
    const std::lock_guard lock(mutex_);
    if (!changed_ || static_cast<std::int32_t>(published - changedAt_) < 0) return std::nullopt;
    changed_ = false;
    return shape_;
}

void ShapeWatch::onImage(void*, std::uint32_t, std::uint32_t width, std::uint32_t height,
                         std::uint32_t number, std::uint32_t, void* context, std::uint32_t*) {
    auto& watch = *static_cast<ShapeWatch*>(context);
    const std::lock_guard lock(watch.mutex_);
    const Extent shape{width, height};
    if (shape == watch.shape_) return;
    watch.shape_ = shape;
    watch.changed_ = true;
    watch.changedAt_ = number;
}

}  // namespace tavra::tool
