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

std::uint32_t load32(const std::uint8_t* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// Of a word of cairo's, blue in the lowest byte. The highest may be anything.
constexpr std::uint32_t kColors = 0xFFFFFF;

// A pixel of three bytes is read as a word, but for the last of a row, which nothing need stand behind.
std::uint32_t load24(const std::uint8_t* pixel) {
    return load32(pixel) & kColors;
}
std::uint32_t loadLast24(const std::uint8_t* pixel) {
    return pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
}

// Weights in thousandths, as those of the chain; a pixel of equal channels keeps its value exactly.
std::uint8_t greyOf(std::uint32_t word) {
    return static_cast<std::uint8_t>(
        (114u * (word & 0xFF) + 587u * (word >> 8 & 0xFF) + 299u * (word >> 16 & 0xFF) + 500u) / 1000u);
}

// Rows of grey bytes.
struct GreyRows {
    static void spread(const std::uint8_t* row, std::uint32_t* drawn, std::size_t width) {
        for (std::size_t x = 0; x < width; ++x) drawn[x] = row[x] * 0x010101u;
    }
    static bool isUntouched(const std::uint8_t* row, const std::uint32_t* drawn, std::size_t width) {
        std::uint32_t difference = 0;
        for (std::size_t x = 0; x < width; ++x) difference |= (drawn[x] & kColors) ^ (row[x] * 0x010101u);
        return difference == 0;
    }
    static void gather(std::uint8_t* row, const std::uint32_t* drawn, std::size_t width) {
        for (std::size_t x = 0; x < width; ++x) row[x] = greyOf(drawn[x]);
    }
};

// Rows of blue, green and red bytes.
struct ColorRows {
    static void spread(const std::uint8_t* row, std::uint32_t* drawn, std::size_t width) {
        if (width == 0) return;
        const std::size_t last = width - 1;
        for (std::size_t x = 0; x < last; ++x) drawn[x] = load24(row + 3 * x);
        drawn[last] = loadLast24(row + 3 * last);
    }
    static bool isUntouched(const std::uint8_t* row, const std::uint32_t* drawn, std::size_t width) {
        if (width == 0) return true;
        const std::size_t last = width - 1;
        std::uint32_t difference = drawn[last] ^ loadLast24(row + 3 * last);
        for (std::size_t x = 0; x < last; ++x) difference |= drawn[x] ^ load24(row + 3 * x);
        return (difference & kColors) == 0;
    }
    static void gather(std::uint8_t* row, const std::uint32_t* drawn, std::size_t width) {
        for (std::size_t x = 0; x < width; ++x) std::memcpy(row + 3 * x, &drawn[x], 3);
    }
};

// What a context draws on: the pixels themselves if cairo can, else a copy in 32 bits.
class Canvas {
  public:
    Canvas(const Bitmap& bitmap, DrawingMemory& memory)
        : shape_(bitmap.shape()), pixels_(bitmap.pixels()), drawsOnCopy_(shape_.bitCount != 32) {
        if (!drawsOnCopy_) return;
        const std::size_t words = std::size_t{shape_.width} * shape_.height;
        copy_ = reinterpret_cast<std::uint32_t*>(memory.take(words * sizeof(std::uint32_t)));
        if (copy_ != nullptr) isGrey() ? spread<GreyRows>() : spread<ColorRows>();
    }

    std::uint8_t* data() const { return drawsOnCopy_ ? reinterpret_cast<std::uint8_t*>(copy_) : pixels_; }
    std::size_t stride() const { return drawsOnCopy_ ? std::size_t{shape_.width} * 4 : shape_.stride(); }

    void mergeBack() const {
        if (copy_ != nullptr) isGrey() ? gather<GreyRows>() : gather<ColorRows>();
    }

    cairo_surface_t* surface = nullptr;

  private:
    bool isGrey() const { return shape_.bitCount == 8; }
    std::uint8_t* row(std::uint32_t y) const { return pixels_ + std::size_t{y} * shape_.stride(); }
    std::uint32_t* drawn(std::uint32_t y) const { return copy_ + std::size_t{y} * shape_.width; }

    template <typename Rows>
    void spread() const {
        for (std::uint32_t y = 0; y < shape_.height; ++y) Rows::spread(row(y), drawn(y), shape_.width);
    }
    // A row that nobody has drawn on is as it was. To see that is faster than to write it.
    template <typename Rows>
    void gather() const {
        for (std::uint32_t y = 0; y < shape_.height; ++y) {
            if (Rows::isUntouched(row(y), drawn(y), shape_.width)) continue;
            Rows::gather(row(y), drawn(y), shape_.width);
        }
    }

    BitmapShape shape_;
    std::uint8_t* pixels_;
    bool drawsOnCopy_;
    std::uint32_t* copy_ = nullptr;
};

Status statusOf(cairo_status_t status) {
    switch (status) {
        case CAIRO_STATUS_SUCCESS: return Status();
        case CAIRO_STATUS_NO_MEMORY: return Status(error::kOutOfMemory);
        default: return Status(error::kDeviceNotFunctioning);
    }
}

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

std::uint8_t* DrawingMemory::take(std::size_t bytes) {
    if (bytes_ == nullptr || bytes > size_) {
        bytes_.reset();
        bytes_.reset(new (std::nothrow) std::uint8_t[bytes]);
        size_ = bytes_ != nullptr ? bytes : 0;
    }
    return bytes_.get();
}

// There is a context only if cairo is complete. NOLINTBEGIN(clang-analyzer-core.CallAndMessage)

struct MemoryContext::Native {
    DrawingMemory own;
    DrawingMemory* memory = nullptr;  // that is drawn in
    std::unique_ptr<Canvas> canvas;
    cairo_t* context = nullptr;
    std::optional<PixelPaint> paint;

    // Nothing stays behind of what could not be made.
    void make(const Bitmap& bitmap) {
        const BitmapShape& shape = bitmap.shape();
        if (bitmap.pixels() == nullptr || shape.width > kMostPixels || shape.height > kMostPixels) return;
        if (!cairo().complete) return;
        canvas.reset(new (std::nothrow) Canvas(bitmap, *memory));
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

MemoryContext::MemoryContext(Bitmap& bitmap, DrawingMemory* memory)
    : bitmap_(bitmap), native_(std::make_unique<Native>()) {
    native_->memory = memory != nullptr ? memory : &native_->own;
}

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

// A context that has failed once draws nothing from then on, and says so here.
Status fillSolid(TavraDC dc, const Rectangle& rectangle, std::uint32_t color) {
    if (!cairo().complete) return Status(error::kModuleNotFound);
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
    return statusOf(cairo().status(context));
}

}  // namespace tavra::platform
