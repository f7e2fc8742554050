// A region of 64 x 48 pixels on a small sensor, unpaced and without noise, so that every frame is known by
// its scene.
#pragma once

#include "usbd/virtual_cameras.h"

namespace tavra::usbd::test {

inline constexpr std::size_t kWidth = 64, kHeight = 48;

// What follows the model's name: a sensor of this size, with the region's first pixel at (x, y).
inline std::string smallSensor(std::size_t sensorWidth, std::size_t sensorHeight, std::size_t x,
                               std::size_t y) {
    const auto field = [](const char* name, std::size_t value) {
        return std::string(":") + name + "=" + std::to_string(value);
    };
    return ":pace=off:noise=off" + field("geometry.sensor_width", sensorWidth) +
           field("geometry.sensor_height", sensorHeight) + field("width", kWidth) + field("height", kHeight) +
           field("x", x) + field("y", y);
}

// The pixels of the next frame of a stream.
inline std::vector<std::uint8_t> frameOf(const Camera& camera) {
    return rawOf(readTransfer(camera));
}

}  // namespace tavra::usbd::test
