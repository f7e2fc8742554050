#include "stages/flip/mirror.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "stages/byte_lanes.h"

namespace tavra::flip {
namespace {

using Reverse = void (*)(const std::uint8_t*, std::uint8_t*, std::size_t);

template <std::size_t kBytes>
void copyPixel(const std::uint8_t* source, std::uint8_t* destination) {
    std::memcpy(destination, source, kBytes);
}

// A run of pixels in reverse order, into other memory. Pixels that are a machine word.
template <class Word>
void reverseWords(const std::uint8_t* __restrict source, std::uint8_t* __restrict destination,
                  std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        Word pixel;
        std::memcpy(&pixel, source + sizeof(Word) * (count - 1 - i), sizeof(Word));
        std::memcpy(destination + sizeof(Word) * i, &pixel, sizeof(Word));
    }
}

// Bytes, eight at a time: an exchange of the bytes of a word is one instruction everywhere.
void reverseBytes(const std::uint8_t* __restrict source, std::uint8_t* __restrict destination,
                  std::size_t count) {
    std::size_t i = 0;
    for (; i + sizeof(std::uint64_t) <= count; i += sizeof(std::uint64_t)) {
        std::uint64_t pixels;
        std::memcpy(&pixels, source + count - i - sizeof pixels, sizeof pixels);
        pixels = __builtin_bswap64(pixels);
        std::memcpy(destination + i, &pixels, sizeof pixels);
    }
    for (; i < count; ++i) destination[i] = source[count - 1 - i];
}

// Where bytes can be permuted at will, pixels of three or six bytes are taken as many at a time as 16 bytes
// hold whole, elsewhere as many as a word does. The rest of the block is written with anything.
constexpr std::size_t kBlock = lanes::kLanes > 1 ? 16 : sizeof(std::uint64_t);

template <std::size_t kBytes>
void reverseBlock(const std::uint8_t* __restrict source, std::uint8_t* __restrict destination) {
    if constexpr (kBlock == sizeof(std::uint64_t)) {
        constexpr std::uint64_t kFirst = 0xFFFFFF;
        std::uint64_t pixels;
        std::memcpy(&pixels, source, sizeof pixels);
        if constexpr (kBytes == 3) pixels = (pixels >> 24 & kFirst) | (pixels & kFirst) << 24;
        std::memcpy(destination, &pixels, sizeof pixels);
    } else {
        constexpr std::size_t kPixels = kBlock / kBytes;
        std::uint8_t in[kBlock], out[kBlock];
        std::memcpy(in, source, kBlock);
        for (std::size_t b = 0; b < kBlock; ++b) {
            const std::size_t pixel = b / kBytes;
            out[b] = in[pixel < kPixels ? (kPixels - 1 - pixel) * kBytes + b % kBytes : b];
        }
        std::memcpy(destination, out, kBlock);
    }
}

template <std::size_t kBytes>
void reverseOddPixels(const std::uint8_t* __restrict source, std::uint8_t* __restrict destination,
                      std::size_t count) {
    constexpr std::size_t kPixels = kBlock / kBytes;
    const auto copyOne = [&](std::size_t i) {
        copyPixel<kBytes>(source + kBytes * (count - 1 - i), destination + kBytes * i);
    };
    std::size_t i = 0;
    // The block from where the last pixels begin would reach behind the source.
    for (; i < count && kBytes * (kPixels + i) < kBlock; ++i) copyOne(i);
    // What is left of a block is written again by what follows.
    for (; kBytes * i + kBlock <= kBytes * count; i += kPixels)
        reverseBlock<kBytes>(source + kBytes * (count - i - kPixels), destination + kBytes * i);
    for (; i < count; ++i) copyOne(i);
}

Reverse reverseOf(std::size_t pixelBytes) {
    switch (pixelBytes) {
        case 1: return reverseBytes;
        case 2: return reverseWords<std::uint16_t>;
        case 3: return reverseOddPixels<3>;
        case 4: return reverseWords<std::uint32_t>;
        case 6: return reverseOddPixels<6>;
        default: return reverseWords<std::uint64_t>;
    }
}

// In place: pieces from both ends change places through a copy that stays in the nearest cache.
void reverseInPlace(Reverse reverse, std::size_t pixelBytes, std::uint8_t* pixels, std::size_t count) {
    constexpr std::size_t kPiece = 2048;
    std::array<std::uint8_t, 2 * kPiece> copy;
    const std::size_t piece = kPiece / pixelBytes;
    std::uint8_t* const left = copy.data();
    std::uint8_t* const right = left + kPiece;
    std::size_t first = 0, end = count;
    for (; end - first > 2 * piece; first += piece, end -= piece) {
        std::uint8_t* const low = pixels + first * pixelBytes;
        std::uint8_t* const high = pixels + (end - piece) * pixelBytes;
        std::memcpy(left, low, piece * pixelBytes);
        std::memcpy(right, high, piece * pixelBytes);
        reverse(right, low, piece);
        reverse(left, high, piece);
    }
    std::memcpy(copy.data(), pixels + first * pixelBytes, (end - first) * pixelBytes);
    reverse(copy.data(), pixels + first * pixelBytes, end - first);
}

void reverseRun(std::size_t pixelBytes, const std::uint8_t* source, std::uint8_t* destination,
                std::size_t count) {
    const Reverse reverse = reverseOf(pixelBytes);
    if (source == destination) {
        reverseInPlace(reverse, pixelBytes, destination, count);
    } else {
        reverse(source, destination, count);
    }
}

void reverseRows(std::size_t rowBytes, std::size_t height, const std::uint8_t* source,
                 std::uint8_t* destination) {
    if (source != destination) {
        for (std::size_t y = 0; y < height; ++y) {
            std::memcpy(destination + y * rowBytes, source + (height - 1 - y) * rowBytes, rowBytes);
        }
        return;
    }
    for (std::size_t y = 0; y < height / 2; ++y) {
        std::uint8_t* const row = destination + y * rowBytes;
        std::swap_ranges(row, row + rowBytes, destination + (height - 1 - y) * rowBytes);
    }
}

}  // namespace

void mirrorImage(std::size_t pixelBytes, std::size_t width, std::size_t height, const std::uint8_t* source,
                 std::uint8_t* destination, bool mirrorX, bool mirrorY) {
    const std::size_t rowBytes = width * pixelBytes;
    if (mirrorX && mirrorY) {  // rows are dense: the image is one run
        reverseRun(pixelBytes, source, destination, width * height);
    } else if (mirrorX) {
        for (std::size_t y = 0; y < height; ++y) {
            reverseRun(pixelBytes, source + y * rowBytes, destination + y * rowBytes, width);
        }
    } else if (mirrorY) {
        reverseRows(rowBytes, height, source, destination);
    }
}

}  // namespace tavra::flip
