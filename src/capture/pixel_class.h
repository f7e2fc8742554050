// What a frame is made of, as far as its way to a preview image goes. Pure functions; any thread.
#pragma once

#include <cstdint>

#include "base/color_array.h"

namespace tavra {

enum class PixelClass {
    Unknown,  // a transfer bits code that no camera should have: no preview
    Raw8,     // mosaic or plane, a byte a sample
    RawWide,  // in 16-bit words
    RawPacked,
    Mono8,
    MonoWide,
    MonoPacked,
    Bgr,
    Ycbcr
};

constexpr PixelClass pixelClass(std::uint32_t transferCode) {
    switch (transferCode) {
        case 1: return PixelClass::Raw8;
        case 2:
        case 4:
        case 8:
        case 16: return PixelClass::RawWide;
        case 32: return PixelClass::Mono8;
        case 64:
        case 128:
        case 256:
        case 512: return PixelClass::MonoWide;
        case 1024:
        case 2048: return PixelClass::Bgr;
        case 4096:
        case 8192:
        case 16384:
        case 0x1000000:
        case 0x2000000:
        case 0x4000000: return PixelClass::Ycbcr;
        case 0x10000:
        case 0x20000: return PixelClass::RawPacked;
        case 0x100000:
        case 0x200000: return PixelClass::MonoPacked;
        default: return PixelClass::Unknown;
    }
}

// Frames that go through noise reduction, white balance, statistics, shading and the gamma of positions.
constexpr bool takesRawPath(PixelClass c) {
    return c == PixelClass::Raw8 || c == PixelClass::RawWide || c == PixelClass::RawPacked;
}

// Frames whose samples are reduced to 8 bits first.
constexpr bool needsReduction(PixelClass c) {
    return c == PixelClass::RawWide || c == PixelClass::RawPacked || c == PixelClass::MonoWide ||
           c == PixelClass::MonoPacked;
}

// Frames that arrive with all channels.
constexpr bool isFinished(PixelClass c) {
    return c == PixelClass::Bgr || c == PixelClass::Ycbcr;
}

// Frames of one plane, by class or by the colour array in force.
constexpr bool isMonoFrame(PixelClass c, std::uint16_t colorArray) {
    return c == PixelClass::Mono8 || c == PixelClass::MonoWide || c == PixelClass::MonoPacked ||
           (takesRawPath(c) && isMonoLike(colorArray));
}

// The colour array by which colour interpolation knows the layout of a YCbCr code; 0 for other codes.
constexpr std::uint16_t ycbcrColorArray(std::uint32_t transferCode) {
    switch (transferCode) {
        case 4096: return 8;
        case 8192: return 6;
        case 16384: return 7;
        case 0x1000000: return 11;
        case 0x2000000: return 9;
        case 0x4000000: return 10;
        default: return 0;
    }
}

}  // namespace tavra
