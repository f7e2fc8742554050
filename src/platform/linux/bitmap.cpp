#include "platform/bitmap.h"

#include <cairo/cairo.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <optional>

#include "platform/linux/pixel_paint.h"
#include "platform/paint.h"

namespace tavra::platform {
namespace {

constexpr std::size_t kAlignment = 64;

// The few operations of cairo that a context takes. Loaded when the first context is made: a program that
// draws nothing needs no cairo.
struct Cairo {
    decltype(&cairo_image_surface_create_for_data) createSurface = nullptr;
    decltype(&cairo_surface_flush) flush = nullptr;
    decltype(&cairo_surface_destroy) destroySurface = nullptr;
    decltype(&cairo_create) create = nullptr;
    decltype(&cairo_status) status = nullptr;
    decltype(&cairo_destroy) destroy = nullptr;
    decltype(&cairo_surface_mark_dirty) markDirty = nullptr;
    decltype(&cairo_save) save = nullptr;
    decltype(&cairo_restore) restore = nullptr;
    decltype(&cairo_identity_matrix) identity = nullptr;
    decltype(&cairo_new_path) newPath = nullptr;
    decltype(&cairo_set_operator) setOperator = nullptr;
    decltype(&cairo_set_source_rgb) setSource = nullptr;
    decltype(&cairo_rectangle) rectangle = nullptr;
    decltype(&cairo_fill) fill = nullptr;
    bool complete = false;

    Cairo() {
        void* const library = dlopen("libcairo.so.2", RTLD_NOW | RTLD_LOCAL);  // kept until the process ends
        if (library == nullptr) return;
        complete =
            look(library, "cairo_image_surface_create_for_data", createSurface) &&
            look(library, "cairo_surface_flush", flush) &&
            look(library, "cairo_surface_destroy", destroySurface) && look(library, "cairo_create", create) &&
            look(library, "cairo_status", status) && look(library, "cairo_destroy", destroy) &&
            look(library, "cairo_surface_mark_dirty", markDirty) && look(library, "cairo_save", save) &&
            look(library, "cairo_restore", restore) && look(library, "cairo_identity_matrix", identity) &&
            look(library, "cairo_new_path", newPath) && look(library, "cairo_set_operator", setOperator) &&
            look(library, "cairo_set_source_rgb", setSource) && look(library, "cairo_rectangle", rectangle) &&
            look(library, "cairo_fill", fill);
    }

    template <typename Function>
    static bool look(void* library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(dlsym(library, name));
        return function != nullptr;
    }
};

const Cairo& cairo() {
    static const Cairo library;
    return library;
}

// Weights in thousandths, as those of the chain; a pixel of equal channels keeps its value exactly.
std::uint8_t greyOf(const std::uint8_t* bgr) {
    return static_cast<std::uint8_t>((114u * bgr[0] + 587u * bgr[1] + 299u * bgr[2] + 500u) / 1000u);
}

// What a context draws on: the pixels themselves if cairo can, else a copy in 32 bits. cairo's words hold
// blue in the lowest byte.
class Canvas {
  public:
    explicit Canvas(const Bitmap& bitmap)
        : shape_(bitmap.shape()), pixels_(bitmap.pixels()), bytes_(shape_.bitCount / 8) {
        if (bytes_ == 4) return;
        copy_.reset(new (std::nothrow) std::uint8_t[copyStride() * shape_.height]);
        if (copy_) forEachPixel([this](std::uint8_t* pixel, std::uint8_t* drawn) { spread(pixel, drawn); });
    }

    std::uint8_t* data() const { return bytes_ == 4 ? pixels_ : copy_.get(); }
    std::size_t stride() const { return bytes_ == 4 ? shape_.stride() : copyStride(); }

    void mergeBack() const {
        if (copy_) forEachPixel([this](std::uint8_t* pixel, std::uint8_t* drawn) { gather(pixel, drawn); });
    }

    cairo_surface_t* surface = nullptr;

  private:
    std::size_t copyStride() const { return std::size_t{shape_.width} * 4; }

    template <typename Visitor>
    void forEachPixel(Visitor visit) const {
        for (std::uint32_t y = 0; y < shape_.height; ++y) {
            std::uint8_t* pixel = pixels_ + std::size_t{y} * shape_.stride();
            std::uint8_t* drawn = copy_.get() + y * copyStride();
            for (std::uint32_t x = 0; x < shape_.width; ++x, pixel += bytes_, drawn += 4) visit(pixel, drawn);
        }
    }

    void spread(const std::uint8_t* pixel, std::uint8_t* drawn) const {
        for (std::uint32_t channel = 0; channel < 3; ++channel) {
            drawn[channel] = bytes_ == 1 ? pixel[0] : pixel[channel];
        }
        drawn[3] = 0;
    }

    void gather(std::uint8_t* pixel, const std::uint8_t* drawn) const {
        if (bytes_ == 1) {
            pixel[0] = greyOf(drawn);
        } else {
            std::memcpy(pixel, drawn, 3);
        }
    }

    BitmapShape shape_;
    std::uint8_t* pixels_;
    std::uint32_t bytes_;
    std::unique_ptr<std::uint8_t[]> copy_;
};

// Largest side of an image surface.
constexpr std::uint32_t kMostPixels = 32767;

}  // namespace

Status Bitmap::create(const BitmapShape& shape) {
    free();
    const std::size_t rounded = (shape.bytes() + kAlignment) & ~(kAlignment - 1);  // never zero
    pixels_ = static_cast<std::uint8_t*>(std::aligned_alloc(kAlignment, rounded));
    if (pixels_ == nullptr) return Status(error::kOutOfMemory);
    std::memset(pixels_, 0, rounded);
    shape_ = shape;
    return Status();
}

void Bitmap::free() {
    std::free(pixels_);
    pixels_ = nullptr;
    shape_ = {};
}

struct MemoryContext::Native {
    std::unique_ptr<Canvas> canvas;
    cairo_t* context = nullptr;
    std::optional<PixelPaint> paint;

    // Nothing stays behind of what could not be made.
    void make(const Bitmap& bitmap) {
        const BitmapShape& shape = bitmap.shape();
        if (bitmap.pixels() == nullptr || shape.width > kMostPixels || shape.height > kMostPixels) return;
        if (!cairo().complete) return;
        canvas.reset(new (std::nothrow) Canvas(bitmap));
        if (canvas == nullptr || canvas->data() == nullptr) {
            canvas.reset();
            return;
        }
        canvas->surface =
            cairo().createSurface(canvas->data(), CAIRO_FORMAT_RGB24, static_cast<int>(shape.width),
                                  static_cast<int>(shape.height), static_cast<int>(canvas->stride()));
        context = cairo().create(canvas->surface);
        if (cairo().status(context) != CAIRO_STATUS_SUCCESS) end();
    }

    void end() {
        if (context != nullptr) cairo().destroy(context);
        if (canvas != nullptr) cairo().destroySurface(canvas->surface);
        context = nullptr;
        canvas.reset();
    }
};

MemoryContext::MemoryContext(Bitmap& bitmap) : bitmap_(bitmap), native_(std::make_unique<Native>()) {}

// There is a context only if cairo is complete. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)

TavraDC MemoryContext::dc() {
    if (native_->context == nullptr) native_->make(bitmap_);
    // What was painted meanwhile is not in cairo's keeping.
    if (native_->context != nullptr && native_->paint) cairo().markDirty(native_->canvas->surface);
    native_->paint.reset();
    return native_->context;
}

IPaint& MemoryContext::paint() {
    const BitmapShape& shape = bitmap_.shape();
    PixelArea area{bitmap_.pixels(), shape.stride(), shape.width, shape.height, shape.bitCount / 8};
    if (native_->context != nullptr) {
        cairo().flush(native_->canvas->surface);
        area = {native_->canvas->data(), native_->canvas->stride(), shape.width, shape.height, 4};
    }
    return native_->paint.emplace(area);
}

MemoryContext::~MemoryContext() {
    if (native_->context == nullptr) return;
    cairo().flush(native_->canvas->surface);
    native_->canvas->mergeBack();
    native_->end();
}

// NOLINTEND(clang-analyzer-core.CallAndMessage)

void fillSolid(TavraDC dc, const Rectangle& rectangle, std::uint32_t color) {
    if (!cairo().complete) return;
    auto* const context = static_cast<cairo_t*>(dc);
    const auto channel = [color](unsigned shift) { return (color >> shift & 0xFF) / 255.0; };
    cairo().save(context);
    cairo().identity(context);
    cairo().newPath(context);
    cairo().setOperator(context, CAIRO_OPERATOR_SOURCE);
    cairo().setSource(context, channel(0), channel(8), channel(16));
    cairo().rectangle(context, rectangle.left, rectangle.top, static_cast<double>(rectangle.width()),
                      static_cast<double>(rectangle.height()));
    cairo().fill(context);
    cairo().restore(context);
}

}  // namespace tavra::platform
