// What a virtual camera looks at: a picture of the size of its sensor, drawn (chart.h) or read from a PNG
// file. Constant once made; cameras with the same picture share it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tavra::usbd {

// Red, green and blue of each pixel, 65535 being what saturates the sensor at the full scale exposure.
struct Scene {
    std::uint32_t width = 0, height = 0;
    std::vector<std::array<std::uint16_t, 3>> pixels;  // row by row

    const std::array<std::uint16_t, 3>& at(std::uint32_t x, std::uint32_t y) const {
        return pixels[static_cast<std::size_t>(y) * width + x];
    }
};

// The scene "chart", or the PNG file at the path `source`: scaled to cover the sensor, its middle in the
// middle; one of the sensor's own size is taken pixel by pixel. Null: the file cannot be read. Any thread.
std::shared_ptr<const Scene> sceneOf(const std::string& source, std::uint32_t width, std::uint32_t height);

// False: `source` is neither "chart" nor the path of a PNG file.
bool isScene(const std::string& source);

}  // namespace tavra::usbd
