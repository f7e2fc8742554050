#include "platform/linux/software_surface.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace tavra::platform {
namespace {

std::uint32_t load16(const std::uint8_t* pixel) {
    std::uint16_t value = 0;
    std::memcpy(&value, pixel, sizeof value);
    return value;
}

std::uint32_t load32(const std::uint8_t* pixel) {
    std::uint32_t value = 0;
    std::memcpy(&value, pixel, sizeof value);
    return value;
}

void store16(std::uint8_t* pixel, std::uint32_t color) {
    const auto value = static_cast<std::uint16_t>(color);
    std::memcpy(pixel, &value, sizeof value);
}

void store32(std::uint8_t* pixel, std::uint32_t color) {
    std::memcpy(pixel, &color, sizeof color);
}

// The high bits of a channel stand for its low ones, so that full stays full.
std::uint32_t colorOf565(std::uint32_t pixel) {
    const std::uint32_t red = pixel >> 11, green = pixel >> 5 & 63, blue = pixel & 31;
    return (red << 3 | red >> 2) << 16 | (green << 2 | green >> 4) << 8 | (blue << 3 | blue >> 2);
}

std::uint32_t to565(std::uint32_t color) {
    return (color >> 8 & 0xF800) | (color >> 5 & 0x7E0) | (color >> 3 & 0x1F);
}

// ITU-R BT.601, studio range, in 16 bits of fraction.
std::uint32_t colorOfYuv(std::int32_t y, std::int32_t u, std::int32_t v) {
    const std::int32_t luma = 76309 * (y - 16) + 32768;
    const auto channel = [](std::int32_t value) {
        return static_cast<std::uint32_t>(std::clamp(value >> 16, 0, 255));
    };
    return channel(luma + 104597 * (v - 128)) << 16 |
           channel(luma - 25675 * (u - 128) - 53279 * (v - 128)) << 8 | channel(luma + 132201 * (u - 128));
}

// The source pixel under the middle of a pixel.
std::size_t nearest(std::int64_t index, std::int64_t source, std::int64_t destination) {
    return static_cast<std::size_t>((2 * index + 1) * source / (2 * destination));
}

}  // namespace

// What an application draws with: a picture of 32 bits that becomes the surface's at the end.
class SoftwareSurface::Context {
  public:
    explicit Context(const Size& size) {
        if (picture_.create({size.width, size.height, 32}).ok()) drawing_.emplace(picture_);
    }

    bool hasPicture() const { return drawing_.has_value(); }
    TavraDC dc() { return drawing_ ? drawing_->dc() : nullptr; }
    std::uint8_t* row(std::size_t y) { return picture_.pixels() + y * picture_.shape().stride(); }
    void end() { drawing_.reset(); }

  private:
    Bitmap picture_;
    std::optional<MemoryContext> drawing_;
};

Status SoftwareSurface::make(const SurfaceDescription& description, std::shared_ptr<ISurface>& surface) {
    if (description.size.width == 0 || description.size.height == 0) return Status(kSurfaceInvalidRectangle);
    auto made = std::shared_ptr<SoftwareSurface>(new (std::nothrow) SoftwareSurface(description));
    if (made == nullptr || made->pixels_ == nullptr) return Status(kSurfaceOutOfMemory);
    surface = std::move(made);
    return Status();
}

SoftwareSurface::SoftwareSurface(const SurfaceDescription& description)
    : description_(description),
      pixelBytes_(description.format.bits / 8),
      pitch_(paddedStride(description.size.width, description.format.bits / 8)),
      pixels_(static_cast<std::uint8_t*>(std::calloc(description.size.height, pitch_))) {}

SoftwareSurface::~SoftwareSurface() = default;

Status SoftwareSurface::format(SurfaceFormat& format) {
    format = description_.format;
    return Status();
}

// Copying.

Status SoftwareSurface::blit(const Rectangle& destination, ISurface& other, const Rectangle& source) {
    const auto& from = static_cast<const SoftwareSurface&>(other);
    if (locked_ || from.locked_ || context_ || from.context_) return Status(kSurfaceBusy);
    if (destination.empty() || !from.holds(source) || (!clipped_ && !holds(destination))) {
        return Status(kSurfaceInvalidRectangle);
    }
    const std::int64_t left = std::max(destination.left, 0), top = std::max(destination.top, 0);
    const std::int64_t right = std::min<std::int64_t>(destination.right, size().width);
    const std::int64_t bottom = std::min<std::int64_t>(destination.bottom, size().height);
    if (left >= right || top >= bottom) return Status();
    untouched_ = false;
    columns_.resize(static_cast<std::size_t>(right - left));
    for (std::int64_t x = left; x < right; ++x) {
        columns_[static_cast<std::size_t>(x - left)] =
            static_cast<std::size_t>(source.left) +
            nearest(x - destination.left, source.width(), destination.width());
    }
    for (std::int64_t y = top; y < bottom; ++y) {
        const auto fromY =
            static_cast<std::int64_t>(nearest(y - destination.top, source.height(), destination.height()));
        copyRow(from, source.top + fromY, row(y) + static_cast<std::size_t>(left) * pixelBytes_,
                columns_.size());
    }
    return Status();
}

// The pixels in columns_ of a row.
void SoftwareSurface::copyRow(const SoftwareSurface& from, std::int64_t fromY, std::uint8_t* to,
                              std::size_t columns) const {
    const bool dense = columns_[columns - 1] - columns_[0] == columns - 1;
    if (from.description_.format == description_.format) {
        const std::uint8_t* const pixels = from.row(fromY);
        if (dense) {
            std::memcpy(to, pixels + columns_[0] * pixelBytes_, columns * pixelBytes_);
        } else if (pixelBytes_ == 2) {
            for (std::size_t i = 0; i < columns; ++i) store16(to + i * 2, load16(pixels + columns_[i] * 2));
        } else {
            for (std::size_t i = 0; i < columns; ++i) store32(to + i * 4, load32(pixels + columns_[i] * 4));
        }
        return;
    }
    for (std::size_t i = 0; i < columns; ++i) {
        const std::uint32_t color = from.colorAt(static_cast<std::int64_t>(columns_[i]), fromY);
        if (pixelBytes_ == 2) {
            store16(to + i * 2, to565(color));
        } else {
            store32(to + i * 4, color);
        }
    }
}

Status SoftwareSurface::blitKeyed(std::int32_t x, std::int32_t y, ISurface& other, const Rectangle& source) {
    const auto& from = static_cast<const SoftwareSurface&>(other);
    if (locked_ || from.locked_ || context_ || from.context_) return Status(kSurfaceBusy);
    if (from.description_.format != description_.format) return Status(kSurfaceInvalidFormat);
    const std::int64_t width = source.width(), height = source.height();
    if (!from.holds(source) || x < 0 || y < 0 || x + width > size().width || y + height > size().height) {
        return Status(kSurfaceInvalidRectangle);
    }
    untouched_ = false;
    for (std::int64_t line = 0; line < height; ++line) {
        const std::uint8_t* drawn =
            from.row(source.top + line) + static_cast<std::size_t>(source.left) * pixelBytes_;
        std::uint8_t* to = row(y + line) + static_cast<std::size_t>(x) * pixelBytes_;
        if (pixelBytes_ == 2) {
            for (std::int64_t i = 0; i < width; ++i, drawn += 2, to += 2) {
                store16(to, load16(drawn) == from.key_ ? load16(to) : load16(drawn));
            }
        } else {
            for (std::int64_t i = 0; i < width; ++i, drawn += 4, to += 4) {
                store32(to, load32(drawn) == from.key_ ? load32(to) : load32(drawn));
            }
        }
    }
    return Status();
}

Status SoftwareSurface::fill(const Rectangle* destination, std::uint32_t color) {
    if (locked_ || context_) return Status(kSurfaceBusy);
    Rectangle filled = destination != nullptr ? *destination : whole();
    if (filled.empty() || (!clipped_ && !holds(filled))) return Status(kSurfaceInvalidRectangle);
    if (untouched_ && color == 0) return Status();
    untouched_ = false;
    filled = {std::max(filled.left, 0), std::max(filled.top, 0), std::min(filled.right, whole().right),
              std::min(filled.bottom, whole().bottom)};
    for (std::int64_t y = filled.top; y < filled.bottom; ++y) {
        std::uint8_t* to = row(y) + static_cast<std::size_t>(filled.left) * pixelBytes_;
        for (std::int64_t x = filled.left; x < filled.right; ++x, to += pixelBytes_) {
            std::memcpy(to, &color, pixelBytes_);
        }
    }
    return Status();
}

// Memory for the image and for what is drawn.

Status SoftwareSurface::lockForWriting(LockedSurface& locked) {
    if (locked_ || context_) return Status(kSurfaceBusy);
    locked_ = true;
    untouched_ = false;
    locked = {pixels_.get(), pitch_};
    return Status();
}

Status SoftwareSurface::unlock() {
    locked_ = false;
    return Status();
}

Status SoftwareSurface::getDC(TavraDC& dc) {
    if (context_) return Status(kSurfaceContextOut);
    if (locked_) return Status(kSurfaceBusy);
    auto context = std::make_unique<Context>(size());
    if (!context->hasPicture()) return Status(kSurfaceOutOfMemory);
    for (std::uint32_t y = 0; y < size().height; ++y) {
        std::uint8_t* const to = context->row(y);
        for (std::uint32_t x = 0; x < size().width; ++x) store32(to + x * std::size_t{4}, colorAt(x, y));
    }
    dc = context->dc();
    if (dc == nullptr) return Status(kSurfaceNoContext);
    context_ = std::move(context);
    return Status();
}

Status SoftwareSurface::releaseDC(TavraDC) {
    if (!context_) return Status(kSurfaceNoContext);
    context_->end();
    untouched_ = false;
    for (std::uint32_t y = 0; y < size().height; ++y) {
        const std::uint8_t* drawn = context_->row(y);
        std::uint8_t* to = row(y);
        for (std::uint32_t x = 0; x < size().width; ++x, drawn += 4, to += pixelBytes_) {
            const std::uint32_t color = load32(drawn) & 0xFFFFFF;
            if (pixelBytes_ == 2) {
                store16(to, to565(color));
            } else {
                store32(to, color);
            }
        }
    }
    context_.reset();
    return Status();
}

Status SoftwareSurface::readFirstPixel(std::uint32_t& color) {
    if (locked_ || context_) return Status(kSurfaceBusy);
    const std::uint32_t rgb = colorAt(0, 0);
    color = (rgb & 0xFF) << 16 | (rgb & 0xFF00) | rgb >> 16;
    return Status();
}

Status SoftwareSurface::paintSolid(std::uint32_t color) {
    const std::uint32_t rgb = (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
    return fill(nullptr, pixelBytes_ == 2 ? to565(rgb) : rgb);
}

// What is kept for later.

Status SoftwareSurface::setSourceKey(std::uint32_t color) {
    key_ = color;
    return Status();
}

// The screen shows no more of the primary surface than the window's part.
Status SoftwareSurface::setClipper(IClipper&) {
    clipped_ = true;
    return Status();
}

Status SoftwareSurface::showOverlay(const Rectangle& source, ISurface& screen, const Rectangle& destination,
                                    std::uint32_t key) {
    if (!holds(source) || !static_cast<SoftwareSurface&>(screen).holds(destination)) {
        return Status(kSurfaceInvalidRectangle);
    }
    overlay_ = {source, destination, key};
    return Status();
}

// Pixels.

const std::uint8_t* SoftwareSurface::row(std::int64_t y) const {
    return pixels_.get() + static_cast<std::size_t>(y) * pitch_;
}

std::uint8_t* SoftwareSurface::row(std::int64_t y) {
    return pixels_.get() + static_cast<std::size_t>(y) * pitch_;
}

Rectangle SoftwareSurface::whole() const {
    return {0, 0, static_cast<std::int32_t>(size().width), static_cast<std::int32_t>(size().height)};
}

bool SoftwareSurface::holds(const Rectangle& r) const {
    return !r.empty() && r.left >= 0 && r.top >= 0 && r.right <= whole().right && r.bottom <= whole().bottom;
}

std::uint32_t SoftwareSurface::colorAt(std::int64_t x, std::int64_t y) const {
    const std::uint8_t* const pixel = row(y) + static_cast<std::size_t>(x) * pixelBytes_;
    if (pixelBytes_ == 4) return load32(pixel) & 0xFFFFFF;
    if (description_.format.fourCc == 0) return colorOf565(load16(pixel));
    const std::uint8_t* const pair = row(y) + static_cast<std::size_t>(x / 2) * 4;  // U, Y, V, Y
    return colorOfYuv(pixel[1], pair[0], pair[2]);
}

}  // namespace tavra::platform
