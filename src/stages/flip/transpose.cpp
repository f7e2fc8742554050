#include "stages/flip/transpose.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "stages/byte_lanes.h"

namespace tavra::flip {
namespace {

// The image is worked in bands of columns, a band in pieces of rows, a piece in square blocks that fit in the
// registers. The rows that a piece becomes are put together in the work tile, and go to the destination in
// long runs. What decides about the speed of a large image is how often a page of memory is come back to, in
// the source and in the destination, and that the next lines of both are asked for in time.
constexpr std::size_t kBandColumns = 256;
constexpr std::size_t kRunBytes = 1024;
constexpr std::size_t kCacheLine = 64;
constexpr std::size_t kTileStride = kRunBytes + kCacheLine;  // not a power of two, which shares cache sets
constexpr std::size_t kSourceRowsAhead = 8;
constexpr std::size_t kResultRowsAhead = 4;
constexpr std::size_t kCachedBytes = std::size_t{8} << 20;  // of an image that a processor of today keeps
static_assert(kBandColumns * kTileStride <= sizeof(WorkTile));

// Square blocks, one in each lane of the registers, the second one beside or below the first. Vectors of the
// compiler's own, the same on every processor: it knows an interleaving of two of them as one instruction.
template <class Word>
struct Row {
    using Vector [[gnu::vector_size(lanes::kVectorBytes)]] = Word;
    static constexpr std::size_t kSide = lanes::kLaneBytes / sizeof(Word);  // of a block
    static constexpr std::size_t kBoth = kSide * lanes::kLanes;             // of all blocks together
};

// The words of the lower (kHalf 0) or upper halves (1) of two rows in turn, in each lane.
template <class Word, std::size_t kHalf, class Vector, std::size_t... kIndex>
inline Vector interleaved(Vector a, Vector b, std::index_sequence<kIndex...>) {
    constexpr std::size_t kSide = Row<Word>::kSide, kWords = Row<Word>::kBoth;
    return __builtin_shufflevector(
        a, b, (kIndex % 2 * kWords + kIndex / kSide * kSide + kHalf * kSide / 2 + kIndex % kSide / 2)...);
}

// Interleaves the halves of a square block, row by row: one bit of the row number becomes the lowest of the
// column number, and the others move up. After as many rounds as the side has bits, rows and columns have
// changed places.
template <class Word, class Vector>
inline void interleaveHalves(const Vector* in, Vector* out) {
    constexpr std::size_t kSide = Row<Word>::kSide;
    constexpr auto kIndices = std::make_index_sequence<Row<Word>::kBoth>();
    for (std::size_t r = 0; r < kSide / 2; ++r) {
        out[2 * r] = interleaved<Word, 0>(in[r], in[r + kSide / 2], kIndices);
        out[2 * r + 1] = interleaved<Word, 1>(in[r], in[r + kSide / 2], kIndices);
    }
}

template <class Word, std::size_t kRounds = std::bit_width(Row<Word>::kSide) - 1, class Vector>
inline void transposeBlock(Vector* block) {
    Vector next[Row<Word>::kSide];
    interleaveHalves<Word>(block, next);
    if constexpr (kRounds > 1) transposeBlock<Word, kRounds - 1>(next);
    for (std::size_t r = 0; r < Row<Word>::kSide; ++r) block[r] = next[r];
}

// How pixels become a row of words, and how the words of a row become pixels.
template <class W>
struct WholeWords {
    using Word = W;
    static constexpr std::size_t kPixelBytes = sizeof(Word);
    static constexpr std::size_t kLeastWidth = Row<Word>::kBoth;
    static lanes::Vector load(const std::uint8_t* pixels, std::ptrdiff_t apart, bool) {
        return lanes::load(pixels, apart);
    }
    static void store(const Word* words, std::size_t count, std::uint8_t* pixels) {
        std::memcpy(pixels, words, count * sizeof(Word));
    }
};

// B, G, R and a fourth byte that nobody writes.
struct Bgr32 {
    using Word = std::uint32_t;
    static constexpr std::size_t kPixelBytes = 4;
    static constexpr std::size_t kLeastWidth = Row<Word>::kBoth;
    static lanes::Vector load(const std::uint8_t* pixels, std::ptrdiff_t apart, bool) {
        return lanes::load(pixels, apart);
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
    static constexpr std::size_t kLeastWidth = Row<Word>::kBoth + 2;  // four bytes more than the blocks take

    // Four pixels are 12 bytes. The other four that a lane takes lie ahead of them where there are pixels,
    // since behind them the image may end.
    static lanes::Vector load(const std::uint8_t* pixels, std::ptrdiff_t apart, bool first) {
        if (first) {
            return lanes::permuted<lanes::Order{0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0}>(
                lanes::load(pixels, apart));
        }
        return lanes::permuted<lanes::Order{4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 0, 13, 14, 15, 0}>(
            lanes::load(pixels - 4, apart));
    }
    static void store(const Word* words, std::size_t count, std::uint8_t* pixels) {
        constexpr lanes::Order kCloseUp = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
        std::size_t i = 0;
        // Four pixels are stored as a lane, of which the next pixels replace the last four bytes.
        for (; 3 * i + lanes::kVectorBytes <= 3 * count; i += 4 * lanes::kLanes) {
            lanes::Vector bytes;
            std::memcpy(&bytes, words + i, sizeof bytes);
            lanes::store(lanes::permuted<kCloseUp>(bytes), pixels + 3 * i, 12);
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

// Blocks with their upper left corner at (x, y), the second one `apart` bytes behind the first.
template <class Format>
void loadTransposed(const Transposition& image, std::size_t x, std::size_t y, std::ptrdiff_t apart,
                    typename Row<typename Format::Word>::Vector* block) {
    using Word = typename Format::Word;
    const std::uint8_t* pixels = pixelAt(image, x, y, Format::kPixelBytes);
    for (std::size_t r = 0; r < Row<Word>::kSide; ++r, pixels += image.sourceStride)
        block[r] = reinterpret_cast<typename Row<Word>::Vector>(Format::load(pixels, apart, x == 0));
    transposeBlock<Word>(block);
}

// One row of blocks, two side by side, into the work tile.
template <class Format>
void transposeBlocks(const Transposition& image, const Span& columns, std::size_t y, std::uint8_t* out) {
    using Word = typename Format::Word;
    constexpr std::size_t kSide = Row<Word>::kSide, kBoth = Row<Word>::kBoth;
    const std::size_t count = columns.end - columns.first;
    for (std::size_t start = 0; start < count; start += kBoth) {
        const std::size_t x = std::min(start, count - kBoth);
        typename Row<Word>::Vector block[kSide];
        loadTransposed<Format>(image, columns.first + x, y, kSide * Format::kPixelBytes, block);
        for (std::size_t r = 0; r < kSide; ++r) {
            lanes::store(reinterpret_cast<lanes::Vector>(block[r]), out + (x + r) * kTileStride,
                         kSide * kTileStride);
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
    constexpr std::size_t kSide = Row<Word>::kSide;
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
    constexpr std::size_t kRows = kRunBytes / sizeof(Word);
    for (std::size_t x = 0; x < image.width; x += kBandColumns) {
        const Span columns(x, kBandColumns, image.width, Row<Word>::kBoth);
        for (std::size_t y = 0; y < image.height; y += kRows) {
            transposePiece<Format>(image, columns, Span(y, kRows, image.height, Row<Word>::kSide), tile);
        }
    }
}

// An image of whole words that stays in the caches: without the detour through the work tile, blocks one
// below the other, as many as fill lines of the destination.
template <class Word>
void transposeStripes(const Transposition& image) {
    constexpr std::size_t kSide = Row<Word>::kSide, kBoth = Row<Word>::kBoth;
    constexpr std::size_t kRows = kCacheLine / sizeof(Word);
    const std::ptrdiff_t below = static_cast<std::ptrdiff_t>(kSide) * image.sourceStride;
    for (std::size_t top = 0; top < image.height; top += kRows) {
        const Span rows(top, kRows, image.height, kBoth);
        for (std::size_t start = 0; start < image.width; start += kSide) {
            const std::size_t x = std::min(start, image.width - kSide);
            for (std::size_t next = rows.first; next < rows.end; next += kBoth) {
                const std::size_t y = std::min(next, rows.end - kBoth);
                typename Row<Word>::Vector block[kSide];
                loadTransposed<WholeWords<Word>>(image, x, y, below, block);
                std::uint8_t* pixels = resultAt(image, x, y, sizeof(Word));
                // Lane by lane: where a row begins is anywhere, and whole vectors would lie across two lines
                // more often.
                for (std::size_t r = 0; r < kSide; ++r, pixels += image.destinationStride)
                    lanes::store(reinterpret_cast<lanes::Vector>(block[r]), pixels, lanes::kLaneBytes);
            }
        }
    }
}

template <class Format>
bool fitsBlocks(const Transposition& image) {
    return image.width >= Format::kLeastWidth && image.height >= Row<typename Format::Word>::kBoth;
}

template <class Word>
void transposeWords(const Transposition& image, WorkTile& tile) {
    if (!fitsBlocks<WholeWords<Word>>(image)) {
        transposePixels<sizeof(Word), sizeof(Word)>(image);
    } else if (image.width * image.height * sizeof(Word) <= kCachedBytes) {
        transposeStripes<Word>(image);
    } else {
        transposeBands<WholeWords<Word>>(image, tile);
    }
}

template <class Format>
void transposeColors(const Transposition& image, WorkTile& tile) {
    if (fitsBlocks<Format>(image)) {
        transposeBands<Format>(image, tile);
    } else {
        transposePixels<Format::kPixelBytes, 3>(image);
    }
}

}  // namespace

void transpose(std::size_t pixelBytes, const Transposition& image, WorkTile& tile) {
    switch (pixelBytes) {
        case 1: return transposeWords<std::uint8_t>(image, tile);
        case 2: return transposeWords<std::uint16_t>(image, tile);
        case 3: return transposeColors<Bgr24>(image, tile);
        case 4: return transposeColors<Bgr32>(image, tile);
        case 6: return transposePixels<6, 6>(image);
        default: return transposePixels<8, 6>(image);
    }
}

}  // namespace tavra::flip
