#include "stages/sharpness/grey_kernel.h"

namespace tavra::sharpness {
namespace {

// By design: in grey images the low byte of a correction acts, so that one of 300 acts as 44.
Bytes corrected(Bytes samples, Bytes correction, Bytes darker) {
    const Bytes mirrored =
        samples ^ darker;  // to become darker is to become brighter, seen from the other end
    const Bytes room = ~correction;
    return (smaller(mirrored, room) + correction) ^ darker;
}

void sumRow(const std::uint8_t* samples, std::size_t columns, std::uint16_t* sums) {
    const std::size_t whole = columns / kChunk * kChunk;
    for (std::size_t x = 0; x < whole; x += kChunk) storeSums(sumsOfThree(samples + x), sums + x);
    storeSums(sumsOfThree(samples + columns - kChunk), sums + whole);
}

// The last chunk ends with the row. It overlaps the one ahead of it, so it is stored when that one has been
// read; its sums lie behind those of the whole chunks.
template <std::size_t kExceptions>
void sharpenRow(const Rows& rows, std::uint8_t* samples, std::size_t columns,
                const LineVectors<kExceptions>& line, Bytes coring) {
    const auto sharpened = [&](std::size_t sums, std::size_t x) __attribute__((always_inline)) {
        const Excess excess = excessAt(rows.at(sums, x), coring);
        return corrected(load(samples + x), joined(line.at(excess.size)), excess.darker);
    };
    const std::size_t whole = columns / kChunk * kChunk, last = columns - kChunk;
    const Bytes end = sharpened(whole, last);
    for (std::size_t x = 0; x < whole; x += kChunk) store(sharpened(x, x), samples + x);
    store(end, samples + last);
}

template <std::size_t kExceptions>
void sharpenRows(const Image<std::uint8_t>& image, const CorrectionLine& shared, std::int16_t coring,
                 LineStore<std::uint8_t> lines) {
    const std::size_t columns = image.width - 2;
    const LineVectors<kExceptions> line(shared);
    for (const std::size_t y : {0, 1}) sumRow(image.row(y) + 1, columns, lines.sums(y));
    for (std::size_t y = 1; y < image.height - 1; ++y) {
        const Rows rows = {lines.sums(y - 1), lines.sums(y), lines.sums(y + 1), image.row(y) + 1,
                           image.row(y + 1) + 1};
        sharpenRow(rows, image.row(y) + 1, columns, line, coringBytes(coring));
    }
}

}  // namespace

void sharpenGrey(const Image<std::uint8_t>& image, const CorrectionLine& line, std::int16_t coring,
                 LineStore<std::uint8_t> lines) {
    withExceptions(line, [&](auto exceptions) { sharpenRows<exceptions>(image, line, coring, lines); });
}

}  // namespace tavra::sharpness
