// Sizes that follow from pixel format and transfer codes. Pure functions; any thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavra {

// Bytes of a pixel by pixel format code; codes that are not in the table count one.
constexpr std::uint32_t bytesPerPixel(std::uint32_t pixelFormat) {
    switch (pixelFormat) {
        case 4: return 3;
        case 8: return 4;
        case 2:
        case 16:
        case 32:
        case 64: return 2;
        case 256: return 6;
        case 512: return 8;
        default: return 1;
    }
}

// Grey, BGR, and BGR with a fourth byte, a byte a sample: what a preview and most still files may have.
constexpr bool hasByteSamples(std::uint32_t pixelFormat) {
    return pixelFormat == 1 || pixelFormat == 4 || pixelFormat == 8;
}

// In 64 bits: the rows of the widest images do not fit in 32.
constexpr std::size_t roundUpTo4(std::size_t bytes) {
    return (bytes + 3) & ~std::size_t{3};
}

// Bytes of a row of an image: width times bytes a pixel, padded to a multiple of four.
constexpr std::size_t paddedStride(std::size_t width, std::size_t bytesAPixel) {
    return roundUpTo4(width * bytesAPixel);
}

// Bits that a pixel takes on the wire, by transfer bits code; 0 for an unknown code.
constexpr std::uint32_t transferBitsStored(std::uint32_t transferCode) {
    switch (transferCode) {
        case 1:
        case 32: return 8;
        case 2:
        case 4:
        case 8:
        case 16:
        case 64:
        case 128:
        case 256:
        case 512:
        case 0x2000:
        case 0x2000000: return 16;
        case 1024:
        case 0x4000:
        case 0x4000000: return 24;
        case 2048: return 32;
        case 0x10000:
        case 0x100000: return 10;
        case 0x1000:
        case 0x1000000:
        case 0x20000:
        case 0x200000: return 12;
        default: return 0;
    }
}

}  // namespace tavra
