#include "platform/bitmap.h"

#include <cairo/cairo.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

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
    bool complete = false;

    Cairo() {
        void* const library = dlopen("libcairo.so.2", RTLD_NOW | RTLD_LOCAL);  // kept until the process ends
        if (library == nullptr) return;
        complete = look(library, "cairo_image_surface_create_for_data", createSurface) &&
                   look(library, "cairo_surface_flush", flush) &&
                   look(library, "cairo_surface_destroy", destroySurface) &&
                   look(library, "cairo_create", create) && look(library, "cairo_status", status) &&
                   look(library, "cairo_destroy", destroy);
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

MemoryContext::MemoryContext(Bitmap& bitmap) : bitmap_(bitmap) {
    const BitmapShape& shape = bitmap_.shape();
    if (bitmap_.pixels() == nullptr || shape.width > kMostPixels || shape.height > kMostPixels) return;
    if (!cairo().complete) return;
    auto* const canvas = new (std::nothrow) Canvas(bitmap_);
    if (canvas == nullptr) return;
    surface_ = canvas;
    if (canvas->data() == nullptr) return;
    canvas->surface =
        cairo().createSurface(canvas->data(), CAIRO_FORMAT_RGB24, static_cast<int>(shape.width),
                              static_cast<int>(shape.height), static_cast<int>(canvas->stride()));
    cairo_t* const context = cairo().create(canvas->surface);
    if (cairo().status(context) == CAIRO_STATUS_SUCCESS) {
        dc_ = context;
    } else {
        cairo().destroy(context);
    }
}

MemoryContext::~MemoryContext() {
    // There is a surface only if cairo is complete. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)
    auto* const canvas = static_cast<Canvas*>(surface_);
    if (dc_ != nullptr) {
        cairo().flush(canvas->surface);
        cairo().destroy(static_cast<cairo_t*>(dc_));
        canvas->mergeBack();
    }
    if (canvas != nullptr && canvas->surface != nullptr) cairo().destroySurface(canvas->surface);
    delete canvas;
    // NOLINTEND(clang-analyzer-core.CallAndMessage)
}

}  // namespace tavra::platform
