// Four-character codes and chunks, of which movie files are made. Pure functions; any thread.
#pragma once

#include <cstdint>

#include "base/little_endian.h"

namespace tavra::movie {

// Four letters as the number that stands in a file, first letter in the low byte.
constexpr std::uint32_t fourcc(const char (&letters)[5]) {
    std::uint32_t code = 0;
    for (int i = 3; i >= 0; --i) code = code << 8 | static_cast<std::uint8_t>(letters[i]);
    return code;
}

inline constexpr std::uint32_t kChunkHeaderBytes = 8;

// A chunk's header: its code, and the bytes that follow.
inline void putChunkHeader(std::uint8_t* at, std::uint32_t code, std::uint32_t size) {
    storeLe32(at, code);
    storeLe32(at + 4, size);
}

// What an odd chunk is filled up with.
// By design: the digit, where others put a zero byte. The files are known so.
inline constexpr std::uint8_t kPadByte = '0';

// The bytes of an uncompressed frame, and of one in motion JPEG.
inline constexpr std::uint32_t kPlainFrame = fourcc("00db");
inline constexpr std::uint32_t kCompressedFrame = fourcc("00dc");
inline constexpr std::uint32_t kJunk = fourcc("JUNK");
inline constexpr std::uint32_t kList = fourcc("LIST");

}  // namespace tavra::movie
