#include "platform/linux/pixel_paint.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/linux/small_font.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kWhite = 0xFFFFFF;

void store(std::uint8_t* pixel, std::uint32_t pixelBytes, const std::uint8_t* bgr) {
    if (pixelBytes == 1) {
        pixel[0] = bgr[0];
        return;
    }
    std::memcpy(pixel, bgr, 3);
    if (pixelBytes == 4) pixel[3] = 0;
}

// The channels of a bitmap's pixels.
class Source {
  public:
    explicit Source(const Bitmap& bitmap)
        : pixels_(bitmap.pixels()), shape_(bitmap.shape()), bytes_(shape_.bitCount / 8) {}

    bool contains(std::int64_t x, std::int64_t y) const {
        return pixels_ != nullptr && x >= 0 && y >= 0 && x < shape_.width && y < shape_.height;
    }
    std::array<std::uint8_t, 3> at(std::int64_t x, std::int64_t y) const {
        const std::uint8_t* const pixel =
            pixels_ + static_cast<std::size_t>(y) * shape_.stride() + static_cast<std::size_t>(x) * bytes_;
        if (bytes_ == 1) return {pixel[0], pixel[0], pixel[0]};
        return {pixel[0], pixel[1], pixel[2]};
    }

  private:
    const std::uint8_t* pixels_;
    BitmapShape shape_;
    std::uint32_t bytes_;
};

// The source pixel under the middle of a destination pixel, on one axis.
std::int64_t nearest(std::int64_t index, std::int64_t source, std::int64_t destination) {
    return (2 * index + 1) * source / (2 * destination);
}

// The weights of source pixels along one axis: of those that a destination pixel covers, or, where it covers
// less than one, of the two whose middles are around its own. They add up to kUnit.
struct Weights {
    static constexpr std::uint32_t kUnit = 256;

    std::int64_t first = 0;
    std::int64_t last = 0;
    std::uint32_t lastWeight = 0;  // of two pixels, that of the second
    bool mean = false;             // of all from first to last
};

Weights weightsFor(std::int64_t index, std::int64_t source, std::int64_t destination) {
    Weights weights;
    if (source > destination) {
        weights.mean = true;
        weights.first = index * source / destination;
        weights.last = std::max(weights.first, ((index + 1) * source - 1) / destination);
        return weights;
    }
    // The middle of the pixel in the source, less half a pixel, in units of 1 / kUnit.
    const std::int64_t place =
        (2 * index + 1) * source * Weights::kUnit / (2 * destination) - std::int64_t{Weights::kUnit} / 2;
    const std::int64_t held = std::clamp<std::int64_t>(place, 0, (source - 1) * Weights::kUnit);
    weights.first = held / Weights::kUnit;
    weights.lastWeight = static_cast<std::uint32_t>(held % Weights::kUnit);
    weights.last = weights.first + (weights.lastWeight != 0 ? 1 : 0);
    return weights;
}

std::array<std::uint8_t, 3> mixed(const Source& source, const Rectangle& part, const Weights& x,
                                  const Weights& y) {
    std::array<std::uint64_t, 3> sums{};
    std::uint64_t total = 0;
    for (std::int64_t row = y.first; row <= y.last; ++row) {
        const std::uint64_t rowWeight = y.mean || y.first == y.last ? Weights::kUnit
                                        : row == y.last             ? y.lastWeight
                                                                    : Weights::kUnit - y.lastWeight;
        for (std::int64_t column = x.first; column <= x.last; ++column) {
            if (!source.contains(part.left + column, part.top + row)) continue;
            const std::uint64_t weight = rowWeight * (x.mean || x.first == x.last ? Weights::kUnit
                                                      : column == x.last          ? x.lastWeight
                                                                         : Weights::kUnit - x.lastWeight);
            const auto bgr = source.at(part.left + column, part.top + row);
            for (std::size_t c = 0; c < 3; ++c) sums[c] += weight * bgr[c];
            total += weight;
        }
    }
    std::array<std::uint8_t, 3> result{};
    if (total == 0) return result;
    for (std::size_t c = 0; c < 3; ++c) {
        result[c] = static_cast<std::uint8_t>((sums[c] + total / 2) / total);
    }
    return result;
}

}  // namespace

Rectangle PixelPaint::inside(const Rectangle& r) const {
    return {
        std::max(r.left, area_.left), std::max(r.top, area_.top),
        static_cast<std::int32_t>(std::min<std::int64_t>(r.right, std::int64_t{area_.left} + area_.width)),
        static_cast<std::int32_t>(std::min<std::int64_t>(r.bottom, std::int64_t{area_.top} + area_.height))};
}

std::uint8_t* PixelPaint::pixel(std::int64_t x, std::int64_t y) const {
    return area_.pixels + static_cast<std::size_t>(y - area_.top) * area_.stride +
           static_cast<std::size_t>(x - area_.left) * area_.pixelBytes;
}

Status PixelPaint::copy(const Rectangle& destination, const Bitmap& bitmap, std::int32_t sourceX,
                        std::int32_t sourceY) {
    const Source source(bitmap);
    const Rectangle drawn = inside(destination);
    for (std::int64_t y = drawn.top; y < drawn.bottom; ++y) {
        const std::int64_t fromY = y - destination.top + sourceY;
        for (std::int64_t x = drawn.left; x < drawn.right; ++x) {
            const std::int64_t fromX = x - destination.left + sourceX;
            if (source.contains(fromX, fromY)) {
                store(pixel(x, y), area_.pixelBytes, source.at(fromX, fromY).data());
            }
        }
    }
    return Status();
}

Status PixelPaint::stretch(const Rectangle& destination, const Bitmap& bitmap, const Rectangle& part,
                           StretchQuality quality) {
    const Source source(bitmap);
    const Rectangle drawn = inside(destination);
    for (std::int64_t y = drawn.top; y < drawn.bottom; ++y) {
        const std::int64_t row = y - destination.top;
        const std::int64_t fromY = part.top + nearest(row, part.height(), destination.height());
        const Weights down = weightsFor(row, part.height(), destination.height());
        for (std::int64_t x = drawn.left; x < drawn.right; ++x) {
            const std::int64_t column = x - destination.left;
            const std::int64_t fromX = part.left + nearest(column, part.width(), destination.width());
            if (!source.contains(fromX, fromY)) continue;
            const auto bgr =
                quality == StretchQuality::Nearest
                    ? source.at(fromX, fromY)
                    : mixed(source, part, weightsFor(column, part.width(), destination.width()), down);
            store(pixel(x, y), area_.pixelBytes, bgr.data());
        }
    }
    return Status();
}

void PixelPaint::fill(const Rectangle& rectangle, std::uint32_t color) {
    const std::uint8_t bgr[3] = {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
                                 static_cast<std::uint8_t>(color >> 16)};
    const Rectangle drawn = inside(rectangle);
    for (std::int64_t y = drawn.top; y < drawn.bottom; ++y) {
        for (std::int64_t x = drawn.left; x < drawn.right; ++x) store(pixel(x, y), area_.pixelBytes, bgr);
    }
}

Status PixelPaint::fillBlack(const Rectangle& rectangle) {
    fill(rectangle, kBlack);
    return Status();
}

Status PixelPaint::text(std::int32_t x, std::int32_t y, std::string_view line) {
    const auto at = [](std::int64_t value) {
        return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
    };
    std::int64_t left = x;
    for (const char character : line) {
        fill({at(left), y, at(left + kCellWidth), at(std::int64_t{y} + kCellHeight)}, kWhite);
        const Glyph& glyph = glyphOf(character);
        for (std::int64_t row = 0; row < 2 * static_cast<std::int64_t>(glyph.size()); ++row) {
            for (std::int64_t column = 0; column < kGlyphColumns; ++column) {
                if ((glyph[static_cast<std::size_t>(row / 2)] >> (kGlyphColumns - 1 - column) & 1) == 0)
                    continue;
                const std::int64_t px = left + 1 + column, py = y + 1 + row;
                fill({at(px), at(py), at(px + 1), at(py + 1)}, kBlack);
            }
        }
        left += kCellWidth;
    }
    return Status();
}

std::int32_t PixelPaint::textHeight() {
    return kCellHeight;
}

Status PixelPaint::line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) {
    const auto behind = [](std::int32_t value) { return value == INT32_MAX ? value : value + 1; };
    fill({std::min(fromX, toX), std::min(fromY, toY), behind(std::max(fromX, toX)),
          behind(std::max(fromY, toY))},
         kBlack);
    return Status();
}

}  // namespace tavra::platform
