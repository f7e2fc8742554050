#include "stages/sharpness/grey_kernel.h"

#include <type_traits>

#include "stages/sharpness/byte_chunk.h"
#include "stages/sharpness/word_chunk.h"

namespace tavra::sharpness {
namespace {

template <std::size_t kExceptions>
class GreyBytes {
  public:
    using Sample = std::uint8_t;

    GreyBytes(const CorrectionLine& line, std::int16_t coring) : line_(line), coring_(coringBytes(coring)) {}

    void sum(const Sample* samples, std::uint16_t* sums) const { storeSums(sumsOfThree(samples), sums); }

    [[gnu::always_inline]] Excess differenceAt(const Rows<Sample>& chunk) const {
        return excessAt(chunk, coring_);
    }

    // By design: in grey images the low byte of a correction acts, so that one of 300 acts as 44.
    [[gnu::always_inline]] Bytes corrected(Bytes samples, const Excess& excess) const {
        const Bytes correction = joined(line_.at(excess.size));
        const Bytes mirrored =
            samples ^ excess.darker;  // to become darker is to become brighter, seen from the other end
        const Bytes room = ~correction;
        return (smaller(mirrored, room) + correction) ^ excess.darker;
    }

  private:
    LineVectors<kExceptions> line_;
    Bytes coring_;
};

class GreyWords {
  public:
    using Sample = std::uint16_t;

    GreyWords(const lanes::PiecewiseLine& line, std::int16_t coring, std::int16_t maximum)
        : coring_(Words{} + static_cast<Sample>(coring)),
          maximum_(Words{} + static_cast<Sample>(maximum)),
          line_(line, coring_) {}

    void sum(const Sample* samples, std::uint16_t* sums) const { store(sumsOfThree(samples), sums); }

    [[gnu::always_inline]] Words differenceAt(const Rows<Sample>& chunk) const {
        return sharpness::differenceAt(chunk);
    }

    [[gnu::always_inline]] Words corrected(Words samples, Words difference) const {
        return sharpness::corrected(samples, difference, line_.at(difference), coring_, maximum_);
    }

  private:
    Words coring_, maximum_;
    WordLine line_;
};

template <class Chunk>
class GreyKernel {
  public:
    using Sample = typename Chunk::Sample;

    GreyKernel(const Image<Sample>& image, const Chunk& chunk, LineStore<Sample> lines)
        : image_(image), chunk_(chunk), lines_(lines) {}

    void run() const {
        for (const std::size_t y : {0, 1}) sumRow(image_.row(y) + 1, lines_.sums(y));
        for (std::size_t y = 1; y < image_.height - 1; ++y) {
            sharpenRow({lines_.sums(y - 1), lines_.sums(y), lines_.sums(y + 1), image_.row(y) + 1,
                        image_.row(y + 1) + 1},
                       image_.row(y) + 1);
        }
    }

  private:
    static constexpr std::size_t kColumns = kChunkOf<Sample>;

    std::size_t columns() const { return image_.width - 2; }
    std::size_t whole() const { return columns() / kColumns * kColumns; }

    void sumRow(const Sample* samples, std::uint16_t* sums) const {
        for (std::size_t x = 0; x < whole(); x += kColumns) chunk_.sum(samples + x, sums + x);
        chunk_.sum(samples + columns() - kColumns, sums + whole());
    }

    // The difference of a chunk is made while the one ahead of it is corrected: one after the other, the work
    // on a chunk is a chain longer than what the processor looks ahead. The last chunk ends with the row. It
    // overlaps the one ahead of it, so it is read before that one is stored; its sums lie behind those of the
    // whole chunks.
    void sharpenRow(const Rows<Sample>& rows, Sample* samples) const {
        using Vector = std::conditional_t<sizeof(Sample) == 1, Bytes, Words>;
        const Chunk chunk = chunk_;  // in registers
        const std::size_t end = whole(), last = columns() - kColumns;
        auto difference = chunk.differenceAt(rows.at(0, 0));
        std::size_t x = 0;
        for (; x + kColumns < end; x += kColumns) {
            const auto next = chunk.differenceAt(rows.at(x + kColumns, x + kColumns));
            store(chunk.corrected(load<Vector>(samples + x), difference), samples + x);
            difference = next;
        }
        const auto lastSamples = load<Vector>(samples + last);
        const auto lastDifference = chunk.differenceAt(rows.at(end, last));
        store(chunk.corrected(load<Vector>(samples + x), difference), samples + x);
        store(chunk.corrected(lastSamples, lastDifference), samples + last);
    }

    const Image<Sample>& image_;
    const Chunk chunk_;
    LineStore<Sample> lines_;
};

}  // namespace

void sharpenGrey(const Image<std::uint8_t>& image, const CorrectionLine& line, std::int16_t coring,
                 LineStore<std::uint8_t> lines) {
    withExceptions(
        line, [&](auto exceptions) { GreyKernel(image, GreyBytes<exceptions>(line, coring), lines).run(); });
}

void sharpenGrey(const Image<std::uint16_t>& image, const lanes::PiecewiseLine& line, std::int16_t coring,
                 LineStore<std::uint16_t> lines) {
    GreyKernel(image, GreyWords(line, coring, image.maximum), lines).run();
}

}  // namespace tavra::sharpness
