// The luminance of a pixel, as the stages that work on it see it: three tables whose entries are added.
// Constant; any thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

namespace tavra {

// One entry for each value of a channel, up to 12 bits.
using LumaTable = std::array<std::uint16_t, 4096>;

// What a channel adds to the luminance: 0.299, 0.587 and 0.114 of its value (ITU-R BT.601-7, 2.5.1), each
// rounded for itself, half up. The three entries of a grey value add up to that value within one level, and
// the luminance of a pixel never exceeds its largest channel by more than that; at 255 and at 4095 it is
// 255 and 4095.
extern const LumaTable LumaR;
extern const LumaTable LumaG;
extern const LumaTable LumaB;

// Y = LumaR[red] + LumaG[green] + LumaB[blue]; words above 4095 count as 4095.
inline std::uint16_t lumaOf(std::uint8_t blue, std::uint8_t green, std::uint8_t red) {
    return static_cast<std::uint16_t>(LumaR[red] + LumaG[green] + LumaB[blue]);
}
inline std::uint16_t lumaOf(std::uint16_t blue, std::uint16_t green, std::uint16_t red) {
    constexpr std::uint16_t kLast = std::tuple_size_v<LumaTable> - 1;
    return static_cast<std::uint16_t>(LumaR[std::min(red, kLast)] + LumaG[std::min(green, kLast)] +
                                      LumaB[std::min(blue, kLast)]);
}

// The same for `count` pixels whose channels lie in planes, many at a time.
void lumaOfPlanes(const std::uint8_t* blue, const std::uint8_t* green, const std::uint8_t* red,
                  std::uint16_t* luma, std::size_t count);
void lumaOfPlanes(const std::uint16_t* blue, const std::uint16_t* green, const std::uint16_t* red,
                  std::uint16_t* luma, std::size_t count);

}  // namespace tavra
