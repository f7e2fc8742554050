#include "stages/flip/transpose.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace tavra::flip {
namespace {

// The image is worked in bands of columns, a band in pieces of rows, a piece in square blocks that fit in the
// registers. The rows that a piece becomes are put together in the work tile, and go to the destination in
// long runs. What decides about the speed of a large image is how often a page of memory is come back to, in
// the source and in the destination, and that the next lines of both are asked for in time.
constexpr std::size_t kBandColumns = 256;
constexpr std::size_t kRunBytes = 1024;
constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kBlockBytes = 16;                      // a row of a block
constexpr std::size_t kTileStride = kRunBytes + kCacheLine;  // not a power of two, which shares cache sets
constexpr std::size_t kSourceRowsAhead = 8;
constexpr std::size_t kResultRowsAhead = 4;
static_assert(kBandColumns * kTileStride <= sizeof(WorkTile));

// A row of a block in a register. Vectors of the compiler's own, the same on every processor: it knows an
// interleaving of two of them as one instruction.
template <class Word>
struct Row {
    using Vector [[gnu::vector_size(kBlockBytes)]] = Word;
    static constexpr std::size_t kWords = kBlockBytes / sizeof(Word);
};

// The words of the lower (kHalf 0) or upper halves (1) of two rows in turn.
template <class Word, std::size_t kHalf, class Vector, std::size_t... kIndex>
inline Vector interleaved(Vector a, Vector b, std::index_sequence<kIndex...>) {
    constexpr std::size_t kWords = Row<Word>::kWords;
    return __builtin_shufflevector(a, b, (kIndex % 2 * kWords + kHalf * kWords / 2 + kIndex / 2)...);
}

// Interleaves the halves of a square block, row by row: one bit of the row number becomes the lowest of the
// column number, and the others move up. After as many rounds as the side has bits, rows and columns have
// changed places.
template <class Word, class Vector>
inline void interleaveHalves(const Vector* in, Vector* out) {
    constexpr std::size_t kSide = Row<Word>::kWords;
    constexpr auto kIndices = std::make_index_sequence<kSide>();
    for (std::size_t r = 0; r < kSide / 2; ++r) {
        out[2 * r] = interleaved<Word, 0>(in[r], in[r + kSide / 2], kIndices);
        out[2 * r + 1] = interleaved<Word, 1>(in[r], in[r + kSide / 2], kIndices);
    }
}

template <class Word, std::size_t kRounds = std::bit_width(Row<Word>::kWords) - 1, class Vector>
inline void transposeBlock(Vector* block) {
    Vector next[Row<Word>::kWords];
    interleaveHalves<Word>(block, next);
    if constexpr (kRounds > 1) transposeBlock<Word, kRounds - 1>(next);
    for (std::size_t r = 0; r < Row<Word>::kWords; ++r) block[r] = next[r];
}

// How pixels become a row of words, and how the words of a row become pixels.
template <class W>
struct WholeWords {
    using Word = W;
    static constexpr std::size_t kPixelBytes = sizeof(Word);
    static constexpr std::size_t kLeastWidth = Row<Word>::kWords;
    static void load(const std::uint8_t* pixels, bool, typename Row<Word>::Vector& row) {
        std::memcpy(&row, pixels, sizeof row);
    }
    static void store(const Word* words, std::size_t count, std::uint8_t* pixels) {
        std::memcpy(pixels, words, count * sizeof(Word));
    }
};

// B, G, R and a fourth byte that nobody writes.
struct Bgr32 {
    using Word = std::uint32_t;
    static constexpr std::size_t kPixelBytes = 4;
    static constexpr std::size_t kLeastWidth = Row<Word>::kWords;
    static void load(const std::uint8_t* pixels, bool, Row<Word>::Vector& row) {
        std::memcpy(&row, pixels, sizeof row);
    }
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
    static constexpr std::size_t kLeastWidth = 6;  // 16 bytes and more
    using Bytes = Row<std::uint8_t>::Vector;

    // Four pixels are 12 bytes. The other four that a register takes lie ahead of them where there are
    // pixels, since behind them the image may end.
    static void load(const std::uint8_t* pixels, bool first, Row<Word>::Vector& row) {
        Bytes bytes;
        if (first) {
            std::memcpy(&bytes, pixels, sizeof bytes);
            bytes = __builtin_shufflevector(bytes, bytes, 0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0);
        } else {
            std::memcpy(&bytes, pixels - 4, sizeof bytes);
            bytes =
                __builtin_shufflevector(bytes, bytes, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0, 13, 14, 15, 0);
        }
        std::memcpy(&row, &bytes, sizeof row);
    }
    static void store(const Word* words, std::size_t count, std::uint8_t* pixels) {
        std::size_t i = 0;
        // Four pixels are stored as 16 bytes, of which the next pixels replace the last four.
        for (; 3 * i + kBlockBytes <= 3 * count; i += 4) {
            Bytes bytes;
            std::memcpy(&bytes, words + i, sizeof bytes);
            bytes = __builtin_shufflevector(bytes, bytes, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
            std::memcpy(pixels + 3 * i, &bytes, sizeof bytes);
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

// Asks for the lines of some rows: to be read (0) or to be written (1).
template <int kWrite>
void prefetchRows(const std::uint8_t* row, std::ptrdiff_t stride, std::size_t rowBytes, std::size_t count) {
    for (; count > 0; --count, row += stride) {
        for (std::size_t at = 0; at < rowBytes; at += kCacheLine) __builtin_prefetch(row + at, kWrite);
    }
}

// One row of blocks into the work tile.
template <class Format>
void transposeBlocks(const Transposition& image, const Span& columns, std::size_t y, std::uint8_t* out) {
    using Word = typename Format::Word;
    constexpr std::size_t kSide = Row<Word>::kWords;
    const std::uint8_t* const rows = pixelAt(image, columns.first, y, Format::kPixelBytes);
    const std::size_t count = columns.end - columns.first;
    for (std::size_t start = 0; start < count; start += kSide) {
        const std::size_t x = std::min(start, count - kSide);
        const std::uint8_t* pixels = rows + x * Format::kPixelBytes;
        typename Row<Word>::Vector block[kSide];
        for (std::size_t r = 0; r < kSide; ++r, pixels += image.sourceStride) {
            Format::load(pixels, columns.first + x == 0, block[r]);
        }
        transposeBlock<Word>(block);
        for (std::size_t r = 0; r < kSide; ++r) {
            std::memcpy(out + (x + r) * kTileStride, &block[r], kBlockBytes);
        }
    }
}

// The work tile's rows into the destination.
template <class Format>
void storePiece(const Transposition& image, const Span& columns, const Span& rows, const WorkTile& tile) {
    const std::size_t count = rows.end - rows.first;
    const std::uint8_t* words = tile.bytes.data();
    std::uint8_t* pixels = resultAt(image, columns.first, rows.first, Format::kPixelBytes);
    for (std::size_t x = columns.first; x < columns.end; ++x) {
        if (x + kResultRowsAhead < columns.end) {
            const std::ptrdiff_t ahead = kResultRowsAhead * image.destinationStride;
            prefetchRows<1>(pixels + ahead, 0, count * Format::kPixelBytes, 1);
        }
        Format::store(static_cast<const typename Format::Word*>(static_cast<const void*>(words)), count,
                      pixels);
        pixels += image.destinationStride;
        words += kTileStride;
    }
}

template <class Format>
void transposePiece(const Transposition& image, const Span& columns, const Span& rows, WorkTile& tile) {
    using Word = typename Format::Word;
    constexpr std::size_t kSide = Row<Word>::kWords;
    for (std::size_t start = rows.first; start < rows.end; start += kSide) {
        const std::size_t y = std::min(start, rows.end - kSide);
        if (const std::size_t ahead = y + kSourceRowsAhead; ahead + kSide <= image.height) {
            prefetchRows<0>(pixelAt(image, columns.first, ahead, Format::kPixelBytes), image.sourceStride,
                            (columns.end - columns.first) * Format::kPixelBytes, kSide);
        }
        transposeBlocks<Format>(image, columns, y, tile.bytes.data() + (y - rows.first) * sizeof(Word));
    }
    storePiece<Format>(image, columns, rows, tile);
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
    constexpr std::size_t kSide = Row<Word>::kWords;
    constexpr std::size_t kRows = kRunBytes / sizeof(Word);
    for (std::size_t x = 0; x < image.width; x += kBandColumns) {
        const Span columns(x, kBandColumns, image.width, kSide);
        for (std::size_t y = 0; y < image.height; y += kRows) {
            transposePiece<Format>(image, columns, Span(y, kRows, image.height, kSide), tile);
        }
    }
}

template <class Format, std::size_t kMoved>
void transposeFormat(const Transposition& image, WorkTile& tile) {
    if (image.width < Format::kLeastWidth || image.height < Row<typename Format::Word>::kWords) {
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
