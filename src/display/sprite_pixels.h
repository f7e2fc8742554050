// Pixels on their way into textures: the camera's image, and the application's drawing with its key colour.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/sprite_device.h"

namespace tavra {

// An image by its format code: 1 for a byte a pixel, 8 for three, 32 for four.
struct SpriteImage {
    const std::uint8_t* bits = nullptr;
    std::size_t stride = 0;  // bytes
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t code = 0;
};

// Copies the image into a texture of four bytes a pixel, at least as large. The top byte is 0, or what the
// image has there.
void copyImage(const SpriteImage& image, const platform::LockedPixels& texture);

// A colour of Windows, 0x00BBGGRR, in the order of pixels: 0x00RRGGBB.
constexpr std::uint32_t pixelOfColor(std::uint32_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

// Pixels that equal `key` (its highest byte 0) stay as they are, and are seen through for their alpha of 0.
// All others get the bits of `alphaMask`.
void copyKeyed(const std::uint32_t* from, std::uint32_t* to, std::size_t count, std::uint32_t key,
               std::uint32_t alphaMask);

// The smallest power of two that is not below the value; 1 for 0.
std::uint32_t nextPowerOfTwo(std::uint32_t value);

}  // namespace tavra
