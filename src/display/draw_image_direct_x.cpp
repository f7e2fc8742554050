#include "display/draw_image_direct_x.h"

#include <utility>

#include "base/first_failure.h"
#include "display/sprite_pixels.h"

namespace tavra {
namespace {

using namespace platform;

Size sizeOf(const Rectangle& rectangle) {
    return {static_cast<std::uint32_t>(rectangle.width()), static_cast<std::uint32_t>(rectangle.height())};
}

Size textureSizeFor(Size size) {
    return {nextPowerOfTwo(size.width), nextPowerOfTwo(size.height)};
}

std::uint32_t bitCountOf(std::uint32_t imageBits) {
    switch (imageBits) {
        case 1: return 8;
        case 8: return 24;
        default: return imageBits;
    }
}

PresentParameters parametersFor(std::uint32_t presentMode) {
    PresentParameters parameters;
    const bool atOnce = presentMode == CDrawImageDirectX::kAtOnce;
    parameters.swapEffect = atOnce ? SwapEffect::Discard : SwapEffect::Copy;
    parameters.interval = atOnce ? kPresentAtOnce : kPresentEachBlank;
    return parameters;
}

}  // namespace

CDrawImageDirectX::~CDrawImageDirectX() {
    const DrawMutexLock lock(drawMutex, DrawMutexLock::How::UnlessLent);
    releaseAll();
}

// The device and what is made on it.

std::uint32_t CDrawImageDirectX::CreateDevice() {
    lastFrameId = 0xFFFFFFFF;
    imageDue_ = true;
    releaseAll();
    const std::uint32_t failure = createObjects();
    if (failure != 0) releaseAll();
    return failure;
}

std::uint32_t CDrawImageDirectX::createObjects() {
    if (const std::uint32_t failure = sprites_.createObject(direct3D); failure != 0) return failure;
    if (const std::uint32_t failure = createOnBestDevice(); failure != 0) return failure;
    const Size image = rotated != 0 ? Size{imageHeight, imageWidth} : Size{imageWidth, imageHeight};
    const std::uint32_t failure =
        device->createTexture(textureSizeFor(image), SpriteFormat::X8R8G8B8, imageTexture);
    return failure != 0 ? failure : device->createSprite(sprite);
}

std::uint32_t CDrawImageDirectX::createOnBestDevice() {
    DisplayMode mode;
    if (const std::uint32_t failure = direct3D->displayMode(mode); failure != 0) return failure;
    presentParameters = parametersFor(presentMode);
    struct Choice {
        DeviceKind kind;
        std::uint32_t vertices;
    };
    constexpr Choice kChoices[] = {{DeviceKind::Hardware, kHardwareVertices},
                                   {DeviceKind::Hardware, kSoftwareVertices},
                                   {DeviceKind::Reference, kSoftwareVertices}};
    const std::uint32_t preserve = preserveFloatingPoint != 0 ? kPreserveFloatingPoint : 0;
    std::uint32_t failure = 0;
    for (const Choice& choice : kChoices) {
        const DeviceRequest request{choice.kind, windowHandle, client_, choice.vertices | preserve};
        failure = direct3D->createDevice(request, presentParameters, device);
        if (failure == 0) return 0;
    }
    return failure;
}

void CDrawImageDirectX::releaseAll() {
    releaseDrawing();
    sprite.reset();
    imageTexture.reset();
    device.reset();
    direct3D.reset();
}

// What changes from outside.

std::uint32_t CDrawImageDirectX::Initialize() {
    noteDue([this](Due& due) { due.client = sizeOf(clientRect); });
    return settle();
}

std::uint32_t CDrawImageDirectX::OnSize(std::uint32_t, std::uint32_t, std::uint32_t) {
    noteDue([this](Due& due) { due.client = sizeOf(clientRect); });
    return settle();
}

std::uint32_t CDrawImageDirectX::SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
    noteDue([&](Due& due) { due.image = {width, height, bits}; });
    return settle();
}

std::uint32_t CDrawImageDirectX::settle() {
    const DrawMutexLock lock(drawMutex, DrawMutexLock::How::UnlessLent);
    return lock ? carryOutDue() : 0;
}

std::uint32_t CDrawImageDirectX::carryOutDue() {
    Due due;
    noteDue([&due](Due& noted) { std::swap(due, noted); });
    if (!due.client && !due.image) return 0;
    if (due.client) client_ = *due.client;
    if (due.image) {
        imageWidth = due.image->width;
        imageHeight = due.image->height;
        imageBits = due.image->bits;
    }
    return CreateDevice();
}

// The application's drawing.

std::uint32_t CDrawImageDirectX::GetDC(TavraDC* dc) {
    *dc = nullptr;
    DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    if (const std::uint32_t failure = carryOutDue(); failure != 0) return failure;
    if (drawingActive == 0) {
        if (const std::uint32_t failure = createDrawing(); failure != 0) {
            releaseDrawing();
            return failure;
        }
    }
    if (const std::uint32_t failure = keySurface->getDC(lent_); failure != 0) return failure;
    *dc = lent_;
    lock.lend();
    return 0;
}

// Why drawMutex could not be had.
std::uint32_t CDrawImageDirectX::refused() const {
    return drawMutex.isLentHere() ? kWouldDeadlock : sprite_error::kNotAvailable;
}

std::uint32_t CDrawImageDirectX::createDrawing() {
    if (device == nullptr) return sprite_error::kNotAvailable;
    drawing_ = client_;
    if (const std::uint32_t failure =
            device->createOffscreenSurface(drawing_, SpriteFormat::X8R8G8B8, keySurface);
        failure != 0) {
        return failure;
    }
    if (const std::uint32_t failure =
            device->createTexture(textureSizeFor(drawing_), SpriteFormat::A8R8G8B8, keyTexture);
        failure != 0) {
        return failure;
    }
    if (const std::uint32_t failure = paintKeyColor(); failure != 0) return failure;
    drawingActive = 1;
    return 0;
}

std::uint32_t CDrawImageDirectX::paintKeyColor() {
    TavraDC dc = nullptr;
    if (const std::uint32_t failure = keySurface->getDC(dc); failure != 0) return failure;
    const Rectangle whole{0, 0, static_cast<std::int32_t>(drawing_.width),
                          static_cast<std::int32_t>(drawing_.height)};
    const Status filled = fillSolid(dc, whole, colorKey);
    return firstFailure(filled, Status(keySurface->releaseDC(dc))).code();
}

void CDrawImageDirectX::releaseDrawing() {
    keyTexture.reset();
    keySurface.reset();
    drawingActive = 0;
}

std::uint32_t CDrawImageDirectX::ReleaseDC(TavraDC dc) {
    if (dc == nullptr) return 0;  // what a GetDC that failed has given
    DrawMutexLock lock(drawMutex, DrawMutexLock::How::TakeBack);
    if (!lock) return kNotOwner;
    if (dc != lent_) {
        lock.lend();
        return error::kInvalidArgument;
    }
    lent_ = nullptr;
    std::uint32_t failure = keySurface->releaseDC(dc);
    if (failure == 0) failure = copyDrawing();
    return firstFailure(Status(failure), Status(carryOutDue())).code();
}

// By design: the key is compared with its red and blue exchanged, because a device context paints colours of
// Windows in the order of the surface's pixels.
std::uint32_t CDrawImageDirectX::copyDrawing() {
    LockedPixels from, to;
    if (const std::uint32_t failure = keySurface->lock(from); failure != 0) return failure;
    std::uint32_t failure = keyTexture->lock(to);
    if (failure == 0) {
        const std::uint32_t key = pixelOfColor(colorKey), alpha = alphaMask;
        for (std::uint32_t y = 0; y < drawing_.height; ++y) {
            copyKeyed(reinterpret_cast<const std::uint32_t*>(from.bits + y * from.pitch),
                      reinterpret_cast<std::uint32_t*>(to.bits + y * to.pitch), drawing_.width, key, alpha);
        }
        failure = keyTexture->unlock();
    }
    return firstFailure(Status(failure), Status(keySurface->unlock())).code();
}

std::uint32_t CDrawImageDirectX::SetColorKey(std::uint32_t color) {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    releaseDrawing();
    colorKey = color;
    return 0;
}

// Of the thread that has the context, too: it may ask what to draw with.
std::uint32_t CDrawImageDirectX::GetColorKey(std::uint32_t* color) {
    const DrawMutexLock lock(drawMutex);
    *color = colorKey;
    return 0;
}

std::uint32_t CDrawImageDirectX::ResetOverlay() {
    const DrawMutexLock lock(drawMutex);
    if (!lock) return refused();
    releaseDrawing();
    return 0;
}

// The image.

std::uint32_t CDrawImageDirectX::DrawImage(const Rectangle& source, const Rectangle& destination,
                                           const BackgroundRectangles& background,
                                           const DrawImageInfo& info) {
    const DrawMutexLock lock(drawMutex, DrawMutexLock::How::UnlessLent);
    if (!lock) {
        imageDue_ = true;
        return 0;
    }
    if (const std::uint32_t failure = carryOutDue(); failure != 0) return failure;
    if (const std::uint32_t failure = fitDevice(info); failure != 0) return failure;
    if (imageDue_ || lastFrameId != info.frameId) {
        imageDue_ = true;
        if (const std::uint32_t failure = upload(info); failure != 0) return failure;
        imageDue_ = false;
        lastFrameId = info.frameId;
    }
    return Render(source, destination, background);
}

std::uint32_t CDrawImageDirectX::fitDevice(const DrawImageInfo& info) {
    if (info.rotated != rotated) {
        rotated = info.rotated;
        if (const std::uint32_t failure = CreateDevice(); failure != 0) return failure;
    }
    const BitmapShape& shape = info.bitmap->shape();
    const std::uint32_t width = rotated != 0 ? shape.height : shape.width;
    const std::uint32_t height = rotated != 0 ? shape.width : shape.height;
    if (width == imageWidth && height == imageHeight) return 0;
    imageWidth = width;
    imageHeight = height;
    return CreateDevice();
}

std::uint32_t CDrawImageDirectX::upload(const DrawImageInfo& info) {
    if (imageTexture == nullptr) {
        if (const std::uint32_t failure = CreateDevice(); failure != 0) return failure;
    }
    const BitmapShape& shape = info.bitmap->shape();
    // For a moment after a change of the format the images are another than was told.
    if (info.bits == nullptr || shape.bitCount != bitCountOf(imageBits)) return error::kInvalidData;
    LockedPixels pixels;
    if (const std::uint32_t failure = imageTexture->lock(pixels); failure != 0) return failure;
    copyImage({info.bits, shape.stride(), shape.width, shape.height, imageBits}, pixels);
    return imageTexture->unlock();
}

}  // namespace tavra
