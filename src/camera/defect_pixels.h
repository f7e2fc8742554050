// Defect pixel correction: a list of positions in the camera, which replaces those pixels as it reads out.
// Application threads.
#pragma once

#include <cstdint>

#include "base/status.h"
#include "camera/defect_pixel_search.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Places of the camera's list; 0: the camera has no correction.
std::uint16_t defectPixelCapacity(const TAVRA_COMMON_PARAM& camera);

// A camera without the correction has mode 0, and refuses to be set (87).
Status getDefectPixelMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode);
Status setDefectPixelMode(TAVRA_COMMON_PARAM& camera, std::uint16_t mode);

struct DefectPosition {
    static constexpr std::uint32_t kFree = 0xFFFF;  // in both, for a free entry

    // 16 bits of each travel.
    std::uint32_t x = kFree, y = kFree;
};

// One entry of the list. 87: the camera's list is not that long.
Status readDefectPosition(TAVRA_COMMON_PARAM& camera, std::uint16_t index, DefectPosition& position);
Status writeDefectPosition(TAVRA_COMMON_PARAM& camera, std::uint16_t index, const DefectPosition& position);

// Finds the defect pixels in a dark image, writes the camera's whole list anew and lets it take effect. 87
// without the correction. Throws std::bad_alloc.
Status detectDefectPixels(TAVRA_COMMON_PARAM& camera, const DarkImage& image, std::uint16_t threshold);

}  // namespace tavra
