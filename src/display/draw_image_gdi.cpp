#include "display/draw_image_gdi.h"

namespace tavra {

std::uint32_t CDrawImageGDI::DrawImage(const Rectangle& source, const Rectangle& destination,
                                       const BackgroundRectangles& background, const DrawImageInfo& info) {
    if (!source.empty() && !destination.empty()) drawBitmap(source, destination, info);
    for (const Rectangle& strip : background) {
        if (!strip.empty()) info.deviceContext->fillBlack(strip);
    }
    return 0;
}

void CDrawImageGDI::drawBitmap(const Rectangle& source, const Rectangle& destination,
                               const DrawImageInfo& info) const {
    platform::IPaint& paint = *info.deviceContext;
    if (source.width() == destination.width() && source.height() == destination.height()) {
        paint.copy(destination, *info.bitmap, source.left, source.top);
        return;
    }
    using enum platform::StretchQuality;
    paint.stretch(destination, *info.bitmap, source, stretchMode == kHalftone ? Smooth : Nearest);
}

}  // namespace tavra
