// Packed YCbCr to BGR and to grey.
#include <algorithm>
#include <array>

#include "stages/interpolation/bgr_writer.h"
#include "stages/interpolation/kernels.h"
#include "stages/interpolation/tiles.h"

namespace tavra::interpolation {
namespace {

constexpr int kFractionBits = 22;
constexpr std::int32_t kWhite = 255 << kFractionBits;

constexpr std::int32_t toFixed(double value) {
    const double scaled = value * (1 << kFractionBits);
    return static_cast<std::int32_t>(scaled < 0 ? scaled - 0.5 : scaled + 0.5);
}

// The products of the conversion by byte value. A channel is the sum of its products, clamped, without
// its fraction.
struct Products {
    std::array<std::int32_t, 256> luma{}, crToRed{}, cbToGreen{}, crToGreen{}, cbToBlue{};
};

// BT.601 (ITU-R BT.601-7, 2.5), full range, as JFIF writes it.
constexpr Products fullRange() {
    Products table;
    for (int i = 0; i < 256; ++i) {
        const int chroma = i - 128;
        table.luma[i] = toFixed(i);
        table.crToRed[i] = toFixed(1.402 * chroma);
        table.cbToGreen[i] = toFixed(-0.34414 * chroma);
        table.crToGreen[i] = toFixed(-0.71414 * chroma);
        table.cbToBlue[i] = toFixed(1.772 * chroma);
    }
    return table;
}

// BT.709 (ITU-R BT.709-6, 3), limited range: luma 16 to 235, chroma 16 to 240.
constexpr Products limitedRange() {
    Products table;
    for (int i = 0; i < 256; ++i) {
        const int chroma = std::clamp(i, 16, 240) - 128;
        // By design: the table ends at 254.9992, so grey white is 254 once the fraction is cut.
        table.luma[i] = toFixed(std::min(1.16438 * (std::clamp(i, 16, 235) - 16), 254.9992));
        table.crToRed[i] = toFixed(1.79274 * chroma);
        table.cbToGreen[i] = toFixed(-0.21325 * chroma);
        table.crToGreen[i] = toFixed(-0.53291 * chroma);
        table.cbToBlue[i] = toFixed(2.1124 * chroma);
    }
    return table;
}

constexpr Products kFullRange = fullRange();
constexpr Products kLimitedRange = limitedRange();

const Products& productsOf(std::uint16_t colorArray) {
    return colorArray <= 8 ? kFullRange : kLimitedRange;
}

// How a group of pixels lies in a row: where its Y samples are, and its Cb and Cr.
struct Layout {
    std::size_t pixels, samples;
    std::array<std::uint8_t, 4> luma;
    std::uint8_t cb, cr;
};

constexpr Layout k422 = {2, 4, {0, 2}, 1, 3};
constexpr Layout k444 = {1, 3, {0}, 1, 2};
constexpr Layout k411 = {4, 6, {0, 1, 3, 4}, 2, 5};

constexpr const Layout& layoutOf(std::uint16_t colorArray) {
    switch (colorArray) {
        case 6:
        case 9: return k422;
        case 7:
        case 10: return k444;
        default: return k411;
    }
}

// A table's index: samples are bytes, and a larger word counts as 255.
inline std::uint8_t index(std::uint8_t sample) {
    return sample;
}
inline std::uint8_t index(std::uint16_t sample) {
    return static_cast<std::uint8_t>(std::min<unsigned>(sample, 255));
}

// The sums of a tile's pixels, not yet clamped.
struct Sums {
    alignas(32) std::int32_t blue[kTile], green[kTile], red[kTile];
};

// What the Cb and the Cr of a group add to each of its pixels.
struct ChromaSums {
    std::int32_t blue, green, red;
};

inline ChromaSums chromaSums(const Products& table, std::uint8_t cb, std::uint8_t cr) {
    return {table.cbToBlue[cb], table.cbToGreen[cb] + table.crToGreen[cr], table.crToRed[cr]};
}

template <class Sample>
void sumPixel(const Products& table, Sample luma, const ChromaSums& chroma, std::size_t i, Sums& out) {
    const std::int32_t sum = table.luma[index(luma)];
    out.blue[i] = sum + chroma.blue;
    out.green[i] = sum + chroma.green;
    out.red[i] = sum + chroma.red;
}

// The last group of a row whose width is no multiple of the group. A Cb or Cr that is cut off is that of the
// group before; without one there is no colour.
template <Layout kLayout, class Sample>
void sumCutGroup(const Sample* row, std::size_t rowSamples, std::size_t group, std::size_t pixels,
                 const Products& table, std::size_t i, Sums& out) {
    const auto chromaAt = [&](std::size_t offset) -> std::uint8_t {
        if (group + offset < rowSamples) return index(row[group + offset]);
        return group >= kLayout.samples ? index(row[group - kLayout.samples + offset]) : std::uint8_t{128};
    };
    const ChromaSums chroma = chromaSums(table, chromaAt(kLayout.cb), chromaAt(kLayout.cr));
    for (std::size_t k = 0; k < pixels; ++k)
        sumPixel(table, row[group + kLayout.luma[k]], chroma, i + k, out);
}

template <Layout kLayout, class Sample>
void sumTile(const Sample* row, std::size_t rowSamples, std::size_t x, std::size_t count,
             const Products& table, Sums& out) {
    std::size_t group = x / kLayout.pixels * kLayout.samples;
    std::size_t i = 0;
    for (; i + kLayout.pixels <= count; i += kLayout.pixels, group += kLayout.samples) {
        const ChromaSums chroma =
            chromaSums(table, index(row[group + kLayout.cb]), index(row[group + kLayout.cr]));
        for (std::size_t k = 0; k < kLayout.pixels; ++k) {
            sumPixel(table, row[group + kLayout.luma[k]], chroma, i + k, out);
        }
    }
    if (i < count) sumCutGroup<kLayout>(row, rowSamples, group, count - i, table, i, out);
}

template <class Sample>
void clampSums(const std::int32_t* sums, Sample* __restrict channel) {
    for (std::ptrdiff_t i = 0; i < kTile; ++i) {
        channel[i] = static_cast<Sample>(std::clamp(sums[i], std::int32_t{0}, kWhite) >> kFractionBits);
    }
}

template <Layout kLayout, class Sample>
void convert(const Frame<Sample>& frame, const Image<Sample>& image) {
    const Products& table = productsOf(frame.colorArray);
    const std::size_t rowSamples = ycbcrRowSamples(frame.colorArray, frame.width);
    Sums sums = {};
    alignas(32) Sample blue[kTile], green[kTile], red[kTile];
    for (std::size_t y = 0; y < frame.height; ++y) {
        for (std::size_t x = 0; x < frame.width; x += kTile) {
            const std::size_t count = std::min<std::size_t>(kTile, frame.width - x);
            sumTile<kLayout>(frame.row(y), rowSamples, x, count, table, sums);
            clampSums(sums.blue, blue);
            clampSums(sums.green, green);
            clampSums(sums.red, red);
            writeBgr(image.row(y) + x * image.pitch, image.pitch, blue, green, red, count);
        }
    }
}

}  // namespace

std::size_t ycbcrRowSamples(std::uint16_t colorArray, std::size_t width) {
    const Layout& layout = layoutOf(colorArray);
    return width * layout.samples / layout.pixels;
}

template <class Sample>
void ycbcrToBgr(const Frame<Sample>& frame, const Image<Sample>& image) {
    switch (frame.colorArray) {
        case 6:
        case 9: convert<k422>(frame, image); break;
        case 7:
        case 10: convert<k444>(frame, image); break;
        default: convert<k411>(frame, image); break;
    }
}

template <class Sample>
void ycbcrToGrey(const Frame<Sample>& frame, const Image<Sample>& image) {
    const Layout& layout = layoutOf(frame.colorArray);
    const Products& table = productsOf(frame.colorArray);
    for (std::size_t y = 0; y < frame.height; ++y) {
        const Sample* const row = frame.row(y);
        Sample* const grey = image.row(y);
        for (std::size_t x = 0; x < frame.width; ++x) {
            const std::size_t at = x / layout.pixels * layout.samples + layout.luma[x % layout.pixels];
            grey[x] = static_cast<Sample>(table.luma[index(row[at])] >> kFractionBits);
        }
    }
}

template void ycbcrToBgr(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void ycbcrToBgr(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);
template void ycbcrToGrey(const Frame<std::uint8_t>&, const Image<std::uint8_t>&);
template void ycbcrToGrey(const Frame<std::uint16_t>&, const Image<std::uint16_t>&);

}  // namespace tavra::interpolation
