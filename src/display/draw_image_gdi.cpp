#include "display/draw_image_gdi.h"

namespace tavra {

std::uint32_t CDrawImageGDI::DrawImage(const Rectangle& source, const Rectangle& destination,
                                       const BackgroundRectangles& background, const DrawImageInfo& info) {
    Status first;
    const auto note = [&first](Status drawn) {
        if (first.ok()) first = drawn;
    };
    if (!source.empty() && !destination.empty()) note(drawBitmap(source, destination, info));
    for (const Rectangle& strip : background) {
        if (!strip.empty()) note(info.deviceContext->fillBlack(strip));
    }
    return first.code();
}

Status CDrawImageGDI::drawBitmap(const Rectangle& source, const Rectangle& destination,
                                 const DrawImageInfo& info) const {
    platform::IPaint& paint = *info.deviceContext;
    if (source.width() == destination.width() && source.height() == destination.height()) {
        return paint.copy(destination, *info.bitmap, source.left, source.top);
    }
    using enum platform::StretchQuality;
    return paint.stretch(destination, *info.bitmap, source, stretchMode == kHalftone ? Smooth : Nearest);
}

}  // namespace tavra
