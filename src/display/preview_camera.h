// What the preview window sees of its camera. The handle record implements it.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/frame_feature.h"
#include "camera/image_buffer_set.h"

namespace tavra {

class IPreviewCamera {
  public:
    virtual ImageSize previewImageSize() const = 0;  // before rotation
    virtual std::uint32_t previewPixelFormat() const = 0;
    // Whether the image published last belongs to the set with width and height exchanged.
    virtual bool previewIsRotated() const = 0;
    virtual ImageBufferSet& previewImages(bool rotated) = 0;
    // Posts to the application's receiver, with the handle as first parameter; success without a receiver.
    virtual Status postToReceiver(std::uint32_t message, std::uint64_t parameter) = 0;
    // Keeps a failure as last error.
    virtual void notePreviewFailure(Status status) = 0;

  protected:
    ~IPreviewCamera() = default;
};

}  // namespace tavra
