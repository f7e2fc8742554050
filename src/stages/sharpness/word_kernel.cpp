#include <algorithm>
#include <cstring>

#include "stages/bgr_reader.h"
#include "stages/interpolation/bgr_writer.h"
#include "stages/luma_tables.h"
#include "stages/sharpness/grey_kernel.h"
#include "stages/sharpness/kernel.h"
#include "stages/sharpness/tiled_kernel.h"
#include "stages/sharpness/word_chunk.h"
#include "stages/table_lookup.h"

namespace tavra::sharpness {
namespace {

// How the pixels of a tile change.
struct WordChange {
    alignas(32) std::int16_t difference[kTile], correction[kTile];
};

void changeByLine(const Rows<std::uint16_t>& rows, std::size_t count, const WordLine& shared,
                  WordChange& __restrict change) {
    const WordLine line = shared;
    for (std::size_t x = 0; x < count; x += kWordChunk) {
        const Words difference = differenceAt(rows.at(x, x));
        store(difference, change.difference + x);
        store(line.at(difference), change.correction + x);
    }
}

// By look-ups between two passes.
void changeByTable(const Rows<std::uint16_t>& rows, std::size_t count, const std::int16_t* table,
                   WordChange& __restrict change) {
    using lanes::SignedWords;
    const SignedWords most = SignedWords{} + kLargestDifference;
    for (std::size_t x = 0; x < count; x += kWordChunk) {
        const auto difference = reinterpret_cast<SignedWords>(differenceAt(rows.at(x, x)));
        store(smaller(larger(difference, -most), most), change.difference + x);
    }
    lookUp(table, change.difference, change.correction, count);
}

Words correctedAt(const WordChange& change, std::size_t x, Words samples, Words coring, Words maximum) {
    return corrected(samples, load<Words>(change.difference + x), load<Words>(change.correction + x), coring,
                     maximum);
}

void correct(const WordChange& change, std::size_t count, Words coring, Words maximum,
             std::uint16_t* samples) {
    std::size_t x = 0;
    for (; x + kWordChunk <= count; x += kWordChunk) {
        store(correctedAt(change, x, load<Words>(samples + x), coring, maximum), samples + x);
    }
    if (x == count) return;
    Words rest{};
    std::memcpy(&rest, samples + x, (count - x) * sizeof *samples);
    rest = correctedAt(change, x, rest, coring, maximum);
    std::memcpy(samples + x, &rest, (count - x) * sizeof *samples);
}

template <unsigned kPixel>
class WordTile {
  public:
    using Sample = std::uint16_t;
    static constexpr unsigned kChannels = kPixel;
    static constexpr std::size_t kColumns = kWordChunk;

    WordTile(const Corrections& corrections, std::int16_t maximum)
        : coring_(Words{} + static_cast<Sample>(corrections.coring())),
          maximum_(Words{} + static_cast<Sample>(maximum)),
          hasLine_(corrections.words().line() != nullptr),
          line_(hasLine_ ? *corrections.words().line() : lanes::PiecewiseLine(), coring_),
          table_(corrections.words().table()) {}

    static void lumaRow(const Sample* row, std::size_t width, Sample* luma) {
        alignas(32) Sample blue[kTile], green[kTile], red[kTile];
        for (std::size_t x = 0; x < width; x += kTile) {
            const std::size_t count = std::min(kTile, width - x);
            readBgr(row + x * kChannels, kChannels, blue, green, red, count);
            lumaOfPlanes(blue, green, red, luma + x, count);
        }
    }

    static void sum(const Sample* samples, std::uint16_t* sums) { store(sumsOfThree(samples), sums); }

    void sharpen(const Rows<Sample>& rows, std::size_t count, Sample* pixels) {
        if (hasLine_) {
            changeByLine(rows, count, line_, change_);
        } else {
            changeByTable(rows, count, table_, change_);
        }
        if constexpr (kChannels == 1) {
            correct(change_, count, coring_, maximum_, pixels);
        } else {
            alignas(32) Sample planes[3][kTile];
            readBgr(pixels, kChannels, planes[0], planes[1], planes[2], count);
            for (auto& plane : planes) correct(change_, count, coring_, maximum_, plane);
            interpolation::writeBgr(pixels, kChannels, planes[0], planes[1], planes[2], count);
        }
    }

  private:
    const Words coring_, maximum_;
    const bool hasLine_;
    const WordLine line_;
    const std::int16_t* const table_;
    WordChange change_;
};

}  // namespace

template <unsigned kChannels>
void sharpen(const Image<std::uint16_t>& image, const Corrections& corrections,
             LineStore<std::uint16_t> lines) {
    if (image.width < 3 || image.height < 3) return;
    if (corrections.coring() == kLargestDifference) return;  // no difference exceeds it
    const lanes::PiecewiseLine* const line = corrections.words().line();
    if (kChannels == 1 && line != nullptr && image.width >= kLeastGreyWidth<std::uint16_t>) {
        return sharpenGrey(image, *line, corrections.coring(), lines);
    }
    TiledKernel<WordTile<kChannels>>(image, corrections, lines).run();
}

template void sharpen<1>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);
template void sharpen<3>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);
template void sharpen<4>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);

}  // namespace tavra::sharpness
