// Codes of four letters, as they stand in RIFF files.
#pragma once

#include <cstdint>
#include <string>

namespace tavra::tool {

constexpr std::uint32_t fourcc(const char (&letters)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<std::uint8_t>(letters[i]);
    return code;
}

// Whether all four are letters that can be printed, as those of chunks are.
bool isFourcc(std::uint32_t code);

// "MJPG"; "0x00000007" if it cannot be printed; nothing for 0.
std::string fourccText(std::uint32_t code);

}  // namespace tavra::tool
