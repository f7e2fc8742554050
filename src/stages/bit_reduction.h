// Frames of 10 to 16 bits a sample reduced to bytes. Pure; any thread.
#pragma once

#include <cstdint>

namespace tavra {

// Writes width x height dense bytes from a dense frame of the transfer bits code, the upper bits of each
// sample, truncated. Source and destination may be the same buffer.
//
// Codes 2, 64 (10 bits), 4, 128 (12), 8, 256 (14) and 16, 512 (16) are held in little-endian words; 0x10000,
// 0x100000 (10 bits) and 0x20000, 0x200000 (12) are packed, least significant bit first, each row from a byte
// of its own. False, and nothing written, for any other code.
bool reduceTo8Bits(std::uint32_t width, std::uint32_t height, std::uint32_t transferCode, const void* source,
                   std::uint8_t* destination);

}  // namespace tavra
