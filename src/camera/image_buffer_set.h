// Three preview images that the capture thread and the drawing share without waiting for each other.
#pragma once

#include <array>
#include <cstdint>
#include <mutex>

#include "base/status.h"
#include "platform/bitmap.h"

namespace tavra {

// The handle record owns two: set A in the frame's orientation, set B with width and height exchanged. The
// mutex guards the two indices; the pixels belong to the capture thread as long as neither index names the
// image.
class ImageBufferSet {
  public:
    struct Image {
        std::uint32_t frameNumber = 0;
        platform::Bitmap bitmap;
    };

    // Makes the three images, zeroed, in place of those that were there. 8: out of memory, or a size that no
    // memory holds; nothing is left then.
    Status create(const platform::BitmapShape& shape);
    void destroy();

    const platform::BitmapShape& shape() const { return shape_; }

    // The image that neither the display nor the last publication uses; numbered for the frame.
    std::uint32_t chooseFree(std::uint32_t frameNumber);
    // Makes an image the one last finished.
    void publish(std::uint32_t index);
    // Makes the last finished image the one shown, and gives its index.
    std::uint32_t takeReady();

    // The same for a reader of its pixels: `look(shape, image)` runs with the mutex held, so that neither the
    // capture thread nor a change of the format takes the image away meanwhile. While another image is drawn,
    // that one stays the shown one: it must not become free.
    template <typename Look>
    void lookAtReady(Look look) {
        const std::lock_guard lock(mutex_);
        if (!drawing_) displayIndex_ = readyIndex_;
        look(shape_, images_[readyIndex_]);
    }

    // The same for the drawing: `draw(image)` may take its time, the capture thread goes on meanwhile, and so
    // do readers. Only a change of the format waits for it.
    template <typename Draw>
    void drawReady(Draw draw) {
        const std::lock_guard drawing(drawMutex_);
        const std::uint32_t shown = beginDrawing();
        draw(images_[shown]);
        endDrawing();
    }

    Image& image(std::uint32_t index) { return images_[index]; }

    // Held by a reader of the shown image while it looks at the pixels.
    std::mutex& mutex() { return mutex_; }

  private:
    std::uint32_t beginDrawing();
    void endDrawing();

    std::mutex drawMutex_;  // keeps the images while one is drawn; taken before the other
    std::mutex mutex_;
    std::uint32_t displayIndex_ = 0;
    std::uint32_t readyIndex_ = 0;
    bool drawing_ = false;  // the image of the display index
    platform::BitmapShape shape_;
    std::array<Image, 3> images_;
};

}  // namespace tavra
