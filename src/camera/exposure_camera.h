// What exposure control needs of its camera. Implemented by the handle record.
#pragma once

#include "base/status.h"
#include "camera/camera_info.h"
#include "camera/capability_words.h"
#include "camera/exposure_block.h"
#include "camera/frame_feature.h"

namespace tavra {

class IStatusWords;

// Any thread. The three getters of what a camera is give the same objects for its whole life.
class IExposureCamera {
  public:
    virtual const CameraInfo& exposureIdentity() const = 0;
    virtual const CapabilityWords& exposureCapabilities() const = 0;
    virtual IStatusWords& statusWords() = 0;
    virtual ScanRecord scanRecord() const = 0;  // a copy of the present one

    virtual Status readExposure(ExposureBlock& block) = 0;
    virtual Status writeExposure(const ExposureBlock& block) = 0;
    // Sends the present scan record: a new exposure then sets the length of a frame.
    virtual Status sendFrameTiming() = 0;

  protected:
    ~IExposureCamera() = default;
};

}  // namespace tavra
