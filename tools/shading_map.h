// A map of shading correction, in a file and in a camera.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera.h"

namespace tavra::tool {

struct ShadingMap {
    std::uint32_t mode = TAVRA_SHADING_GAIN;  // the correction that it is made for: gain or offset
    std::uint32_t width = 0, height = 0;      // 0: no map
    std::vector<std::int32_t> entries;        // width x height, row after row
};

// The map that the camera's handle holds, without its mode.
ShadingMap readShadingMap(const Camera& camera);
// Hands the map over and switches its correction on. Throws Failure if it does not fit the frames.
void applyShadingMap(const Camera& camera, const ShadingMap& map);

// docs/file-formats.md tells the bytes. Both throw Failure; what is written replaces a file of that name.
ShadingMap loadShadingMap(const std::string& fileName);
void saveShadingMap(const ShadingMap& map, const std::string& fileName);

}  // namespace tavra::tool
