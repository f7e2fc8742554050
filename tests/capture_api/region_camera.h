// A camera that sends several regions in one frame.
#pragma once

#include <cstdint>
#include <vector>

#include "support/usb_double/usb_double.h"

namespace tavra::test {

struct Region {
    std::uint32_t width, height, x, y;
};

// Switches the regions on. The first one is the main image; a frame holds them one after the other. The bytes
// of a frame.
inline std::uint32_t useRegions(DoubleCamera& camera, const std::vector<Region>& regions,
                                std::uint32_t bitsPerPixel) {
    const auto count = static_cast<std::uint32_t>(regions.size());
    camera.offerRegions(count);
    camera.setScan32(60, (1u << count) - 1);
    std::uint32_t bytes = 0;
    for (std::size_t i = 0; i < regions.size(); ++i) {
        const Region& region = regions[i];
        const std::uint32_t fields[] = {region.width, region.height, region.x, region.y};
        const std::size_t first = i == 0 ? 6 : 64 + 16 * (i - 1);
        for (std::size_t field = 0; field < 4; ++field) camera.setScan32(first + 4 * field, fields[field]);
        bytes += region.width * bitsPerPixel / 8 * region.height;
    }
    camera.addRegisterPages();
    camera.registers[{17, 8}] = bytes;
    return bytes;
}

}  // namespace tavra::test
