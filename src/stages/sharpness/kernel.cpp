#include "stages/sharpness/kernel.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "stages/luma_tables.h"

namespace tavra::sharpness {
namespace {

// Columns that are worked on at a time: what lies between two steps stays in the first-level cache.
constexpr std::size_t kTile = 128;

template <class Sample>
void sumRow(const Sample* __restrict grey, std::size_t width, std::uint16_t* __restrict sums) {
    for (std::size_t x = 1; x < width - 1; ++x) {
        sums[x] = static_cast<std::uint16_t>(grey[x - 1] + grey[x] + grey[x + 1]);
    }
}

template <unsigned kChannels>
void lumaRow(const std::uint16_t* __restrict row, std::size_t width, std::uint16_t* __restrict luma) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::uint16_t* const pixel = row + x * kChannels;
        luma[x] = lumaOf(pixel[0], pixel[1], pixel[2]);
    }
}

// The weights of B, G and R in 1/65536, over and over. For bytes, sample * weight, rounded half up, is what
// the luminance tables have.
template <unsigned kChannels>
class ByteWeights {
  public:
    constexpr ByteWeights() {
        constexpr std::uint16_t kWeights[] = {7472, 38470, 19595, 0};
        for (std::size_t i = 0; i < kTile * kChannels; ++i) weights_[i] = kWeights[i % kChannels];
    }
    constexpr const std::uint16_t* data() const { return weights_; }

  private:
    alignas(32) std::uint16_t weights_[kTile * kChannels] = {};
};

template <unsigned kChannels>
constexpr ByteWeights<kChannels> kByteWeights{};

// Sample by sample, which vectorises: the parts that the channels have in the luminance, then the sum of each
// part with the two that follow. Of the sums, those that begin with a pixel's first channel are wanted.
template <unsigned kChannels>
void lumaTile(const std::uint8_t* __restrict samples, std::size_t pixels, std::uint8_t* __restrict luma) {
    const std::uint16_t* const weights = kByteWeights<kChannels>.data();
    const std::size_t count = pixels * kChannels;
    alignas(32) std::uint8_t parts[kTile * kChannels];
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t sample = samples[i];
        const auto high = static_cast<std::uint16_t>((std::uint32_t{sample} * weights[i]) >> 16);
        const auto low = static_cast<std::uint16_t>(sample * weights[i]);
        parts[i] = static_cast<std::uint8_t>(high + (low >> 15));
    }
    for (std::size_t i = 0; i + 2 < count; ++i) {
        parts[i] = static_cast<std::uint8_t>(parts[i] + parts[i + 1] + parts[i + 2]);
    }
    for (std::size_t i = 0; i < pixels; ++i) luma[i] = parts[i * kChannels];
}

template <unsigned kChannels>
void lumaRow(const std::uint8_t* row, std::size_t width, std::uint8_t* luma) {
    for (std::size_t x = 0; x < width; x += kTile) {
        lumaTile<kChannels>(row + x * kChannels, std::min(kTile, width - x), luma + x);
    }
}

// The difference of each value from the mean of its eight neighbours, within what the tables have.
template <class Sample>
void differences(const std::uint16_t* __restrict above, const std::uint16_t* __restrict here,
                 const std::uint16_t* __restrict below, const Sample* __restrict grey, std::size_t count,
                 std::int16_t* __restrict difference) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto neighbours = static_cast<std::uint16_t>(above[i] + here[i] + below[i] - grey[i] + 4);
        const auto d = static_cast<std::int16_t>(grey[i] - (neighbours >> 3));
        difference[i] = std::clamp<std::int16_t>(d, -kLargestDifference, kLargestDifference);
    }
}

// One number for a pixel to those of its samples that change.
template <unsigned kChannels, class Number>
void spread(Number value, std::size_t i, Number* samples) {
    for (unsigned channel = 0; channel < std::min(kChannels, 3u); ++channel) {
        samples[i * kChannels + channel] = value;
    }
}

void lookUp(const std::int16_t* __restrict difference, const std::int16_t* __restrict table,
            std::size_t count, std::int16_t* __restrict amount) {
    for (std::size_t i = 0; i < count; ++i) amount[i] = table[difference[i]];
}

// Of three samples a pixel, the fourth amount is overwritten by the next pixel's first; the last one's lies
// behind the tile.
template <unsigned kChannels>
void lookUp(const std::int16_t* __restrict difference, const PixelCorrection* __restrict table,
            std::size_t count, std::int16_t* __restrict amount) {
    for (std::size_t i = 0; i < count; ++i) {
        std::memcpy(amount + i * kChannels, &table[difference[i]], sizeof(PixelCorrection));
    }
}

// Bytes never lie above the maximum, so that one limit does for all of them.
void add(std::uint8_t* __restrict samples, std::size_t count, const std::int16_t* __restrict amount,
         std::int16_t maximum) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto changed = static_cast<std::int16_t>(samples[i] + amount[i]);
        samples[i] = static_cast<std::uint8_t>(std::clamp<std::int16_t>(changed, 0, maximum));
    }
}

// Words may lie above the maximum, and are held to it only where they are made brighter: each sample has a
// ceiling of its own, that of a sample that stays being the largest word.
constexpr std::uint16_t kNoCeiling = 0xFFFF;

// Amounts and ceilings of a tile of words.
template <unsigned kChannels>
void lookUpWords(const std::int16_t* __restrict difference, const Corrections& corrections,
                 std::int16_t maximum, std::size_t count, std::int16_t* __restrict amount,
                 std::uint16_t* __restrict ceiling) {
    const std::int16_t* const table = corrections.words();
    const std::int16_t coring = corrections.coring();
    for (std::size_t i = 0; i < count; ++i) {
        const std::int16_t value = std::min(table[difference[i]], maximum);
        const auto room = static_cast<std::uint16_t>(maximum - value);
        spread<kChannels>(value, i, amount);
        spread<kChannels>(difference[i] > coring ? room : kNoCeiling, i, ceiling);
    }
}

void addWords(std::uint16_t* __restrict samples, std::size_t count, const std::int16_t* __restrict amount,
              const std::uint16_t* __restrict ceiling) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto floor = static_cast<std::uint16_t>(amount[i] < 0 ? -amount[i] : 0);
        const std::uint16_t held = std::min(std::max(samples[i], floor), ceiling[i]);
        samples[i] = static_cast<std::uint16_t>(held + amount[i]);
    }
}

template <class Sample, unsigned kChannels>
class Sharpener {
  public:
    Sharpener(const Image<Sample>& image, const Corrections& corrections, LineStore<Sample> lines)
        : image_(image), corrections_(corrections), lines_(lines) {
        std::fill(std::begin(ceiling_), std::end(ceiling_), kNoCeiling);
    }

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
        if constexpr (kChannels > 1) {
            lumaRow<kChannels>(image_.row(y), image_.width, lines_.luma(y));
        }
        sumRow(grey(y), image_.width, lines_.sums(y));
    }

    void sharpenTile(std::size_t x, std::size_t y, std::size_t count) {
        alignas(32) std::int16_t difference[kTile];
        differences(lines_.sums(y - 1) + x, lines_.sums(y) + x, lines_.sums(y + 1) + x, grey(y) + x, count,
                    difference);
        Sample* const samples = image_.row(y) + x * kChannels;
        if constexpr (sizeof(Sample) == 1) {
            if constexpr (kChannels == 1) {
                lookUp(difference, corrections_.greyBytes(), count, amount_);
            } else {
                lookUp<kChannels>(difference, corrections_.colorBytes(), count, amount_);
            }
            add(samples, count * kChannels, amount_, image_.maximum);
        } else {
            lookUpWords<kChannels>(difference, corrections_, image_.maximum, count, amount_, ceiling_);
            addWords(samples, count * kChannels, amount_, ceiling_);
        }
    }

    const Image<Sample>& image_;
    const Corrections& corrections_;
    LineStore<Sample> lines_;
    // For each sample of a tile. A fourth one keeps what it has from the start: nothing, and no ceiling.
    alignas(32) std::int16_t amount_[kTile * kChannels + 1] = {};
    alignas(32) std::uint16_t ceiling_[kTile * kChannels];
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
