// From the pixels of a preview image to those of a surface.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/surface_device.h"

namespace tavra {

// What the converter makes: surface format codes.
inline constexpr std::uint32_t kSurfaceUnknown = 0;
inline constexpr std::uint32_t kSurface8 = 1;
inline constexpr std::uint32_t kSurface555 = 2;
inline constexpr std::uint32_t kSurface565 = 4;
inline constexpr std::uint32_t kSurface24Bgr = 8;   // blue in the lowest byte
inline constexpr std::uint32_t kSurface24Rgb = 16;  // red in the lowest byte
inline constexpr std::uint32_t kSurface32Bgr = 32;
inline constexpr std::uint32_t kSurface32Rgb = 64;
inline constexpr std::uint32_t kSurfaceUyvy = 256;

// The code of a pixel format; 0 for one that cannot be converted to.
std::uint32_t surfaceFormatCode(const platform::SurfaceFormat& format);

// Converts width x height pixels. The source's rows follow one another without padding; `sourceBits` says
// what they are made of: 1: a grey byte, 8: B, G, R, 32: B, G, R and a byte that does not matter. Rows of the
// destination are `pitch` bytes apart; in UYVY an odd number of pixels takes room for one more. Code 0, or
// another source, converts nothing.
void ConvertImage(const std::uint8_t* source, std::uint8_t* destination, std::uint32_t width,
                  std::uint32_t height, std::size_t pitch, std::uint32_t sourceBits,
                  std::uint32_t destinationCode);

// From 0x00BBGGRR to 0x00RRGGBB, and back.
constexpr std::uint32_t exchangeRedAndBlue(std::uint32_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// One pixel of a colour, 0x00RRGGBB, in a surface's format.
std::uint32_t convertColor(std::uint32_t color, std::uint32_t destinationCode);

}  // namespace tavra
