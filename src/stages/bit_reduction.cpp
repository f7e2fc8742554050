#include "stages/bit_reduction.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "base/little_endian.h"

namespace tavra {
namespace {

// How a code's samples are held, and how many of their low bits go.
struct Packing {
    unsigned bits;  // of a sample in a packed row; 0 for samples in words
    unsigned shift;
};

constexpr bool packingOf(std::uint32_t transferCode, Packing& packing) {
    switch (transferCode) {
        case 2:
        case 64: packing = {0, 2}; return true;
        case 4:
        case 128: packing = {0, 4}; return true;
        case 8:
        case 256: packing = {0, 6}; return true;
        case 16:
        case 512: packing = {0, 8}; return true;
        case 0x10000:
        case 0x100000: packing = {10, 2}; return true;
        case 0x20000:
        case 0x200000: packing = {12, 4}; return true;
        default: return false;
    }
}

// A block is read whole before it is written, so that the reduction may run in place: the bytes written never
// reach beyond the bytes read.
void reduceWords(const std::uint8_t* source, std::size_t count, unsigned shift, std::uint8_t* destination) {
    constexpr std::size_t kBlock = 256;
    alignas(32) std::uint8_t words[2 * kBlock];
    alignas(32) std::uint8_t bytes[kBlock];
    std::memset(words, 0, sizeof words);
    for (std::size_t done = 0; done < count; done += kBlock) {
        const std::size_t block = std::min(kBlock, count - done);
        std::memcpy(words, source + 2 * done, 2 * block);
        for (std::size_t i = 0; i < kBlock; ++i)
            bytes[i] = static_cast<std::uint8_t>(loadLe16(words + 2 * i) >> shift);
        std::memcpy(destination + done, bytes, block);
    }
}

// Eight bytes hold the four samples of five bytes (10 bits), or of six (12 bits): the upper byte of
// each sample.
template <unsigned kBits>
std::uint32_t fourUpperBytes(std::uint64_t packed) {
    std::uint64_t bytes = 0;
    for (unsigned k = 0; k < 4; ++k) bytes |= (packed >> (k * kBits + kBits - 8) & 0xFF) << (8 * k);
    return static_cast<std::uint32_t>(bytes);
}

template <unsigned kBits>
void unpackRow(const std::uint8_t* row, std::size_t rowBytes, std::size_t width, std::uint8_t* out) {
    constexpr std::size_t kGroupBytes = kBits / 2;  // of four samples
    std::size_t x = 0;
    std::size_t at = 0;
    for (; x + 4 <= width && at + 8 <= rowBytes; x += 4, at += kGroupBytes) {
        storeLe32(out + x, fourUpperBytes<kBits>(loadLe64(row + at)));
    }
    for (std::size_t bit = 8 * at; x < width; ++x, bit += kBits) {
        // A sample lies within two bytes, as an offset is even and at most 16 - kBits.
        out[x] = static_cast<std::uint8_t>(loadLe16(row + bit / 8) >> (bit % 8) >> (kBits - 8));
    }
}

template <unsigned kBits>
void unpack(const std::uint8_t* source, std::size_t width, std::size_t height, std::uint8_t* destination) {
    const std::size_t rowBytes = (width * kBits + 7) / 8;
    for (std::size_t y = 0; y < height; ++y) {
        unpackRow<kBits>(source + y * rowBytes, rowBytes, width, destination + y * width);
    }
}

}  // namespace

bool reduceTo8Bits(std::uint32_t width, std::uint32_t height, std::uint32_t transferCode, const void* source,
                   std::uint8_t* destination) {
    Packing packing{};
    if (!packingOf(transferCode, packing)) return false;
    if (width == 0 || height == 0) return true;
    const auto* const bytes = static_cast<const std::uint8_t*>(source);
    switch (packing.bits) {
        case 10: unpack<10>(bytes, width, height, destination); break;
        case 12: unpack<12>(bytes, width, height, destination); break;
        default: reduceWords(bytes, std::size_t{width} * height, packing.shift, destination); break;
    }
    return true;
}

}  // namespace tavra
