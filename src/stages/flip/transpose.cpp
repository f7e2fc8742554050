#include "stages/flip/transpose.h"

#include <algorithm>
#include <cstring>

namespace tavra::flip {
namespace {

// The image is worked in bands of columns, a band in pieces of rows, a piece in square blocks that fit in the
// registers. A band takes whole cache lines of each source row. The rows that a piece becomes are put
// together in the work tile, and go to the destination in long runs: where rows are a page apart, every
// line that is touched twice may have left the cache in between.
constexpr std::size_t kBandBytes = 128;
constexpr std::size_t kRunBytes = 1024;
constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kBlockBytes = 16;                      // a row of a block
constexpr std::size_t kRowsAhead = 32;                       // what is asked for before it is needed
constexpr std::size_t kTileStride = kRunBytes + kCacheLine;  // not a power of two, which shares cache sets

// Interleaves the halves of a square block of `kSide` x `kSide` words: one bit of the row number becomes the
// lowest of the column number, and the others move up. After as many rounds as the side has bits, rows and
// columns have changed places.
template <class Word, std::size_t kCount>
inline void interleaveHalves(const Word* __restrict in, Word* __restrict out) {
    for (std::size_t i = 0; i < kCount / 2; ++i) {
        out[2 * i] = in[i];
        out[2 * i + 1] = in[i + kCount / 2];
    }
}

template <class Word, std::size_t kSide>
inline void transposeBlock(Word* block) {
    constexpr std::size_t kCount = kSide * kSide;
    Word other[kCount];
    for (std::size_t side = 1; side < kSide; side *= 4) {
        interleaveHalves<Word, kCount>(block, other);
        if (2 * side < kSide) {
            interleaveHalves<Word, kCount>(other, block);
        } else {
            std::memcpy(block, other, sizeof other);
        }
    }
}

// How pixels become words of a block, and how the words of a row become pixels.
template <class W>
struct WholeWords {
    using Word = W;
    static constexpr std::size_t kPixelBytes = sizeof(Word);
    static void load(const std::uint8_t* pixels, Word* words) { std::memcpy(words, pixels, kBlockBytes); }
    static void store(const Word* words, std::size_t count, std::uint8_t* pixels) {
        std::memcpy(pixels, words, count * sizeof(Word));
    }
};

// B, G, R and a fourth byte that nobody writes.
struct Bgr32 {
    using Word = std::uint32_t;
    static constexpr std::size_t kPixelBytes = 4;
    static void load(const std::uint8_t* pixels, Word* words) { std::memcpy(words, pixels, kBlockBytes); }
    static void store(const Word* __restrict words, std::size_t count, std::uint8_t* __restrict pixels) {
        for (std::size_t i = 0; i < count; ++i) {
            Word old;
            std::memcpy(&old, pixels + 4 * i, sizeof old);
            const Word pixel = (words[i] & 0x00FFFFFFu) | (old & 0xFF000000u);
            std::memcpy(pixels + 4 * i, &pixel, sizeof pixel);
        }
    }
};

// B, G, R: a word each in the block, with a byte of no meaning.
struct Bgr24 {
    using Word = std::uint32_t;
    static constexpr std::size_t kPixelBytes = 3;
    static void load(const std::uint8_t* pixels, Word* words) {
        for (std::size_t i = 0; i < 3; ++i) std::memcpy(words + i, pixels + 3 * i, sizeof(Word));
        std::memcpy(words + 3, pixels + 8, sizeof(Word));  // not a byte behind the block
        words[3] >>= 8;
    }
    static void store(const Word* __restrict words, std::size_t count, std::uint8_t* __restrict pixels) {
        std::size_t i = 0;
        // Four pixels are stored as 16 bytes, of which the next pixels replace the last four.
        for (; 3 * i + kBlockBytes <= 3 * count; i += 4) {
            std::uint8_t in[kBlockBytes], out[kBlockBytes];
            std::memcpy(in, words + i, kBlockBytes);
            for (std::size_t b = 0; b < kBlockBytes; ++b) out[b] = in[b < 12 ? b / 3 * 4 + b % 3 : b];
            std::memcpy(pixels + 3 * i, out, kBlockBytes);
        }
        for (; i < count; ++i) std::memcpy(pixels + 3 * i, words + i, 3);
    }
};

const std::uint8_t* pixelAt(const Transposition& image, std::size_t x, std::size_t y,
                            std::size_t pixelBytes) {
    return image.source + static_cast<std::ptrdiff_t>(y) * image.sourceStride + x * pixelBytes;
}

std::uint8_t* resultAt(const Transposition& image, std::size_t x, std::size_t y, std::size_t pixelBytes) {
    return image.destination + static_cast<std::ptrdiff_t>(x) * image.destinationStride + y * pixelBytes;
}

// A run of columns or rows, moved back from the edge where less than a block is left: what was done already
// is done again.
struct Span {
    std::size_t first, end;

    Span(std::size_t begin, std::size_t length, std::size_t size, std::size_t side)
        : first(std::min(begin, size - side)), end(std::min(begin + length, size)) {}
};

template <class Format>
void transposePiece(const Transposition& image, const Span& columns, const Span& rows, WorkTile& tile) {
    using Word = typename Format::Word;
    constexpr std::size_t kSide = kBlockBytes / sizeof(Word);
    for (std::size_t rowStart = rows.first; rowStart < rows.end; rowStart += kSide) {
        const std::size_t y = std::min(rowStart, rows.end - kSide);
        for (std::size_t r = 0; r < kSide; ++r) {
            const std::size_t ahead = std::min(y + r + kRowsAhead, image.height - 1);
            for (std::size_t x = columns.first; x < columns.end; x += kCacheLine / Format::kPixelBytes) {
                __builtin_prefetch(pixelAt(image, x, ahead, Format::kPixelBytes));
            }
        }
        for (std::size_t columnStart = columns.first; columnStart < columns.end; columnStart += kSide) {
            const std::size_t x = std::min(columnStart, columns.end - kSide);
            Word block[kSide * kSide];
            for (std::size_t r = 0; r < kSide; ++r) {
                Format::load(pixelAt(image, x, y + r, Format::kPixelBytes), block + kSide * r);
            }
            transposeBlock<Word, kSide>(block);
            std::uint8_t* const out =
                tile.bytes.data() + (x - columns.first) * kTileStride + (y - rows.first) * sizeof(Word);
            for (std::size_t r = 0; r < kSide; ++r) {
                std::memcpy(out + r * kTileStride, block + kSide * r, kBlockBytes);
            }
        }
    }
    for (std::size_t x = columns.first; x < columns.end; ++x) {
        const void* const words = tile.bytes.data() + (x - columns.first) * kTileStride;
        Format::store(static_cast<const Word*>(words), rows.end - rows.first,
                      resultAt(image, x, rows.first, Format::kPixelBytes));
    }
}

// Pixel by pixel: what is too narrow for blocks, and the rare formats.
template <std::size_t kPixelBytes, std::size_t kMoved>
void transposePixels(const Transposition& image) {
    constexpr std::size_t kSide = 16;
    for (std::size_t top = 0; top < image.height; top += kSide) {
        for (std::size_t x = 0; x < image.width; ++x) {
            for (std::size_t y = top; y < std::min(top + kSide, image.height); ++y) {
                std::memcpy(resultAt(image, x, y, kPixelBytes), pixelAt(image, x, y, kPixelBytes), kMoved);
            }
        }
    }
}

template <class Format>
void transposeBands(const Transposition& image, WorkTile& tile) {
    using Word = typename Format::Word;
    constexpr std::size_t kSide = kBlockBytes / sizeof(Word);
    constexpr std::size_t kColumns = kBandBytes / sizeof(Word);
    constexpr std::size_t kRows = kRunBytes / sizeof(Word);
    static_assert(kColumns * kTileStride <= sizeof tile.bytes);
    for (std::size_t x = 0; x < image.width; x += kColumns) {
        const Span columns(x, kColumns, image.width, kSide);
        for (std::size_t y = 0; y < image.height; y += kRows) {
            transposePiece<Format>(image, columns, Span(y, kRows, image.height, kSide), tile);
        }
    }
}

template <class Format, std::size_t kMoved>
void transposeFormat(const Transposition& image, WorkTile& tile) {
    constexpr std::size_t kSide = kBlockBytes / sizeof(typename Format::Word);
    if (image.width < kSide || image.height < kSide) {
        transposePixels<Format::kPixelBytes, kMoved>(image);
    } else {
        transposeBands<Format>(image, tile);
    }
}

}  // namespace

void transpose(std::size_t pixelBytes, const Transposition& image, WorkTile& tile) {
    switch (pixelBytes) {
        case 1: return transposeFormat<WholeWords<std::uint8_t>, 1>(image, tile);
        case 2: return transposeFormat<WholeWords<std::uint16_t>, 2>(image, tile);
        case 3: return transposeFormat<Bgr24, 3>(image, tile);
        case 4: return transposeFormat<Bgr32, 3>(image, tile);
        case 6: return transposePixels<6, 6>(image);
        default: return transposePixels<8, 6>(image);
    }
}

}  // namespace tavra::flip
