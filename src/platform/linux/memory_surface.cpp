#include "platform/linux/memory_surface.h"

namespace tavra::platform {

std::uint32_t MemorySurface::create(Size size) {
    return bitmap_.create({size.width, size.height, 32}).code();
}

std::uint32_t MemorySurface::lock(LockedPixels& pixels) {
    pixels = {bitmap_.pixels(), bitmap_.shape().stride()};
    return 0;
}

std::uint32_t MemorySurface::unlock() {
    return 0;
}

std::uint32_t MemorySurface::getDC(TavraDC& dc) {
    if (context_ != nullptr) return sprite_error::kInvalidCall;
    context_ = std::make_unique<MemoryContext>(bitmap_);
    dc = context_->dc();
    if (dc != nullptr) return 0;
    context_.reset();
    return error::kModuleNotFound;
}

// cairo leaves anything in the byte without a colour.
std::uint32_t MemorySurface::releaseDC(TavraDC dc) {
    if (context_ == nullptr || dc != context_->dc()) return sprite_error::kInvalidCall;
    context_.reset();
    const std::size_t bytes = bitmap_.shape().bytes();
    for (std::size_t i = 3; i < bytes; i += 4) bitmap_.pixels()[i] = 0;
    return 0;
}

}  // namespace tavra::platform
