#include "display/next_pixel_format.h"

#include <array>

namespace tavra {
namespace {

using platform::SurfaceFormat;

constexpr std::uint32_t kFormats = 9;
constexpr std::uint32_t kUyvy = 4;
constexpr std::uint32_t kFirst16Bit = 5;

// By design: red or blue of the formats with five bits a channel is 0xEC00, a mask that drivers know these
// formats by.
constexpr std::array<SurfaceFormat, kFormats> kTable = {{
    {32, 0, 0xFF0000, 0xFF00, 255},
    {32, 0, 255, 0xFF00, 0xFF0000},
    {24, 0, 0xFF0000, 0xFF00, 255},
    {24, 0, 255, 0xFF00, 0xFF0000},
    {16, platform::kFourCcUyvy, 0, 0, 0},
    {16, 0, 0xF800, 2016, 31},
    {16, 0, 0xEC00, 992, 31},
    {16, 0, 31, 2016, 0xF800},
    {16, 0, 31, 992, 0xEC00},
}};

}  // namespace

bool NextPixelFormat(std::uint32_t order, bool overlay, std::uint32_t attempt, SurfaceFormat& format) {
    const std::uint32_t attempts = overlay ? kFormats : kFormats - 1;
    if (attempt >= attempts) return false;
    std::uint32_t index = attempt;
    if (order == 0) {
        index = ((overlay ? kUyvy : kFirst16Bit) + attempt) % kFormats;
    } else if (!overlay && attempt >= kUyvy) {
        index = attempt + 1;  // UYVY is left out
    }
    format = kTable[index];
    return true;
}

}  // namespace tavra
