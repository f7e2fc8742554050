#include <algorithm>

#include "stages/bgr_reader.h"
#include "stages/luma_tables.h"
#include "stages/pixel_shift.h"
#include "stages/sharpness/byte_chunk.h"
#include "stages/sharpness/grey_kernel.h"
#include "stages/sharpness/kernel.h"
#include "stages/sharpness/tiled_kernel.h"

namespace tavra::sharpness {
namespace {

// How many levels the pixels of a tile rise or fall.
//
// By design: of a correction the low byte acts, so that one of 300 acts as 44. Only a colour pixel that
// becomes darker takes it whole.
struct Shifts {
    alignas(kChunk) std::uint8_t rise[kTile], fall[kTile];
};

template <std::size_t kExceptions>
void shiftsByLine(const Rows<std::uint8_t>& rows, std::size_t count, std::int16_t coring, bool grey,
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
void shiftsByTable(const Rows<std::uint8_t>& rows, std::size_t count, std::int16_t coring, bool grey,
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

// By design: a depth above 8 holds no byte back, and of a sum above 255 the low byte stays.
template <unsigned kChannels>
void shiftFreely(const Shifts& shifts, std::size_t count, std::uint8_t* pixels) {
    constexpr std::size_t kColors = std::min(kChannels, 3u);
    for (std::size_t x = 0; x < count; ++x, pixels += kChannels) {
        for (std::size_t c = 0; c < kColors; ++c) {
            const auto risen = static_cast<std::uint8_t>(pixels[c] + shifts.rise[x]);
            pixels[c] = static_cast<std::uint8_t>(std::max(risen, shifts.fall[x]) - shifts.fall[x]);
        }
    }
}

constexpr std::int16_t kLargestByte = 255;

template <unsigned kPixel>
class ByteTile {
  public:
    using Sample = std::uint8_t;
    static constexpr unsigned kChannels = kPixel;
    static constexpr std::size_t kColumns = kChunk;

    ByteTile(const Corrections& corrections, std::int16_t maximum)
        : coring_(corrections.coring()),
          corrections_(corrections.bytes()),
          isDeeper_(maximum > kLargestByte) {}

    static void lumaRow(const Sample* row, std::size_t width, Sample* __restrict luma) {
        alignas(32) Sample blue[kTile], green[kTile], red[kTile];
        alignas(32) std::uint16_t words[kTile];
        for (std::size_t x = 0; x < width; x += kTile) {
            const std::size_t count = std::min(kTile, width - x);
            readBgr(row + x * kChannels, kChannels, blue, green, red, count);
            lumaOfPlanes(blue, green, red, words, count);
            for (std::size_t i = 0; i < count; ++i) luma[x + i] = static_cast<Sample>(words[i]);
        }
    }

    static void sum(const Sample* samples, std::uint16_t* sums) { storeSums(sumsOfThree(samples), sums); }

    void sharpen(const Rows<Sample>& rows, std::size_t count, Sample* pixels) {
        makeShifts(rows, count);
        if (isDeeper_) {
            shiftFreely<kChannels>(shifts_, count, pixels);
        } else if constexpr (kGrey) {
            shiftGrey(shifts_, count, pixels);
        } else {
            shiftPixels(pixels, kChannels, shifts_.rise, shifts_.fall, count);
        }
    }

  private:
    static constexpr bool kGrey = kChannels == 1;

    void makeShifts(const Rows<Sample>& rows, std::size_t count) {
        const CorrectionLine* const line = corrections_.line();
        if (line == nullptr) {
            return shiftsByTable(rows, count, coring_, kGrey, corrections_.table(), shifts_);
        }
        withExceptions(*line, [&](auto exceptions) {
            shiftsByLine<exceptions>(rows, count, coring_, kGrey, *line, shifts_);
        });
    }

    const std::int16_t coring_;
    const ByteCorrections& corrections_;
    const bool isDeeper_;
    Shifts shifts_;
};

}  // namespace

template <unsigned kChannels>
void sharpen(const Image<std::uint8_t>& image, const Corrections& corrections,
             LineStore<std::uint8_t> lines) {
    if (image.width < 3 || image.height < 3) return;
    const CorrectionLine* const line = corrections.bytes().line();
    if (kChannels == 1 && line != nullptr && image.width >= kLeastGreyWidth<std::uint8_t> &&
        image.maximum == kLargestByte) {
        return sharpenGrey(image, *line, corrections.coring(), lines);
    }
    TiledKernel<ByteTile<kChannels>>(image, corrections, lines).run();
}

template void sharpen<1>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);
template void sharpen<3>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);
template void sharpen<4>(const Image<std::uint8_t>&, const Corrections&, LineStore<std::uint8_t>);

}  // namespace tavra::sharpness
