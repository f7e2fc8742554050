#include "display/draw_image_direct_draw_offscreen.h"

#include "display/next_pixel_format.h"

namespace tavra {

using platform::SurfaceFormat;
using platform::SurfaceKind;

// The window shows at once that the drawing is gone.
std::uint32_t CDrawImageDirectDrawOffscreen::ResetOverlay() {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    if (const Status cleared = clear(*drawSurface, colorKey); !cleared.ok()) return cleared.code();
    if (hasLastDraw == 0) return 0;
    Rectangle source = lastSource, destination = lastDest;
    clip(source, destination);
    const std::uint32_t presented = Present(source, destination, lastBackground);
    directDraw->showSoon();
    return presented;
}

std::uint32_t CDrawImageDirectDrawOffscreen::OnMove(std::int32_t, std::int32_t) {
    const DrawMutexLock lock(drawMutex);
    return lock ? followMonitor() : kNotReady;
}

std::uint32_t CDrawImageDirectDrawOffscreen::CreateSurfaces() {
    lastFrameId = 0xFFFFFFFF;
    releaseAll();
    return orNothing(build());
}

void CDrawImageDirectDrawOffscreen::releaseAll() {
    workSurface = nullptr;
    CDrawImageDirectDraw::releaseAll();
}

Status CDrawImageDirectDrawOffscreen::build() {
    TAVRA_RETURN_IF_ERROR(createDevice());
    SurfaceFormat format;
    TAVRA_RETURN_IF_ERROR(createWorkSurface(format));
    TAVRA_RETURN_IF_ERROR(createSurface(SurfaceKind::Offscreen, format, clientSize(), drawSurface));
    TAVRA_RETURN_IF_ERROR(setKeyOfDrawSurface());
    TAVRA_RETURN_IF_ERROR(createSurface(SurfaceKind::Offscreen, format, imageSize(), imageSurface));
    TAVRA_RETURN_IF_ERROR(createClipper());
    TAVRA_RETURN_IF_ERROR(clear(*primarySurface, 0));
    return clear(*drawSurface, colorKey);
}

// In the first format that can be had; the failure of the last one if none can.
Status CDrawImageDirectDrawOffscreen::createWorkSurface(SurfaceFormat& format) {
    Status created(kNotReady);
    for (std::uint32_t attempt = 0; NextPixelFormat(pixelFormatOrder, false, attempt, format); ++attempt) {
        created = createSurface(SurfaceKind::Offscreen, format, clientSize(), workSurface);
        if (created.ok()) break;
    }
    return created;
}

// By design: an empty destination, or one that lies outside the window, is a first step that fails: the
// strips around it are not painted either, and the picture stays as it was.
std::uint32_t CDrawImageDirectDrawOffscreen::Present(const Rectangle& source, const Rectangle& destination,
                                                     const BackgroundRectangles& background) {
    const Rectangle drawn{0, 0, destination.right - destination.left, destination.bottom - destination.top};
    const bool shown = workSurface->blit(destination, *imageSurface, source).ok() &&
                       workSurface->blitKeyed(destination.left, destination.top, *drawSurface, drawn).ok() &&
                       primarySurface->blit(onMonitor(destination), *workSurface, destination).ok();
    if (shown) fillBackground(background);
    return 0;
}

}  // namespace tavra
