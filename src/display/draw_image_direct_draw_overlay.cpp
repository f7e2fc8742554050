#include "display/draw_image_direct_draw_overlay.h"

#include <algorithm>

#include "display/clip_to_area.h"
#include "display/convert_image.h"
#include "display/next_pixel_format.h"

namespace tavra {
namespace {

std::uint32_t roundedUp(std::uint32_t value, std::uint32_t step) {
    const std::uint32_t over = step == 0 ? 0 : value % step;
    return over == 0 ? value : value + (step - over);
}

}  // namespace

using platform::SurfaceFormat;
using platform::SurfaceKind;

// The next picture brings what was drawn to the screen.
std::uint32_t CDrawImageDirectDrawOverlay::ReleaseDC(TavraDC dc) {
    if (drawMutex.isLentHere()) overlayDest = {};
    return CDrawImageDirectDraw::ReleaseDC(dc);
}

std::uint32_t CDrawImageDirectDrawOverlay::EraseBackground(platform::IPaint* deviceContext) {
    const DrawMutexLock lock(drawMutex, DrawMutexLock::How::UnlessLent);
    if (!lock) return 0;
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    if (reloadOverlayDest) {
        overlayDest = clientOnMonitor();
        overlayFromX = overlayFromY = 0;
        reloadOverlayDest = false;
    }
    // With the overlay nowhere there is nothing to bring.
    const Status copied =
        overlayDest.empty() ? Status() : copyDrawing(overlayDest, overlayFromX, overlayFromY);
    directDraw->show(*deviceContext, clientOnMonitor());
    return copied.code();
}

std::uint32_t CDrawImageDirectDrawOverlay::ResetOverlay() {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    if (const Status painted = paintKey(); !painted.ok()) return painted.code();
    directDraw->showSoon();
    return 0;
}

std::uint32_t CDrawImageDirectDrawOverlay::OnMove(std::int32_t, std::int32_t) {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return kNotReady;
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    if (const std::uint32_t failure = followMonitor(); failure != 0) return failure;
    reloadOverlayDest = true;
    return copyDrawing(clientOnMonitor(), 0, 0).code();
}

std::uint32_t CDrawImageDirectDrawOverlay::CreateSurfaces() {
    lastFrameId = 0xFFFFFFFF;
    releaseAll();
    overlayDest = {};
    reloadOverlayDest = true;
    return orNothing(build());
}

Status CDrawImageDirectDrawOverlay::build() {
    TAVRA_RETURN_IF_ERROR(createDevice());
    SurfaceFormat screen;
    TAVRA_RETURN_IF_ERROR(primarySurface->format(screen));
    TAVRA_RETURN_IF_ERROR(createSurface(SurfaceKind::Offscreen, screen, clientSize(), drawSurface));
    TAVRA_RETURN_IF_ERROR(setKeyOfDrawSurface());
    TAVRA_RETURN_IF_ERROR(createOverlay());
    TAVRA_RETURN_IF_ERROR(createClipper());
    return paintKey();
}

// In the first format that can be had, as wide as the device wants it.
Status CDrawImageDirectDrawOverlay::createOverlay() {
    std::uint32_t alignment = 0;
    TAVRA_RETURN_IF_ERROR(directDraw->overlayAlignment(alignment));
    Status created(kNotReady);
    SurfaceFormat format;
    for (std::uint32_t attempt = 0; NextPixelFormat(pixelFormatOrder, true, attempt, format); ++attempt) {
        platform::Size size = imageSize();
        size.width = roundedUp(size.width, alignment);
        if (format.fourCc == platform::kFourCcUyvy) size.width = roundedUp(size.width, 2);
        created = createSurface(SurfaceKind::Overlay, format, size, imageSurface);
        if (created.ok()) break;
    }
    return created;
}

// A clear drawing, on the screen as well, and what its colour has become there.
Status CDrawImageDirectDrawOverlay::paintKey() {
    TAVRA_RETURN_IF_ERROR(clear(*drawSurface, colorKey));
    std::uint32_t seen = 0;
    TAVRA_RETURN_IF_ERROR(drawSurface->readFirstPixel(seen));
    overlayKeyColor = exchangeRedAndBlue(seen);
    return copyDrawing(clientOnMonitor(), 0, 0);
}

// Not scaled.
Status CDrawImageDirectDrawOverlay::copyDrawing(const Rectangle& to, std::int32_t fromX, std::int32_t fromY) {
    const auto width = static_cast<std::int32_t>(std::min<std::int64_t>(to.width(), INT32_MAX - fromX));
    const auto height = static_cast<std::int32_t>(std::min<std::int64_t>(to.height(), INT32_MAX - fromY));
    return primarySurface->blit(to, *drawSurface, {fromX, fromY, fromX + width, fromY + height});
}

// By design: no strips are painted around an empty destination, which the drawing cannot be copied to. The
// overlay stays where it was.
std::uint32_t CDrawImageDirectDrawOverlay::Present(const Rectangle& source, const Rectangle& destination,
                                                   const BackgroundRectangles& background) {
    std::uint32_t key = 0;
    if (!convertFor(*primarySurface, overlayKeyColor, key).ok()) return 0;
    const Rectangle whole = onMonitor(destination);
    Rectangle place = whole, part = source;
    if (!source.empty()) clipToArea(part, place, desktopRect.right, desktopRect.bottom);
    if (place != overlayDest) {
        overlayDest = place;
        overlayFromX = place.left - whole.left;
        overlayFromY = place.top - whole.top;
        const Status copied = copyDrawing(place, overlayFromX, overlayFromY);
        if (!copied.ok()) return 0;
    }
    if (imageSurface->showOverlay(part, *primarySurface, place, key).ok()) fillBackground(background);
    return 0;
}

}  // namespace tavra
