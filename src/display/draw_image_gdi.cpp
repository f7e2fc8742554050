#include "display/draw_image_gdi.h"

#include "base/first_failure.h"

namespace tavra {

std::uint32_t CDrawImageGDI::DrawImage(const Rectangle& source, const Rectangle& destination,
                                       const BackgroundRectangles& background, const DrawImageInfo& info) {
    Status drawn;
    if (!source.empty() && !destination.empty()) drawn = drawBitmap(source, destination, info);
    for (const Rectangle& strip : background) {
        if (!strip.empty()) drawn = firstFailure(drawn, info.deviceContext->fillBlack(strip));
    }
    return drawn.code();
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
