#include "stages/gamma/shift.h"

#include <algorithm>

#include "stages/bgr_reader.h"
#include "stages/luma_tables.h"
#include "stages/pixel_shift.h"

namespace tavra {
namespace {

constexpr std::size_t kTile = 256;

// The shift of a luminance. By design in 16 bits: entries from 32768 on, which only a caller's table has, can
// turn a rise into a fall.
int shiftOf(const GammaTable& table, std::uint16_t luma) {
    return static_cast<std::int16_t>(table[luma] - luma);
}

std::uint16_t shiftedWord(std::uint16_t word, int shift) {
    constexpr int kLargest = 4095;
    const int sum = word + shift;
    return static_cast<std::uint16_t>(shift >= 0 ? std::min(sum, kLargest) : std::max(sum, 0));
}

}  // namespace

void LumaShift::fill(const GammaTable& table) {
    std::array<std::uint16_t, 256> shifts;
    for (std::size_t luma = 0; luma < shifts.size(); ++luma) {
        const int shift = std::clamp(shiftOf(table, static_cast<std::uint16_t>(luma)), -255, 255);
        shifts[luma] = static_cast<std::uint16_t>(shift >= 0 ? shift : -shift << 8);
    }
    shifts_ = WordTable(shifts);
}

void LumaShift::apply(std::uint8_t* row, std::size_t pitch, std::size_t width) const {
    // All of a tile is worked on, whatever its length; what lies behind the last pixel must be bytes at
    // least.
    alignas(32) std::uint8_t blue[kTile] = {}, green[kTile] = {}, red[kTile] = {};
    alignas(32) std::uint16_t luma[kTile], both[kTile];
    alignas(32) std::uint8_t rise[kTile], fall[kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        std::uint8_t* const pixels = row + x * pitch;
        readBgr(pixels, pitch, blue, green, red, count);
        lumaOfPlanes(blue, green, red, luma, kTile);
        shifts_.lookUp(luma, both, kTile);
        for (std::size_t i = 0; i < kTile; ++i) {
            rise[i] = static_cast<std::uint8_t>(both[i]);
            fall[i] = static_cast<std::uint8_t>(both[i] >> 8);
        }
        shiftPixels(pixels, pitch, rise, fall, count);
    }
}

void shiftWords(const GammaTable& table, std::uint16_t* row, std::size_t pitch, std::size_t width) {
    for (std::size_t x = 0; x < width; ++x) {
        std::uint16_t* const pixel = row + x * pitch;
        const int shift = shiftOf(table, lumaOf(pixel[0], pixel[1], pixel[2]));
        for (std::size_t c = 0; c < 3; ++c) pixel[c] = shiftedWord(pixel[c], shift);
    }
}

}  // namespace tavra
