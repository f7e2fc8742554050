#include <algorithm>
#include <cstring>

#include "stages/bgr_reader.h"
#include "stages/luma_tables.h"
#include "stages/pixel_shift.h"
#include "stages/sharpness/byte_chunk.h"
#include "stages/sharpness/grey_kernel.h"
#include "stages/sharpness/kernel.h"

namespace tavra::sharpness {
namespace {

// Columns that are worked on at a time: what lies between two steps stays in the first-level cache.
constexpr std::size_t kTile = 256;
static_assert(kTile % kChunk == 0);

// How many levels the pixels of a tile rise or fall.
//
// By design: of a correction the low byte acts, so that one of 300 acts as 44. Only a colour pixel that
// becomes darker takes it whole.
struct Shifts {
    alignas(kChunk) std::uint8_t rise[kTile], fall[kTile];
};

template <std::size_t kExceptions>
void shiftsByLine(const Rows& rows, std::size_t count, std::int16_t coring, bool grey,
                  const CorrectionLine& shared, Shifts& __restrict shifts) {
    const LineVectors<kExceptions> line(shared);
    const Bytes cored = coringBytes(coring);
    const std::uint16_t most = grey ? 0xFFFF : 0xFF;
    for (std::size_t x = 0; x < count; x += kChunk) {
        const Excess excess = excessAt(rows.at(x, x), cored);
        const Parted size = line.at(excess.size);
        const Parted whole = {size.even < most ? size.even : most, size.odd < most ? size.odd : most};
        store(joined(size) & ~excess.darker, shifts.rise + x);
        store(joined(whole) & excess.darker, shifts.fall + x);
    }
}

// By look-ups between two passes.
void shiftsByTable(const Rows& rows, std::size_t count, std::int16_t coring, bool grey,
                   const WordTable& table, Shifts& __restrict shifts) {
    alignas(kChunk) std::uint8_t excess[kTile] = {}, darker[kTile] = {};
    alignas(kChunk) std::uint16_t correction[kTile];
    const Bytes cored = coringBytes(coring);
    const std::uint16_t most = grey ? 0xFFFF : 0xFF;
    for (std::size_t x = 0; x < count; x += kChunk) {
        const Excess chunk = excessAt(rows.at(x, x), cored);
        store(chunk.size, excess + x);
        store(chunk.darker, darker + x);
    }
    table.lookUp(excess, correction, count);
    for (std::size_t x = 0; x < count; ++x) {
        const std::uint16_t whole = std::min(correction[x], most);
        shifts.rise[x] = static_cast<std::uint8_t>(correction[x] & ~darker[x]);
        shifts.fall[x] = static_cast<std::uint8_t>(whole & darker[x]);
    }
}

void shiftGrey(const Shifts& shifts, std::size_t count, std::uint8_t* __restrict samples) {
    for (std::size_t x = 0; x < count; ++x) {
        const auto room = static_cast<std::uint8_t>(255 - samples[x]);
        const auto risen = static_cast<std::uint8_t>(samples[x] + std::min(shifts.rise[x], room));
        samples[x] = static_cast<std::uint8_t>(std::max(risen, shifts.fall[x]) - shifts.fall[x]);
    }
}

void lumaRow(const std::uint8_t* row, std::size_t pitch, std::size_t width, std::uint8_t* __restrict luma) {
    alignas(32) std::uint8_t blue[kTile], green[kTile], red[kTile];
    alignas(32) std::uint16_t words[kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        readBgr(row + x * pitch, pitch, blue, green, red, count);
        lumaOfPlanes(blue, green, red, words, count);
        for (std::size_t i = 0; i < count; ++i) luma[x + i] = static_cast<std::uint8_t>(words[i]);
    }
}

// Grey or luminance goes through the line store, whose lines have room for the last chunk.
template <unsigned kChannels>
class Sharpener {
  public:
    Sharpener(const Image<std::uint8_t>& image, const Corrections& corrections, LineStore<std::uint8_t> lines)
        : image_(image), coring_(corrections.coring()), corrections_(corrections.bytes()), lines_(lines) {}

    void run() {
        prepare(0);
        prepare(1);
        sumRow(0);
        sumRow(1);
        for (std::size_t y = 1; y < image_.height - 1; ++y) {
            prepare(y + 1);
            sharpenRow(y);
        }
    }

  private:
    static constexpr bool kGrey = kChannels == 1;

    std::size_t columns() const { return image_.width - 2; }

    // What later rows need to know of a row, before it changes.
    void prepare(std::size_t y) {
        if constexpr (kGrey) {
            std::memcpy(lines_.luma(y), image_.row(y), image_.width);
        } else {
            lumaRow(image_.row(y), kChannels, image_.width, lines_.luma(y));
        }
    }

    void sumRow(std::size_t y) {
        for (std::size_t x = 0; x < columns(); x += kChunk) {
            storeSums(sumsOfThree(lines_.luma(y) + 1 + x), lines_.sums(y) + x);
        }
    }

    void sharpenRow(std::size_t y) {
        const Rows rows = {lines_.sums(y - 1), lines_.sums(y), lines_.sums(y + 1), lines_.luma(y) + 1,
                           lines_.luma(y + 1) + 1};
        for (std::size_t x = 0; x < columns(); x += kTile) {
            const std::size_t count = std::min(kTile, columns() - x);
            makeShifts(rows.at(x, x), count);
            std::uint8_t* const pixels = image_.row(y) + (1 + x) * kChannels;
            if constexpr (kGrey) {
                shiftGrey(shifts_, count, pixels);
            } else {
                shiftPixels(pixels, kChannels, shifts_.rise, shifts_.fall, count);
            }
        }
    }

    void makeShifts(const Rows& rows, std::size_t count) {
        const CorrectionLine* const line = corrections_.line();
        if (line == nullptr) {
            return shiftsByTable(rows, count, coring_, kGrey, corrections_.table(), shifts_);
        }
        withExceptions(*line, [&](auto exceptions) {
            shiftsByLine<exceptions>(rows, count, coring_, kGrey, *line, shifts_);
        });
    }

    const Image<std::uint8_t>& image_;
    const std::int16_t coring_;
    const ByteCorrections& corrections_;
    LineStore<std::uint8_t> lines_;
    Shifts shifts_;
};

}  // namespace

template <unsigned kChannels>
void sharpen(const Image<std::uint8_t>& image, const Corrections& corrections,
             LineStore<std::uint8_t> lines) {
    if (image.width < 3 || image.height < 3) return;
    const CorrectionLine* const line = corrections.bytes().line();
    if (kChannels == 1 && line != nullptr && image.width >= kLeastGreyWidth) {
        return sharpenGrey(image, *line, corrections.coring(), lines);
    }
    Sharpener<kChannels>(image, corrections, lines).run();
}

template void sharpen<1>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);
template void sharpen<3>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);
template void sharpen<4>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);

}  // namespace tavra::sharpness
