// Sprites with Direct3D 9 and D3DX, read back from a back buffer that may be locked.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <vector>

#include "platform/paint.h"
#include "platform/sprite_device.h"

namespace tavra::test {
namespace {

using namespace platform;
using Picture = std::vector<std::uint32_t>;

constexpr Size kClient{32, 24};
constexpr std::uint32_t kLockable = 1;  // flag of the back buffer

class D3dSprites : public testing::Test {
  protected:
    void SetUp() override {
        window =
            CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 32, 24, nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(window, nullptr);
        parameters.flags = kLockable;
        ASSERT_EQ(spriteSystem().createObject(object), 0u);
        ASSERT_EQ(object->createDevice({DeviceKind::Hardware, window, kClient, kHardwareVertices}, parameters,
                                       device),
                  0u);
        ASSERT_EQ(device->createTexture({16, 16}, SpriteFormat::X8R8G8B8, texture), 0u);
        ASSERT_EQ(device->createSprite(sprite), 0u);
        fill(*texture, [](std::uint32_t x, std::uint32_t y) { return 0x102030 + x + 256 * y; });
    }
    void TearDown() override {
        sprite.reset();
        texture.reset();
        device.reset();
        object.reset();
        DestroyWindow(window);
    }

    template <typename Rule>
    static void fill(ISpriteTexture& filled, Rule rule) {
        LockedPixels pixels;
        ASSERT_EQ(filled.lock(pixels), 0u);
        for (std::uint32_t y = 0; y < 16; ++y) {
            for (std::uint32_t x = 0; x < 16; ++x) {
                const std::uint32_t value = rule(x, y);
                std::memcpy(pixels.bits + y * pixels.pitch + 4 * std::size_t{x}, &value, 4);
            }
        }
        ASSERT_EQ(filled.unlock(), 0u);
    }
    void begin(std::uint32_t flags) {
        const Rectangle all[] = {{0, 0, 32, 24}, {}, {}, {}};
        EXPECT_EQ(device->clear(all, kClearTarget | kClearDepth, 0xFF0000FF, 1, 0), 0u);
        EXPECT_EQ(device->beginScene(), 0u);
        EXPECT_EQ(sprite->begin(flags), 0u);
        EXPECT_EQ(sprite->setTransform({}), 0u);
        EXPECT_EQ(sprite->draw(*texture, {2, 1, 12, 9}, {5, 7}, 0xFFFFFFFF), 0u);
    }
    Picture ended() {
        EXPECT_EQ(sprite->end(), 0u);
        EXPECT_EQ(device->endScene(), 0u);
        std::unique_ptr<ISpriteSurface> back;
        LockedPixels pixels;
        Picture picture(32 * 24);
        EXPECT_EQ(device->backBuffer(back), 0u);
        EXPECT_EQ(back->lock(pixels), 0u);
        for (std::size_t i = 0; pixels.bits != nullptr && i < picture.size(); ++i) {
            std::memcpy(&picture[i], pixels.bits + i / 32 * pixels.pitch + i % 32 * 4, 4);
            picture[i] &= 0xFFFFFF;
        }
        EXPECT_EQ(back->unlock(), 0u);
        back.reset();
        EXPECT_EQ(device->present(), 0u);
        return picture;
    }
    static Picture image() {
        Picture picture(32 * 24, 0x0000FF);
        for (std::uint32_t y = 0; y < 8; ++y) {
            for (std::uint32_t x = 0; x < 10; ++x)
                picture[(y + 7) * 32 + x + 5] = 0x102030 + (x + 2) + 256 * (y + 1);
        }
        return picture;
    }

    HWND window = nullptr;
    PresentParameters parameters;
    std::unique_ptr<ISpriteObject> object;
    std::unique_ptr<ISpriteDevice> device;
    std::unique_ptr<ISpriteTexture> texture;
    std::unique_ptr<ISprite> sprite;
};

TEST_F(D3dSprites, PartOfATextureLandsOnItsPlace) {
    begin(0);
    EXPECT_EQ(ended(), image());
}

TEST_F(D3dSprites, DrawingIsBlendedOver) {
    std::unique_ptr<ISpriteTexture> drawing;
    ASSERT_EQ(device->createTexture({16, 16}, SpriteFormat::A8R8G8B8, drawing), 0u);
    fill(*drawing, [](std::uint32_t x, std::uint32_t) { return x < 4 ? 0x00FF00FFu : 0xFF00FF00u; });
    begin(kSpriteAlphaBlend);
    EXPECT_EQ(sprite->draw(*drawing, {0, 0, 8, 6}, {5, 7}, 0xFFFFFFFF), 0u);
    Picture expected = image();
    for (std::size_t y = 7; y < 13; ++y) {
        for (std::size_t x = 9; x < 13; ++x) expected[y * 32 + x] = 0x00FF00;
    }
    Picture seen = ended();
    // The sprite asks for the best filter there is, which may mix the two columns at the edge.
    for (std::size_t y = 7; y < 13; ++y) {
        for (std::size_t x = 8; x < 10; ++x) seen[y * 32 + x] = expected[y * 32 + x];
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(D3dSprites, PositionIsScaledWithTheRest) {
    fill(*texture, [](std::uint32_t, std::uint32_t) { return 0xC0FFEEu; });
    begin(0);
    EXPECT_EQ(sprite->setTransform({2, 3}), 0u);
    EXPECT_EQ(sprite->draw(*texture, {4, 4, 8, 6}, {10, 5}, 0xFFFFFFFF), 0u);
    const Picture seen = ended();
    EXPECT_EQ(seen[15 * 32 + 20], 0xC0FFEEu);  // 20,15 to 28,21
    EXPECT_EQ(seen[20 * 32 + 27], 0xC0FFEEu);
    EXPECT_EQ(seen[20 * 32 + 28], 0x0000FFu);
    EXPECT_EQ(seen[21 * 32 + 27], 0x0000FFu);
}

// Where a transform that is made next may stand in memory.
[[gnu::noinline]] void leaveNumbersBehind() {
    volatile float memory[512];
    for (volatile float& number : memory) number = 0.25F;
}

TEST_F(D3dSprites, TransformIsOnlyTheScaleWhateverWasInItsMemory) {
    const Rectangle all[] = {{0, 0, 32, 24}, {}, {}, {}};
    EXPECT_EQ(device->clear(all, kClearTarget | kClearDepth, 0xFF0000FF, 1, 0), 0u);
    EXPECT_EQ(device->beginScene(), 0u);
    EXPECT_EQ(sprite->begin(0), 0u);
    leaveNumbersBehind();
    EXPECT_EQ(sprite->setTransform({}), 0u);
    EXPECT_EQ(sprite->draw(*texture, {2, 1, 12, 9}, {5, 7}, 0xFFFFFFFF), 0u);
    EXPECT_EQ(ended(), image());
}

TEST_F(D3dSprites, TexturesSurviveAReset) {
    EXPECT_EQ(device->testCooperativeLevel(), 0u);
    sprite.reset();
    ASSERT_EQ(device->reset(parameters), 0u);
    ASSERT_EQ(device->createSprite(sprite), 0u);
    begin(0);
    EXPECT_EQ(ended(), image());
}

TEST_F(D3dSprites, SurfaceInMemoryIsDrawnOnAndRead) {
    std::unique_ptr<ISpriteSurface> surface;
    ASSERT_EQ(device->createOffscreenSurface({3, 2}, SpriteFormat::X8R8G8B8, surface), 0u);
    TavraDC dc = nullptr;
    ASSERT_EQ(surface->getDC(dc), 0u);
    EXPECT_TRUE(fillSolid(dc, {0, 0, 3, 2}, 0).ok());
    EXPECT_TRUE(fillSolid(dc, {1, 0, 3, 2}, 0x332211).ok());
    EXPECT_EQ(surface->releaseDC(dc), 0u);
    LockedPixels pixels;
    ASSERT_EQ(surface->lock(pixels), 0u);
    std::uint32_t row[3] = {};
    std::memcpy(row, pixels.bits + pixels.pitch, sizeof row);
    EXPECT_EQ(surface->unlock(), 0u);
    EXPECT_EQ(row[0], 0u);
    EXPECT_EQ(row[1], 0x112233u);  // the highest byte is 0
    EXPECT_EQ(row[2], 0x112233u);
}

TEST_F(D3dSprites, ScreenHasASize) {
    DisplayMode mode;
    EXPECT_EQ(object->displayMode(mode), 0u);
    EXPECT_GT(mode.width, 0u);
    EXPECT_GT(mode.height, 0u);
}

}  // namespace
}  // namespace tavra::test
