// What settings ask of a camera beyond the functions of the public interface.
//
// The camera is stopped, its stream does not start meanwhile, and all calls come from the thread that saves,
// loads or resets. Its window can be closed at any moment, by the user or by another thread.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "tavra/tavra_types.h"

namespace tavra {

class ISettingCamera {
  public:
    // For the public functions; they keep their failures as the last error of this handle.
    virtual TavraHandle handle() const = 0;
    virtual void noteFailure(Status status) = 0;

    // One of the four oldest types.
    virtual bool legacy() const = 0;
    // What Tavra_SetSettingFileMode said.
    virtual std::uint32_t fileMode() const = 0;
    // A preview window is open, and its handle is good.
    virtual bool hasPreviewWindow() const = 0;

    // Stores the rotation without making anything anew.
    virtual Status storeRotation(std::uint8_t mode) = 0;
    // Puts a control back to its defaults.
    virtual Status resetExposure() = 0;
    virtual void resetStatistics() = 0;
    virtual void resetWhiteBalance() = 0;

  protected:
    ~ISettingCamera() = default;
};

}  // namespace tavra
