#include "stages/flip/transpose.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>
#include <utility>

#include "stages/byte_lanes.h"

namespace tavra::flip {
namespace {

// The image is worked in bands of columns, a band in stripes of rows, as many as make a cache line or more of
// a row of the destination, a stripe in chunks of columns, a chunk in blocks that fit in the registers. So
// the lines that a stripe leaves half written are still in a near cache when the next stripe goes on with
// them, and few pages of memory are in use at a time. The lines of the next stripes are asked for in time.
constexpr std::size_t kBandColumns = 256;
constexpr std::size_t kStripeBytes = 64;  // of a row of the destination, at the least
constexpr std::size_t kCacheLine = 64;

// Square blocks, one in each lane of the registers, the second one below the first. Vectors of the
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

// Each format says how a block of kColumns by kRows pixels is turned, which may read, and write with
// anything, up to kSpare pixels to the right of either block.

// Pixels of a word, of which the bits of `kMoved` move and the others stay as they are in the destination.
template <class W, W kMoved = static_cast<W>(~W{0})>
struct Words {
    using Vector = typename Row<W>::Vector;
    static constexpr std::size_t kPixelBytes = sizeof(W);
    static constexpr std::size_t kColumns = Row<W>::kSide, kRows = Row<W>::kBoth, kSpare = 0;

    static void turn(const std::uint8_t* source, std::ptrdiff_t sourceStride, std::uint8_t* destination,
                     std::ptrdiff_t destinationStride) {
        constexpr auto kBelow = static_cast<std::ptrdiff_t>(kColumns);
        Vector block[kColumns];
        for (Vector& row : block) {
            row = reinterpret_cast<Vector>(lanes::load(source, kBelow * sourceStride));
            source += sourceStride;
        }
        transposeBlock<W>(block);
        for (const Vector& row : block) {
            store(row, destination);
            destination += destinationStride;
        }
    }

  private:
    static void store(Vector row, std::uint8_t* to) {
        if constexpr (kMoved == static_cast<W>(~W{0})) {
            // Lane by lane: where a row begins is anywhere, and whole vectors would lie across two lines more
            // often.
            lanes::store(reinterpret_cast<lanes::Vector>(row), to, lanes::kLaneBytes);
        } else {
            Vector old;
            std::memcpy(&old, to, sizeof old);
            row = (row & kMoved) | (old & ~kMoved);
            std::memcpy(to, &row, sizeof row);
        }
    }
};

// B, G, R, where bytes can be permuted at will: four pixels are a lane of words, with a byte of no meaning
// each.
struct PermutedBgr24 {
    using Vector = Row<std::uint32_t>::Vector;
    [[maybe_unused]] static constexpr std::size_t kPixelBytes = 3;
    [[maybe_unused]] static constexpr std::size_t kColumns = 4, kRows = Row<std::uint32_t>::kBoth, kSpare = 2;

    static void turn(const std::uint8_t* source, std::ptrdiff_t sourceStride, std::uint8_t* destination,
                     std::ptrdiff_t destinationStride) {
        constexpr lanes::Order kExpand = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
        constexpr lanes::Order kCloseUp = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
        Vector block[kColumns];
        for (Vector& row : block) {
            row = reinterpret_cast<Vector>(lanes::permuted<kExpand>(lanes::load(source, 4 * sourceStride)));
            source += sourceStride;
        }
        transposeBlock<std::uint32_t>(block);
        for (const Vector& row : block) {
            // The last four of the 16 bytes of a lane are written again by what follows.
            lanes::store(lanes::permuted<kCloseUp>(reinterpret_cast<lanes::Vector>(row)), destination, 12);
            destination += destinationStride;
        }
    }
};

// The same where they cannot: two pixels each in the lower six bytes of two words.
struct ShiftedBgr24 {
    using Pairs [[gnu::vector_size(2 * sizeof(std::uint64_t))]] = std::uint64_t;
    [[maybe_unused]] static constexpr std::size_t kPixelBytes = 3;
    [[maybe_unused]] static constexpr std::size_t kColumns = 4, kRows = 4, kSpare = 1;

    static void turn(const std::uint8_t* source, std::ptrdiff_t sourceStride, std::uint8_t* destination,
                     std::ptrdiff_t destinationStride) {
        constexpr std::uint64_t kFirst = 0xFFFFFF;
        for (std::size_t y = 0; y < kRows; y += 2) {
            const Pairs upper = load(source), lower = load(source + sourceStride);
            store((upper & kFirst) | lower << 24, destination, 2 * destinationStride);
            store((upper >> 24 & kFirst) | (lower & ~kFirst), destination + destinationStride,
                  2 * destinationStride);
            source += 2 * sourceStride;
            destination += std::ptrdiff_t{2 * kPixelBytes};
        }
    }

  private:
    static Pairs load(const std::uint8_t* pixels) {
        std::uint64_t first, second;
        std::memcpy(&first, pixels, sizeof first);
        std::memcpy(&second, pixels + 2 * kPixelBytes, sizeof second);
        return Pairs{first, second};
    }
    static void store(Pairs pairs, std::uint8_t* to, std::ptrdiff_t apart) {
        const std::uint64_t first = pairs[0], second = pairs[1];
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + apart, &second, sizeof second);
    }
};
using Bgr24 = std::conditional_t<(lanes::kLanes > 1), PermutedBgr24, ShiftedBgr24>;

// B, G, R of two bytes each: a pixel is moved along with two bytes of the next one, which is written after
// it.
struct Bgr48 {
    static constexpr std::size_t kPixelBytes = 6;
    static constexpr std::size_t kColumns = 1, kRows = 16, kSpare = 1;

    static void turn(const std::uint8_t* source, std::ptrdiff_t sourceStride, std::uint8_t* destination,
                     std::ptrdiff_t) {
        for (std::size_t y = 0; y < kRows; ++y) {
            std::memcpy(destination + y * kPixelBytes, source, sizeof(std::uint64_t));
            source += sourceStride;
        }
    }
};

const std::uint8_t* pixelAt(const Transposition& image, std::size_t x, std::size_t y,
                            std::size_t pixelBytes) {
    return image.source + static_cast<std::ptrdiff_t>(y) * image.sourceStride + x * pixelBytes;
}

std::uint8_t* resultAt(const Transposition& image, std::size_t x, std::size_t y, std::size_t pixelBytes) {
    return image.destination + static_cast<std::ptrdiff_t>(x) * image.destinationStride + y * pixelBytes;
}

struct Span {
    std::size_t first, end;

    std::size_t size() const { return end - first; }
};

// Pixel by pixel: what is too narrow for blocks.
template <std::size_t kPixelBytes>
void turnPixels(const Transposition& image, Span columns, Span rows) {
    constexpr std::size_t kMovedBytes = kPixelBytes % 4 == 0 ? kPixelBytes / 4 * 3 : kPixelBytes;
    for (std::size_t x = columns.first; x < columns.end; ++x) {
        for (std::size_t y = rows.first; y < rows.end; ++y) {
            std::memcpy(resultAt(image, x, y, kPixelBytes), pixelAt(image, x, y, kPixelBytes), kMovedBytes);
        }
    }
}

// Asks for the lines of some rows: to be read (0) or to be written (1).
template <int kWrite>
void prefetchRows(const std::uint8_t* row, std::ptrdiff_t stride, std::size_t rowBytes, std::size_t count) {
    for (; count > 0; --count, row += stride) {
        for (std::size_t at = 0; at < rowBytes; at += kCacheLine) __builtin_prefetch(row + at, kWrite);
    }
}

// One row of blocks.
template <class Format>
void turnBlocks(const Transposition& image, Span columns, std::size_t y) {
    const std::uint8_t* source = pixelAt(image, columns.first, y, Format::kPixelBytes);
    std::uint8_t* destination = resultAt(image, columns.first, y, Format::kPixelBytes);
    for (std::size_t x = columns.first; x < columns.end; x += Format::kColumns) {
        Format::turn(source, image.sourceStride, destination, image.destinationStride);
        source += Format::kColumns * Format::kPixelBytes;
        destination += static_cast<std::ptrdiff_t>(Format::kColumns) * image.destinationStride;
    }
}

// The rows of a stripe. Where less than a block is left below, the last block lies across rows that were
// done.
template <class Format>
void turnStripe(const Transposition& image, Span columns, Span rows) {
    // Narrow chunks keep the rows of a wide image, whose addresses differ by a power of two, from driving
    // each other out of the nearest cache; small pixels need so many rows that only few columns were left.
    constexpr std::size_t kChunkColumns = Format::kPixelBytes < 3 ? kBandColumns : 64;
    for (std::size_t x = columns.first; x < columns.end; x += kChunkColumns) {
        const Span chunk = {x, std::min(x + kChunkColumns, columns.end)};
        if (rows.end + rows.size() <= image.height) {
            prefetchRows<0>(pixelAt(image, x, rows.end, Format::kPixelBytes), image.sourceStride,
                            chunk.size() * Format::kPixelBytes, rows.size());
            prefetchRows<1>(resultAt(image, x, rows.end, Format::kPixelBytes), image.destinationStride,
                            rows.size() * Format::kPixelBytes, chunk.size());
        }
        for (std::size_t y = rows.first; y < rows.end; y += Format::kRows) {
            turnBlocks<Format>(image, chunk, std::min(y, image.height - Format::kSpare - Format::kRows));
        }
    }
}

template <class Format>
void turnImage(const Transposition& image) {
    constexpr std::size_t kPixelBytes = Format::kPixelBytes;
    constexpr std::size_t kStripeRows =
        (kStripeBytes / kPixelBytes + Format::kRows - 1) / Format::kRows * Format::kRows;
    if (image.width < Format::kColumns + Format::kSpare || image.height < Format::kRows + Format::kSpare)
        return turnPixels<kPixelBytes>(image, {0, image.width}, {0, image.height});
    const std::size_t width = (image.width - Format::kSpare) / Format::kColumns * Format::kColumns;
    const std::size_t height = image.height - Format::kSpare;
    for (std::size_t x = 0; x < width; x += kBandColumns) {
        const Span columns = {x, std::min(x + kBandColumns, width)};
        for (std::size_t y = 0; y < height; y += kStripeRows)
            turnStripe<Format>(image, columns, {y, std::min(y + kStripeRows, height)});
        turnPixels<kPixelBytes>(image, columns, {height, image.height});
    }
    turnPixels<kPixelBytes>(image, {width, image.width}, {0, image.height});
}

}  // namespace

void transpose(std::size_t pixelBytes, const Transposition& image) {
    switch (pixelBytes) {
        case 1: return turnImage<Words<std::uint8_t>>(image);
        case 2: return turnImage<Words<std::uint16_t>>(image);
        case 3: return turnImage<Bgr24>(image);
        case 4: return turnImage<Words<std::uint32_t, 0x00FFFFFF>>(image);
        case 6: return turnImage<Bgr48>(image);
        default: return turnImage<Words<std::uint64_t, 0x0000FFFFFFFFFFFF>>(image);
    }
}

}  // namespace tavra::flip
