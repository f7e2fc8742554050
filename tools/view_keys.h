// The keys of `tavra view`: what each does, in one table that the window, the help and the guide's list
// share.
#pragma once

#include <cstdint>
#include <string>

namespace tavra::tool {

enum class ViewAction : std::uint8_t {
    None,
    Fit,
    ActualSize,
    ZoomIn,
    ZoomOut,
    MoveLeft,
    MoveUp,
    MoveRight,
    MoveDown,
    Rotate,
    Statistics,
    Grid,
    Snapshot,
    Movie,
    AutoExposure,
    AutoWhiteBalance,
    Help,
    Quit,
};

// Keys that are no characters.
inline constexpr char32_t kKeyEscape = 0x1B;
inline constexpr char32_t kKeyLeft = 0x2190, kKeyUp = 0x2191, kKeyRight = 0x2192, kKeyDown = 0x2193;

// Capital letters count as small ones.
ViewAction viewActionOf(char32_t key);

// A line for each action: "  f          fit the image into the window".
std::string viewKeysText();

}  // namespace tavra::tool
