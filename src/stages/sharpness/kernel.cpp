#include "stages/sharpness/kernel.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "stages/bgr_reader.h"
#include "stages/interpolation/bgr_writer.h"
#include "stages/luma_tables.h"
#include "stages/pixel_shift.h"
#include "stages/table_lookup.h"

namespace tavra::sharpness {
namespace {

// Columns that are worked on at a time: what lies between two steps stays in the first-level cache.
constexpr std::size_t kTile = 256;

template <class Sample>
void sumRow(const Sample* __restrict grey, std::size_t width, std::uint16_t* __restrict sums) {
    for (std::size_t x = 1; x < width - 1; ++x) {
        sums[x] = static_cast<std::uint16_t>(grey[x - 1] + grey[x] + grey[x + 1]);
    }
}

void keepLuma(const std::uint16_t* from, std::size_t count, std::uint8_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<std::uint8_t>(from[i]);
}

void lumaRow(const std::uint8_t* row, std::size_t pitch, std::size_t width, std::uint8_t* luma) {
    alignas(32) std::uint8_t blue[kTile], green[kTile], red[kTile];
    alignas(32) std::uint16_t words[kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        readBgr(row + x * pitch, pitch, blue, green, red, count);
        lumaOfPlanes(blue, green, red, words, count);
        keepLuma(words, count, luma + x);
    }
}

void lumaRow(const std::uint16_t* row, std::size_t pitch, std::size_t width, std::uint16_t* luma) {
    alignas(32) std::uint16_t blue[kTile], green[kTile], red[kTile];
    for (std::size_t x = 0; x < width; x += kTile) {
        const std::size_t count = std::min(kTile, width - x);
        readBgr(row + x * pitch, pitch, blue, green, red, count);
        lumaOfPlanes(blue, green, red, luma + x, count);
    }
}

// The sums of three rows, from the same column on.
struct Sums {
    const std::uint16_t *above, *here, *below;
};

// A value and the mean of its eight neighbours, rounded.
std::int16_t differenceOf(std::uint16_t value, std::uint16_t above, std::uint16_t here, std::uint16_t below) {
    const auto neighbours = static_cast<std::uint16_t>(above + here + below - value + 4);
    return static_cast<std::int16_t>(value - (neighbours >> 3));
}

std::uint16_t excessOf(std::int16_t difference, std::uint16_t coring) {
    const auto size = static_cast<std::uint16_t>(std::abs(difference));
    return static_cast<std::uint16_t>(std::max(size, coring) - coring);
}

// All ones below zero. (Of a condition the compiler makes two ways, each with all of the work.)
std::int16_t signOf(std::int16_t difference) {
    return static_cast<std::int16_t>(difference >> 15);
}

std::int16_t withSign(std::int16_t sign, std::uint16_t size) {
    return static_cast<std::int16_t>((static_cast<std::int16_t>(size) ^ sign) - sign);
}

// By design: in byte images the low byte of a correction acts, so that one of 300 acts as 44. Only a colour
// pixel that becomes darker takes it whole.
std::uint8_t correctedGrey(std::uint8_t sample, std::int16_t sign, std::uint16_t correction) {
    const auto changed = static_cast<std::int16_t>(sample + withSign(sign, correction & 0xFF));
    return static_cast<std::uint8_t>(std::min<std::int16_t>(std::max<std::int16_t>(changed, 0), 255));
}

void splitColor(const std::int16_t* change, std::size_t count, std::uint8_t* __restrict rise,
                std::uint8_t* __restrict fall) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t sign = signOf(change[i]);
        const auto size = static_cast<std::int16_t>(std::abs(change[i]));
        rise[i] = static_cast<std::uint8_t>(size & ~sign);
        fall[i] = static_cast<std::uint8_t>(std::min<std::int16_t>(size, 255) & sign);
    }
}

// The corrections by arithmetic, in one pass.
template <std::size_t kExceptions>
void greyByLine(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
                const std::uint16_t* __restrict below, std::uint8_t* __restrict samples, std::size_t count,
                std::uint16_t coring, const CorrectionLine& sharedLine) {
    const CorrectionLine line = sharedLine;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t difference = differenceOf(samples[i], above[i], here[i], below[i]);
        const std::uint16_t correction = line.at<kExceptions>(excessOf(difference, coring));
        samples[i] = correctedGrey(samples[i], signOf(difference), correction);
    }
}

template <std::size_t kExceptions>
void changesByLine(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
                   const std::uint16_t* __restrict below, const std::uint8_t* __restrict grey,
                   std::size_t count, std::uint16_t coring, const CorrectionLine& sharedLine,
                   std::int16_t* __restrict change) {
    const CorrectionLine line = sharedLine;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t difference = differenceOf(grey[i], above[i], here[i], below[i]);
        const std::uint16_t correction = line.at<kExceptions>(excessOf(difference, coring));
        change[i] = withSign(signOf(difference), correction);
    }
}

// The corrections by look-ups between two passes.
void changesByTable(const Sums& sums, const std::uint8_t* grey, std::size_t count, std::uint16_t coring,
                    const WordTable& table, std::int16_t* __restrict change) {
    alignas(32) std::int16_t sign[kTile] = {};
    alignas(32) std::uint16_t excess[kTile] = {}, correction[kTile];
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t difference = differenceOf(grey[i], sums.above[i], sums.here[i], sums.below[i]);
        sign[i] = signOf(difference);
        excess[i] = excessOf(difference, coring);
    }
    table.lookUp(excess, correction, count);
    for (std::size_t i = 0; i < count; ++i) change[i] = withSign(sign[i], correction[i]);
}

void correctGrey(const std::int16_t* change, std::size_t count, std::uint8_t* __restrict samples) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto size = static_cast<std::uint16_t>(std::abs(change[i]));
        samples[i] = correctedGrey(samples[i], signOf(change[i]), size);
    }
}

constexpr auto kExceptionCounts = std::make_index_sequence<CorrectionLine::kMostExceptions + 1>();

template <std::size_t... kCounts>
auto* greyPass(const CorrectionLine& line, std::index_sequence<kCounts...>) {
    static constexpr decltype(&greyByLine<0>) kPasses[] = {greyByLine<kCounts>...};
    return kPasses[line.exceptionCount];
}

template <std::size_t... kCounts>
auto* changesPass(const CorrectionLine& line, std::index_sequence<kCounts...>) {
    static constexpr decltype(&changesByLine<0>) kPasses[] = {changesByLine<kCounts>...};
    return kPasses[line.exceptionCount];
}

// The difference of each word from the mean of its neighbours, within what the table has.
void differ(const Sums& sums, const std::uint16_t* grey, std::size_t count,
            std::int16_t* __restrict difference) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t d = differenceOf(grey[i], sums.above[i], sums.here[i], sums.below[i]);
        difference[i] = std::clamp<std::int16_t>(d, -kLargestDifference, kLargestDifference);
    }
}

// Words may lie above the maximum, and are held to it only where they are made brighter: each sample has a
// ceiling of its own, that of a sample that stays being the largest word.
constexpr std::uint16_t kNoCeiling = 0xFFFF;

struct WordChange {
    alignas(32) std::int16_t amount[kTile];
    alignas(32) std::uint16_t ceiling[kTile];
};

// In: the corrections of the table.
void limit(const std::int16_t* difference, std::int16_t coring, std::int16_t maximum, std::size_t count,
           WordChange& __restrict change) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t amount = std::min(change.amount[i], maximum);
        const auto room = static_cast<std::uint16_t>(maximum - amount);
        change.amount[i] = amount;
        change.ceiling[i] = difference[i] > coring ? room : kNoCeiling;
    }
}

std::uint16_t changed(std::uint16_t sample, std::int16_t amount, std::uint16_t ceiling) {
    const auto floor = static_cast<std::uint16_t>(amount < 0 ? -amount : 0);
    return static_cast<std::uint16_t>(std::min(std::max(sample, floor), ceiling) + amount);
}

void correctGrey(const WordChange& change, std::size_t count, std::uint16_t* __restrict samples) {
    for (std::size_t i = 0; i < count; ++i)
        samples[i] = changed(samples[i], change.amount[i], change.ceiling[i]);
}

void correctColor(const WordChange& change, std::size_t count, std::size_t pitch, std::uint16_t* samples) {
    alignas(32) std::uint16_t planes[3][kTile];
    readBgr(samples, pitch, planes[0], planes[1], planes[2], count);
    for (auto& plane : planes) correctGrey(change, count, plane);
    interpolation::writeBgr(samples, pitch, planes[0], planes[1], planes[2], count);
}

// Of one tile, from step to step.
template <class Sample>
struct Work;

template <>
struct Work<std::uint8_t> {
    alignas(32) std::int16_t change[kTile];
    alignas(32) std::uint8_t rise[kTile], fall[kTile];
};

template <>
struct Work<std::uint16_t> {
    alignas(32) std::int16_t difference[kTile];
    WordChange change;
};

template <class Sample, unsigned kChannels>
class Sharpener {
  public:
    Sharpener(const Image<Sample>& image, const Corrections& corrections, LineStore<Sample> lines)
        : image_(image), corrections_(corrections), lines_(lines) {}

    void run() {
        prepare(0);
        prepare(1);
        for (std::size_t y = 1; y < image_.height - 1; ++y) {
            prepare(y + 1);
            for (std::size_t x = 1; x < image_.width - 1; x += kTile) {
                sharpenTile(x, y, std::min(kTile, image_.width - 1 - x));
            }
        }
    }

  private:
    const Sample* grey(std::size_t y) const {
        if constexpr (kChannels == 1) {
            return image_.row(y);
        } else {
            return lines_.luma(y);
        }
    }

    // What later rows need to know of a row, before it changes.
    void prepare(std::size_t y) {
        if constexpr (kChannels > 1) lumaRow(image_.row(y), kChannels, image_.width, lines_.luma(y));
        sumRow(grey(y), image_.width, lines_.sums(y));
    }

    void sharpenTile(std::size_t x, std::size_t y, std::size_t count) {
        const Sums sums = {lines_.sums(y - 1) + x, lines_.sums(y) + x, lines_.sums(y + 1) + x};
        sharpenTile(sums, grey(y) + x, count, image_.row(y) + x * kChannels);
    }

    void sharpenTile(const Sums& sums, const std::uint8_t* grey, std::size_t count, std::uint8_t* samples) {
        const auto coring = static_cast<std::uint16_t>(corrections_.coring());
        const CorrectionLine* const line = corrections_.bytes().line();
        if (line == nullptr) {
            changesByTable(sums, grey, count, coring, corrections_.bytes().table(), work_.change);
        } else if constexpr (kChannels == 1) {
            const auto pass = greyPass(*line, kExceptionCounts);
            return pass(sums.above, sums.here, sums.below, samples, count, coring, *line);
        } else {
            const auto pass = changesPass(*line, kExceptionCounts);
            pass(sums.above, sums.here, sums.below, grey, count, coring, *line, work_.change);
        }
        if constexpr (kChannels == 1) {
            correctGrey(work_.change, count, samples);
        } else {
            splitColor(work_.change, count, work_.rise, work_.fall);
            shiftPixels(samples, kChannels, work_.rise, work_.fall, count);
        }
    }

    void sharpenTile(const Sums& sums, const std::uint16_t* grey, std::size_t count, std::uint16_t* samples) {
        differ(sums, grey, count, work_.difference);
        lookUp(corrections_.words(), work_.difference, work_.change.amount, count);
        limit(work_.difference, corrections_.coring(), image_.maximum, count, work_.change);
        if constexpr (kChannels == 1) {
            correctGrey(work_.change, count, samples);
        } else {
            correctColor(work_.change, count, kChannels, samples);
        }
    }

    const Image<Sample>& image_;
    const Corrections& corrections_;
    LineStore<Sample> lines_;
    Work<Sample> work_;
};

}  // namespace

template <class Sample, unsigned kChannels>
void sharpen(const Image<Sample>& image, const Corrections& corrections, LineStore<Sample> lines) {
    if (image.width < 3 || image.height < 3) return;
    Sharpener<Sample, kChannels>(image, corrections, lines).run();
}

template void sharpen<std::uint8_t, 1>(const Image<std::uint8_t>&, const Corrections&,
                                       LineStore<std::uint8_t>);
template void sharpen<std::uint8_t, 3>(const Image<std::uint8_t>&, const Corrections&,
                                       LineStore<std::uint8_t>);
template void sharpen<std::uint8_t, 4>(const Image<std::uint8_t>&, const Corrections&,
                                       LineStore<std::uint8_t>);
template void sharpen<std::uint16_t, 1>(const Image<std::uint16_t>&, const Corrections&,
                                        LineStore<std::uint16_t>);
template void sharpen<std::uint16_t, 3>(const Image<std::uint16_t>&, const Corrections&,
                                        LineStore<std::uint16_t>);
template void sharpen<std::uint16_t, 4>(const Image<std::uint16_t>&, const Corrections&,
                                        LineStore<std::uint16_t>);

}  // namespace tavra::sharpness
