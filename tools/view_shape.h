// Notes which size the images of a stream have: from the first on, and when a rotation changes it.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "camera.h"
#include "view_mask.h"

namespace tavra::tool {

// Registers itself with the camera. Made before the stream starts, gone after it has stopped. The capture
// thread fills it, another thread asks.
class ShapeWatch {
  public:
    explicit ShapeWatch(const Camera& camera);
    ~ShapeWatch();
    ShapeWatch(const ShapeWatch&) = delete;
    ShapeWatch& operator=(const ShapeWatch&) = delete;

    // A new size, once, as soon as the frame `published` or one before it had it.
    std::optional<Extent> changeBy(std::uint32_t published);

  private:
    static void onImage(void* data, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                        std::uint32_t number, std::uint32_t pixelFormat, void* context, std::uint32_t* word);

    const Camera& camera_;
    std::uint32_t identifier_ = 0;
    std::mutex mutex_;
    Extent shape_;
    bool changed_ = false;
    std::uint32_t changedAt_ = 0;  // frame number
};

}  // namespace tavra::tool
