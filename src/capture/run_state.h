// What one run of the capture thread knows of the camera and of the frame at hand.
#pragma once

#include <cstdint>

#include "camera/frame_feature.h"

namespace tavra {

class IMultiROIImage;

// A member of the capture thread's object, touched by that thread only. What is read at the start holds for
// the whole run: changes of geometry and formats are refused meanwhile.
struct RunState {
    ImageSize image;                    // of preview images before rotation, composed of the regions in use
    ImageSize raw;                      // of what the camera sends
    IMultiROIImage* regions = nullptr;  // composes them; null on a camera without several
    std::uint32_t headerSize = 0;
    std::uint32_t rawSize = 0;  // bytes
    std::uint32_t transferBits = 0;
    std::uint32_t previewFormat = 0;
    // By design: read once. A change of the trigger mode during the stream changes nothing here until the
    // next run.
    std::uint32_t triggerWord = 0;

    std::uint16_t colorArray = 0;  // in force for the frame at hand
    std::uint32_t frameNumber = 0;
    bool endAfterFrame = false;
    bool goOn = true;
    std::uint32_t error = 0;  // why the run ends
};

}  // namespace tavra
