// Where the regions of a frame lie: what region composition asks of the geometry.
#pragma once

#include <cstdint>

namespace tavra {

// Implemented by the frame geometry (CFrameFeature). The slot order is part of the contract.
class IRegionInfo {
  public:
    virtual std::uint32_t GetMaxROICount() = 0;  // 1 to 32
    virtual std::uint32_t GetROIMode() = 0;      // 0 with fewer than two regions, else the camera's mode word
    // Region `index`, in pixels of the sensor; enabled is 0 or 1. The index is not tested.
    virtual void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                        std::uint32_t* width, std::uint32_t* height) = 0;
    virtual std::uint32_t GetROIGroup() = 0;

  protected:
    ~IRegionInfo() = default;
};

}  // namespace tavra
