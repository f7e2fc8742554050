#include "display/draw_image_direct_draw.h"

#include <algorithm>

#include "base/first_failure.h"
#include "display/convert_image.h"

namespace tavra {
namespace {

using platform::ISurface;
using platform::Monitor;
using platform::Size;
using platform::SurfaceDeviceId;

std::int32_t moved(std::int32_t place, std::int64_t by) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(place + by, INT32_MIN, INT32_MAX));
}

std::uint32_t sourceBitsOf(const platform::BitmapShape& shape) {
    return shape.bitCount == 8 ? 1 : shape.bitCount == 24 ? 8 : shape.bitCount;
}

// By design: the converter takes rows that follow one another, which those of a bitmap do not where they are
// padded: there they go to it one by one, or the image would come out sheared.
void convertBitmap(const DrawImageInfo& info, const platform::LockedSurface& to, std::uint32_t code) {
    const platform::BitmapShape& shape = info.bitmap->shape();
    const std::uint32_t bits = sourceBitsOf(shape);
    if (shape.stride() == shape.width * (shape.bitCount / 8)) {
        ConvertImage(info.bits, to.pixels, shape.width, shape.height, to.pitch, bits, code);
        return;
    }
    // The one run of pixels that a surface of 8 bits gets stays one.
    const std::size_t step = code == kSurface8 && bits != 1 ? shape.width : to.pitch;
    for (std::size_t y = 0; y < shape.height; ++y) {
        ConvertImage(info.bits + y * shape.stride(), to.pixels + y * step, shape.width, 1, to.pitch, bits,
                     code);
    }
}

}  // namespace

// The application's drawing.

std::uint32_t CDrawImageDirectDraw::GetDC(TavraDC* dc) {
    *dc = nullptr;
    DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    if (drawSurface == nullptr) return kNotReady;
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    if (const Status got = drawSurface->getDC(*dc); !got.ok()) {
        *dc = nullptr;
        return got.code();
    }
    lentContext_ = *dc;
    lock.lend();
    return 0;
}

std::uint32_t CDrawImageDirectDraw::ReleaseDC(TavraDC dc) {
    if (dc == nullptr) return 0;  // what a GetDC that failed has given
    DrawMutexLock lock(drawMutex, DrawMutexLock::How::TakeBack);
    if (!lock) return error::kNotOwner;
    if (dc != lentContext_) {
        lock.lend();
        return error::kInvalidArgument;
    }
    const Status released = drawSurface->releaseDC(dc);
    lentContext_ = nullptr;
    return released.code();
}

// Why drawMutex could not be had.
std::uint32_t CDrawImageDirectDraw::refused() const {
    return drawMutex.isLentHere() ? kWouldDeadlock : kNotReady;
}

std::uint32_t CDrawImageDirectDraw::SetColorKey(std::uint32_t color) {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    colorKey = color;
    return surfacesReady != 0 ? CreateSurfaces() : 0;
}

// Of the thread that has the context, too: it may ask what to draw with.
std::uint32_t CDrawImageDirectDraw::GetColorKey(std::uint32_t* color) {
    const DrawMutexLock lock(drawMutex);
    *color = colorKey;
    return 0;
}

// The size comes to the surfaces at once, or with the next drawing if a context is out.
std::uint32_t CDrawImageDirectDraw::SetImageSize(std::uint32_t width, std::uint32_t height,
                                                 std::uint32_t bits) {
    {
        const std::lock_guard guard(nextImageMutex_);
        nextImage_ = {width, height, bits};
    }
    const DrawMutexLock lock(drawMutex, DrawMutexLock::How::UnlessLent);
    return lock ? takeImageSize() : 0;
}

std::uint32_t CDrawImageDirectDraw::takeImageSize() {
    {
        const std::lock_guard guard(nextImageMutex_);
        if (!nextImage_) return 0;
        CDrawImage::SetImageSize(nextImage_->width, nextImage_->height, nextImage_->bits);
        nextImage_.reset();
    }
    return Initialize();
}

std::uint32_t CDrawImageDirectDraw::OnSize(std::uint32_t, std::uint32_t, std::uint32_t) {
    const DrawMutexLock lock(drawMutex);
    return lock && primarySurface != nullptr ? CreateSurfaces() : kNotReady;
}

std::uint32_t CDrawImageDirectDraw::Initialize() {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return kNotReady;
    const std::uint32_t result = CreateSurfaces();
    surfacesReady = 1;
    return result;
}

// The image.

std::uint32_t CDrawImageDirectDraw::DrawImage(const Rectangle& source, const Rectangle& destination,
                                              const BackgroundRectangles& background,
                                              const DrawImageInfo& info) {
    const DrawMutexLock lock(drawMutex);
    if (!lock || surfacesReady == 0) return 0;
    takeImageSize();
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    followImage(info);
    if (const std::uint32_t failure = restoreIfLost(); failure != 0) return failure;
    Status uploaded;
    if (lastFrameId != info.frameId) {
        platform::LockedSurface locked;
        if (const Status got = imageSurface->lockForWriting(locked); !got.ok()) return got.code();
        uploaded = upload(info, locked);
    }
    const std::uint32_t presented = Present(source, destination, background);
    directDraw->show(*info.deviceContext, clientOnMonitor());
    return firstFailure(uploaded, Status(presented)).code();
}

// A rebuild that fails here is tried again by the next step.
void CDrawImageDirectDraw::followImage(const DrawImageInfo& info) {
    if (rotated != info.rotated) {
        rotated = info.rotated;
        CreateSurfaces();
    }
    const platform::BitmapShape& shape = info.bitmap->shape();
    const std::uint32_t width = rotated != 0 ? shape.height : shape.width;
    const std::uint32_t height = rotated != 0 ? shape.width : shape.height;
    if (width == imageWidth && height == imageHeight) return;
    imageWidth = width;
    imageHeight = height;
    CreateSurfaces();
}

// By design: only a lock that fails ends the drawing. What fails from then on is told, and what the surface
// holds is shown all the same, with the application's drawing and the strips.
Status CDrawImageDirectDraw::upload(const DrawImageInfo& info, const platform::LockedSurface& locked) {
    platform::SurfaceFormat format;
    const Status known = imageSurface->format(format);
    if (known.ok()) convertBitmap(info, locked, surfaceFormatCode(format));
    return firstFailure(known, imageSurface->unlock());
}

// Making the surfaces.

void CDrawImageDirectDraw::releaseAll() {
    clipper = nullptr;
    drawSurface = nullptr;
    imageSurface = nullptr;
    primarySurface = nullptr;
    directDraw = nullptr;
}

std::uint32_t CDrawImageDirectDraw::orNothing(Status built) {
    if (!built.ok()) releaseAll();
    return built.code();
}

// Which monitor the window is on, and the device that stands for it: none if that is the default one.
Status CDrawImageDirectDraw::FindMonitor(Monitor& monitor, std::optional<SurfaceDeviceId>& device) const {
    TAVRA_RETURN_IF_ERROR(surfaces_.monitorOf(windowHandle, monitor));
    return surfaces_.enumerateDevices([&](platform::MonitorHandle handle, const SurfaceDeviceId& id) {
        if (handle == monitor.handle) device = id;
    });
}

// The primary surface of the monitor's device, with the window among others.
Status CDrawImageDirectDraw::createDevice() {
    Monitor monitor;
    std::optional<SurfaceDeviceId> id;
    TAVRA_RETURN_IF_ERROR(FindMonitor(monitor, id));
    monitorRect = monitor.rectangle;
    monitorHandle = monitor.handle;
    TAVRA_RETURN_IF_ERROR(surfaces_.createDevice(id ? &*id : nullptr, directDraw));
    TAVRA_RETURN_IF_ERROR(directDraw->cooperate(windowHandle));
    return directDraw->createSurface({}, primarySurface);
}

Status CDrawImageDirectDraw::createSurface(platform::SurfaceKind kind, const platform::SurfaceFormat& format,
                                           const Size& size, Surface& surface) const {
    return directDraw->createSurface({kind, size, format}, surface);
}

Status CDrawImageDirectDraw::setKeyOfDrawSurface() const {
    std::uint32_t key = 0;
    TAVRA_RETURN_IF_ERROR(convertFor(*drawSurface, exchangeRedAndBlue(colorKey), key));
    return drawSurface->setSourceKey(key);
}

Status CDrawImageDirectDraw::createClipper() {
    TAVRA_RETURN_IF_ERROR(directDraw->createClipper(windowHandle, clipper));
    return primarySurface->setClipper(*clipper);
}

std::uint32_t CDrawImageDirectDraw::restoreIfLost() {
    const bool there = primarySurface != nullptr && primarySurface->testLost().ok();
    return there ? 0 : CreateSurfaces();
}

std::uint32_t CDrawImageDirectDraw::followMonitor() {
    Monitor monitor;
    std::optional<SurfaceDeviceId> id;
    if (const Status found = FindMonitor(monitor, id); !found.ok()) return found.code();
    return monitor.handle != monitorHandle ? CreateSurfaces() : 0;
}

// A fill that comes out as nothing is made good by a brush.
Status CDrawImageDirectDraw::clear(ISurface& surface, std::uint32_t color) const {
    std::uint32_t pixel = 0, seen = 0;
    TAVRA_RETURN_IF_ERROR(convertFor(surface, exchangeRedAndBlue(color), pixel));
    TAVRA_RETURN_IF_ERROR(surface.fill(nullptr, pixel));
    TAVRA_RETURN_IF_ERROR(surface.readFirstPixel(seen));
    return pixel != 0 && seen == 0 ? surface.paintSolid(color) : Status();
}

// `color` is 0x00RRGGBB.
Status CDrawImageDirectDraw::convertFor(ISurface& surface, std::uint32_t color, std::uint32_t& pixel) {
    platform::SurfaceFormat format;
    TAVRA_RETURN_IF_ERROR(surface.format(format));
    pixel = convertColor(color, surfaceFormatCode(format));
    return Status();
}

// Places.

Size CDrawImageDirectDraw::clientSize() const {
    return {static_cast<std::uint32_t>(clientRect.width()), static_cast<std::uint32_t>(clientRect.height())};
}

Size CDrawImageDirectDraw::imageSize() const {
    return rotated != 0 ? Size{imageHeight, imageWidth} : Size{imageWidth, imageHeight};
}

Rectangle CDrawImageDirectDraw::onMonitor(const Rectangle& inClient) const {
    const std::int64_t x = std::int64_t{clientRect.left} - monitorRect.left;
    const std::int64_t y = std::int64_t{clientRect.top} - monitorRect.top;
    return {moved(inClient.left, x), moved(inClient.top, y), moved(inClient.right, x),
            moved(inClient.bottom, y)};
}

Rectangle CDrawImageDirectDraw::clientOnMonitor() const {
    return onMonitor({0, 0, clientRect.right - clientRect.left, clientRect.bottom - clientRect.top});
}

// Black strips straight on the screen.
bool CDrawImageDirectDraw::fillBackground(const BackgroundRectangles& background) const {
    for (const Rectangle& strip : background) {
        if (strip.empty()) continue;
        const Rectangle place = onMonitor(strip);
        if (!primarySurface->fill(&place, 0).ok()) return false;
    }
    return true;
}

}  // namespace tavra
