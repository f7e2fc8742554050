// Sample values to the bytes of a transfer format. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <span>

namespace tavra::usbd {

// Bytes of a row of `width` pixels.
std::uint32_t packedRowBytes(std::uint32_t transferBits, std::uint32_t width);

// One row: samples of `bits` bits, one a pixel, or red, green and blue of each pixel for the colour formats;
// `out` has packedRowBytes bytes.
//
//   8 bits          a byte a pixel
//   10 to 16 bits   a little-endian word a pixel, right-aligned
//   packed          pixels one behind the other from the low bit of the first byte on
//   BGR 8           B, G, R
//   BGR 10          a little-endian word of 32 bits: B in bits 2 to 11, G 12 to 21, R 22 to 31
//   YCbCr           4:4:4 Y Cb Cr; 4:2:2 Y0 Cb Y1 Cr; 4:1:1 Y0 Y1 Cb Y2 Y3 Cr, the mean of the pixels'
//   colour.
//                   Full range: BT.601. Limited range: BT.709.
void packRow(std::uint32_t transferBits, std::uint32_t bits, std::span<const std::uint16_t> samples,
             std::span<std::uint8_t> out);

}  // namespace tavra::usbd
