// Frames that arrive as BGR put into the preview's format. Pure; any thread.
//
// Preview images have format 1 (a byte of grey), 4 (B, G, R) or 8 (B, G, R and a fourth byte that keeps what
// the buffer held), and rows padded to a multiple of four bytes.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

// A dense frame of transfer bits code 1024 (B, G, R bytes) or 2048 (little-endian 32-bit words with blue in
// bits 0 to 9, green in 10 to 19, red in 20 to 29, of which the upper eight are taken) to an image of the
// preview format. Grey is the green channel. Padding bytes keep their value. 87, and nothing written, for
// another code or format.
Status convertBgrFrame(std::uint32_t transferCode, std::uint32_t width, std::uint32_t height,
                       const std::uint8_t* source, std::uint32_t previewFormat, std::uint8_t* destination);

// A frame of code 2048 made one of code 1024, in place.
void narrowBgr10Frame(std::uint32_t width, std::uint32_t height, std::uint8_t* frame);

}  // namespace tavra
