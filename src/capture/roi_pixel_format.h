// The pixel format codes by which region composition knows what a frame is made of. Pure; any thread.
#pragma once

#include <cstdint>

namespace tavra {

// The code of the pixel format naming convention for a transfer bits code and, where samples are those of the
// sensor, its colour array; bits 16 to 23 of it are the bits of a pixel on the wire, bit 31 marks formats
// that the convention does not have. 0: there is no such format.
std::uint32_t roiPixelFormat(std::uint32_t transferBits, std::uint16_t colorArray);

}  // namespace tavra
