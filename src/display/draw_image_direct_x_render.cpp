// The picture itself, and the loss of the device.
#include "display/draw_image_direct_x.h"

namespace tavra {
namespace {

using namespace platform;

constexpr std::uint32_t kOpaqueWhite = 0xFFFFFFFF;
constexpr std::uint32_t kOpaqueBlack = 0xFF000000;

// By design: a rectangle counts as empty only if it has neither width nor height.
bool isPoint(const Rectangle& rectangle) {
    return rectangle.left == rectangle.right && rectangle.top == rectangle.bottom;
}

SpriteScale scaleFor(const Rectangle& source, const Rectangle& destination) {
    const bool sameSize = source.width() == destination.width() && source.height() == destination.height();
    if (sameSize || source.empty()) return {};
    return {static_cast<float>(destination.width()) / static_cast<float>(source.width()),
            static_cast<float>(destination.height()) / static_cast<float>(source.height())};
}

}  // namespace

std::uint32_t CDrawImageDirectX::Render(const Rectangle& source, const Rectangle& destination,
                                        const BackgroundRectangles& background) {
    const std::uint32_t cleared = clearBackground(background);
    // One that could not be made after a reset.
    if (sprite == nullptr && cleared != sprite_error::kDeviceLost) {
        static_cast<void>(device->createSprite(sprite));
    }
    device->beginScene();
    if (sprite != nullptr) drawSprites(source, destination);
    device->endScene();
    if (presentMode == kEachBlankWaiting) {
        std::unique_ptr<ISpriteSurface> backBuffer;
        LockedPixels pixels;
        // Whether it can be read does not matter, only that nothing is left to be drawn when it could.
        if (device->backBuffer(backBuffer) == 0 && backBuffer->lock(pixels) == 0) backBuffer->unlock();
    }
    const std::uint32_t presented = device->present();
    const bool lost = cleared == sprite_error::kDeviceLost || presented == sprite_error::kDeviceLost;
    return lost ? recover() : presented;
}

// By design: four rectangles are handed over however many there are; the rest are empty.
std::uint32_t CDrawImageDirectX::clearBackground(const BackgroundRectangles& background) {
    BackgroundRectangles collected;
    std::size_t count = 0;
    for (const Rectangle& strip : background) {
        if (!isPoint(strip)) collected[count++] = strip;
    }
    if (count == 0) return 0;
    return device->clear(collected, kClearTarget | kClearDepth, kOpaqueBlack, 1, 0);
}

void CDrawImageDirectX::drawSprites(const Rectangle& source, const Rectangle& destination) {
    if (sprite->begin(drawingActive != 0 ? kSpriteAlphaBlend : 0) != 0) return;
    if (!destination.empty()) {
        const SpriteScale scale = scaleFor(source, destination);
        const SpritePosition position{static_cast<float>(destination.left) / scale.x,
                                      static_cast<float>(destination.top) / scale.y};
        sprite->setTransform(scale);
        sprite->draw(*imageTexture, source, position, kOpaqueWhite);
        if (drawingActive != 0) {
            // By design: the position stays that of the image, divided by its scale, and the drawing keeps
            // its own size.
            const Rectangle drawn{0, 0, static_cast<std::int32_t>(destination.width()),
                                  static_cast<std::int32_t>(destination.height())};
            sprite->setTransform({});
            sprite->draw(*keyTexture, drawn, position, kOpaqueWhite);
        }
    }
    sprite->end();
}

// The textures survive. What fails is tried again with the next picture.
std::uint32_t CDrawImageDirectX::recover() {
    const std::uint32_t level = device->testCooperativeLevel();
    if (level != sprite_error::kDeviceNotReset) return level;
    sprite.reset();
    if (const std::uint32_t failure = device->reset(presentParameters); failure != 0) return failure;
    return device->createSprite(sprite);
}

}  // namespace tavra
