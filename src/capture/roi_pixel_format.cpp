#include "capture/roi_pixel_format.h"

#include <array>

namespace tavra {
namespace {

// The formats of one transfer bits code by colour array; those of a group of four that are numbered in a row
// are told by their first.
struct SensorFormats {
    std::uint32_t transferBits;
    std::uint32_t mono;                  // array 1
    std::array<std::uint32_t, 4> bayer;  // arrays 2 to 5
    std::uint32_t firstPattern;          // arrays 12 to 15
    std::uint32_t firstQuad;             // arrays 16 to 19
};

constexpr SensorFormats kSensorFormats[] = {
    {0x1, 0x1080001, {0x1080009, 0x1080008, 0x108000A, 0x108000B}, 0x81080002, 0x8108000E},
    {0x2, 0x1100003, {0x110000D, 0x110000C, 0x110000E, 0x110000F}, 0x81100006, 0x81100012},
    {0x4, 0x1100005, {0x1100011, 0x1100010, 0x1100012, 0x1100013}, 0x8110000A, 0x81100016},
    {0x8, 0x1100025, {}, 0, 0},
    {0x10, 0x1100007, {0x110002F, 0x110002E, 0x1100030, 0x1100031}, 0, 0},
    {0x10000, 0x10A0046, {0x10A0058, 0x10A0056, 0x10A0054, 0x10A0052}, 0x810A001A, 0x810A0022},
    {0x20000, 0x10C0047, {0x10C0059, 0x10C0057, 0x10C0055, 0x10C0053}, 0x810C001E, 0x810C0026},
};

constexpr std::uint32_t ofGroup(std::uint32_t first, std::uint16_t member) {
    return first != 0 ? first + member : 0;
}

constexpr std::uint32_t byColorArray(const SensorFormats& formats, std::uint16_t colorArray) {
    if (colorArray == 1) return formats.mono;
    if (colorArray >= 2 && colorArray <= 5) return formats.bayer[colorArray - 2u];
    if (colorArray >= 12 && colorArray <= 15) {
        return ofGroup(formats.firstPattern, static_cast<std::uint16_t>(colorArray - 12));
    }
    if (colorArray >= 16 && colorArray <= 19) {
        return ofGroup(formats.firstQuad, static_cast<std::uint16_t>(colorArray - 16));
    }
    return 0;
}

// Frames that are mono, BGR or YCbCr whatever the sensor has.
constexpr std::uint32_t byTransferBits(std::uint32_t transferBits) {
    switch (transferBits) {
        case 0x20: return 0x1080001;
        case 0x40: return 0x1100003;
        case 0x80: return 0x1100005;
        case 0x100: return 0x1100025;
        case 0x200: return 0x1100007;
        case 0x400: return 0x2180015;
        // By design: the convention's format of three 16-bit words, 48 bits, for pixels of 32.
        case 0x800: return 0x2300019;
        case 0x1000: return 0x20C005A;
        case 0x2000: return 0x210003B;
        case 0x4000: return 0x218005B;
        case 0x100000: return 0x10A0046;
        case 0x200000: return 0x10C0047;
        default: return 0;
    }
}

}  // namespace

std::uint32_t roiPixelFormat(std::uint32_t transferBits, std::uint16_t colorArray) {
    for (const SensorFormats& formats : kSensorFormats) {
        if (formats.transferBits == transferBits) return byColorArray(formats, colorArray);
    }
    return byTransferBits(transferBits);
}

}  // namespace tavra
