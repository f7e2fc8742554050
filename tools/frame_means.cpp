#include "frame_means.h"

#include <array>
#include <optional>

#include "tavra/tavra_types.h"

namespace tavra::tool {
namespace {

struct Layout {
    std::uint32_t significantBits = 0;
    bool packed = false;
};

std::optional<Layout> layoutOf(std::uint32_t transferBits) {
    switch (transferBits) {
        case TAVRA_TRANSFER_MOSAIC_8:
        case TAVRA_TRANSFER_MONO_8: return Layout{8, true};
        case TAVRA_TRANSFER_MOSAIC_10:
        case TAVRA_TRANSFER_MONO_10: return Layout{10, false};
        case TAVRA_TRANSFER_MOSAIC_12:
        case TAVRA_TRANSFER_MONO_12: return Layout{12, false};
        case TAVRA_TRANSFER_MOSAIC_14:
        case TAVRA_TRANSFER_MONO_14: return Layout{14, false};
        case TAVRA_TRANSFER_MOSAIC_16:
        case TAVRA_TRANSFER_MONO_16: return Layout{16, false};
        case TAVRA_TRANSFER_MOSAIC_10_PACKED:
        case TAVRA_TRANSFER_MONO_10_PACKED: return Layout{10, true};
        case TAVRA_TRANSFER_MOSAIC_12_PACKED:
        case TAVRA_TRANSFER_MONO_12_PACKED: return Layout{12, true};
        default: return std::nullopt;
    }
}

// Eight bits from `bit` on, the lowest bit of the first byte first. At most two bytes hold them.
std::uint8_t eightBitsAt(const std::uint8_t* row, std::size_t bit) {
    const std::size_t byte = bit / 8, shift = bit % 8;
    const unsigned low = row[byte];
    const unsigned high = shift == 0 ? 0U : row[byte + 1];
    return static_cast<std::uint8_t>((low | high << 8) >> shift);
}

// Colours of the corner cell in the order of rows: 0 R, 1 Gr, 2 Gb, 3 B.
std::array<std::size_t, 4> cellOf(std::uint16_t baseArray) {
    switch (baseArray) {
        case TAVRA_COLOR_ARRAY_GRBG: return {1, 0, 3, 2};
        case TAVRA_COLOR_ARRAY_GBRG: return {2, 3, 0, 1};
        case TAVRA_COLOR_ARRAY_BGGR: return {3, 2, 1, 0};
        default: return {0, 1, 2, 3};
    }
}

bool isBayer(std::uint16_t colorArray) {
    return colorArray >= TAVRA_COLOR_ARRAY_RGGB && colorArray <= TAVRA_COLOR_ARRAY_BGGR;
}

bool isQuad(std::uint16_t colorArray) {
    return colorArray >= TAVRA_COLOR_ARRAY_QUAD_RGGB && colorArray <= TAVRA_COLOR_ARRAY_QUAD_BGGR;
}

}  // namespace

std::vector<std::uint8_t> reducedTo8Bits(const RawView& frame) {
    const auto layout = layoutOf(frame.transferBits);
    if (!layout) return {};
    const std::size_t storedBits = layout->packed ? layout->significantBits : 16;
    const std::size_t rowBytes = (frame.width * storedBits + 7) / 8;
    if (frame.size < rowBytes * frame.height) return {};
    std::vector<std::uint8_t> samples(std::size_t{frame.width} * frame.height);
    for (std::size_t y = 0; y < frame.height; ++y) {
        const std::uint8_t* const row = frame.data + y * rowBytes;
        for (std::size_t x = 0; x < frame.width; ++x) {
            samples[y * frame.width + x] = eightBitsAt(row, x * storedBits + layout->significantBits - 8);
        }
    }
    return samples;
}

FrameMeans meansOf(const std::vector<std::uint8_t>& samples, std::uint32_t width, std::uint32_t height,
                   std::uint16_t colorArray) {
    const bool quad = isQuad(colorArray);
    const std::size_t block = quad ? 2 : 1;  // a site of a quad mosaic is two samples wide and high
    const auto base = static_cast<std::uint16_t>(
        quad ? colorArray - TAVRA_COLOR_ARRAY_QUAD_RGGB + TAVRA_COLOR_ARRAY_RGGB : colorArray);
    const auto cell = cellOf(base);
    std::array<std::uint64_t, 4> sums{}, counts{};
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t color = cell[y / block % 2 * 2 + x / block % 2];
            sums[color] += samples[y * width + x];
            ++counts[color];
        }
    }
    const auto mean = [](std::uint64_t sum, std::uint64_t count) {
        return count == 0 ? 0.0 : static_cast<double>(sum) / static_cast<double>(count);
    };
    FrameMeans means;
    means.color = quad || isBayer(colorArray);
    if (!means.color) {
        means.y = mean(sums[0] + sums[1] + sums[2] + sums[3], std::uint64_t{width} * height);
        return means;
    }
    means.r = mean(sums[0], counts[0]);
    means.gr = mean(sums[1], counts[1]);
    means.gb = mean(sums[2], counts[2]);
    means.b = mean(sums[3], counts[3]);
    means.y = 0.299 * means.r + 0.587 * (means.gr + means.gb) / 2 + 0.114 * means.b;
    return means;
}

}  // namespace tavra::tool
