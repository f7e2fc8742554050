#include "stages/sharpness/kernel.h"

#include <algorithm>

#include "stages/bgr_reader.h"
#include "stages/interpolation/bgr_writer.h"
#include "stages/luma_tables.h"
#include "stages/table_lookup.h"

namespace tavra::sharpness {
namespace {

// Columns that are worked on at a time: what lies between two steps stays in the first-level cache.
constexpr std::size_t kTile = 256;

void sumRow(const std::uint16_t* __restrict grey, std::size_t width, std::uint16_t* __restrict sums) {
    for (std::size_t x = 1; x < width - 1; ++x) {
        sums[x] = static_cast<std::uint16_t>(grey[x - 1] + grey[x] + grey[x + 1]);
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

// A value less the mean of its eight neighbours, rounded.
std::int16_t differenceOf(std::uint16_t value, std::uint16_t above, std::uint16_t here, std::uint16_t below) {
    const auto neighbours = static_cast<std::uint16_t>(above + here + below - value + 4);
    return static_cast<std::int16_t>(value - (neighbours >> 3));
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
struct Work {
    alignas(32) std::int16_t difference[kTile];
    WordChange change;
};

template <unsigned kChannels>
class Sharpener {
  public:
    Sharpener(const Image<std::uint16_t>& image, const Corrections& corrections,
              LineStore<std::uint16_t> lines)
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
    const std::uint16_t* grey(std::size_t y) const {
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

    const Image<std::uint16_t>& image_;
    const Corrections& corrections_;
    LineStore<std::uint16_t> lines_;
    Work work_;
};

}  // namespace

template <unsigned kChannels>
void sharpen(const Image<std::uint16_t>& image, const Corrections& corrections,
             LineStore<std::uint16_t> lines) {
    if (image.width < 3 || image.height < 3) return;
    Sharpener<kChannels>(image, corrections, lines).run();
}

template void sharpen<1>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);
template void sharpen<3>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);
template void sharpen<4>(const Image<std::uint16_t>&, const Corrections&, LineStore<std::uint16_t>);

}  // namespace tavra::sharpness
