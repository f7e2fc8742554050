// Sprites with OpenGL on an X server of the test's own, as whatever draws with them sees them.
#include "platform/linux/gl_device.h"

#include <gtest/gtest.h>

#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "platform/paint.h"
#include "platform/sprite_device.h"
#include "support/x_server.h"

namespace tavra::test {
namespace {

using namespace platform;
using Picture = std::vector<std::uint32_t>;

constexpr Size kClient{8, 6};
constexpr std::uint32_t kBlue = 0x0000FF, kWhite = 0xFFFFFFFF;

class GlSprites : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(server.started()) << "Xvfb does not start: scripts/install-deps test";
        window = server.makeWindow(8, 6);
        waitForWindow();
        ASSERT_EQ(spriteSystem().createObject(object), 0u);
        ASSERT_EQ(object->createDevice(request(), parameters, device), 0u);
        ASSERT_EQ(device->createTexture({8, 8}, SpriteFormat::X8R8G8B8, texture), 0u);
        ASSERT_EQ(device->createSprite(sprite), 0u);
        fill(*texture, [](std::uint32_t x, std::uint32_t y) { return 0x102030 + x + 256 * y; });
    }
    // The window exists before another connection uses it.
    void waitForWindow() { EXPECT_FALSE(server.pixels(window, 1, 1).empty()); }

    DeviceRequest request() const {
        return {DeviceKind::Hardware, reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(window)),
                kClient, kHardwareVertices};
    }
    template <typename Rule>
    static void fill(ISpriteTexture& texture, Rule rule) {
        LockedPixels pixels;
        ASSERT_EQ(texture.lock(pixels), 0u);
        for (std::uint32_t y = 0; y < 8; ++y) {
            for (std::uint32_t x = 0; x < 8; ++x) {
                const std::uint32_t value = rule(x, y);
                std::memcpy(pixels.bits + y * pixels.pitch + 4 * std::size_t{x}, &value, 4);
            }
        }
        ASSERT_EQ(texture.unlock(), 0u);
    }
    // A blue window with a part of the texture in it.
    void draw(const Rectangle& source, const SpritePosition& position, std::uint32_t color = kWhite) {
        const Rectangle all[] = {{0, 0, 8, 6}};
        EXPECT_EQ(device->clear(all, kClearTarget | kClearDepth, 0xFF000000 | kBlue, 1, 0), 0u);
        EXPECT_EQ(device->beginScene(), 0u);
        EXPECT_EQ(sprite->begin(0), 0u);
        EXPECT_EQ(sprite->setTransform({}), 0u);
        EXPECT_EQ(sprite->draw(*texture, source, position, color), 0u);
        EXPECT_EQ(sprite->end(), 0u);
        EXPECT_EQ(device->endScene(), 0u);
    }
    static Picture expected(const Rectangle& source, std::uint32_t left, std::uint32_t top) {
        Picture picture(8 * 6, kBlue);
        for (std::int32_t y = source.top; y < source.bottom; ++y) {
            for (std::int32_t x = source.left; x < source.right; ++x) {
                const auto at = (top + static_cast<std::uint32_t>(y - source.top)) * 8 + left +
                                static_cast<std::uint32_t>(x - source.left);
                picture[at] =
                    0x102030u + static_cast<std::uint32_t>(x) + 256u * static_cast<std::uint32_t>(y);
            }
        }
        return picture;
    }

    XServer server;
    xcb_window_t window = 0;
    PresentParameters parameters;
    std::unique_ptr<ISpriteObject> object;
    std::unique_ptr<ISpriteDevice> device;
    std::unique_ptr<ISpriteTexture> texture;
    std::unique_ptr<ISprite> sprite;
};

TEST_F(GlSprites, PartOfATextureLandsOnItsPlace) {
    draw({2, 1, 6, 4}, {3, 2});
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, expected({2, 1, 6, 4}, 3, 2)));
    draw({0, 0, 8, 6}, {0, 0});  // rows that the first did not need
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, expected({0, 0, 8, 6}, 0, 0)));
}

TEST_F(GlSprites, ClearedRectanglesAreThose) {
    draw({0, 0, 8, 6}, {0, 0});
    const Rectangle some[] = {{0, 0, 2, 1}, {6, 4, 100, 100}, {-5, 2, 1, 3}, {3, 3, 3, 6}, {5, 5, 4, 0}};
    EXPECT_EQ(device->clear(some, kClearTarget, 0xFF00FF00, 1, 0), 0u);
    EXPECT_EQ(device->present(), 0u);
    Picture picture = expected({0, 0, 8, 6}, 0, 0);
    for (const std::size_t at : {0, 1, 16, 38, 39, 46, 47}) picture[at] = 0x00FF00;
    EXPECT_TRUE(server.looksLike(window, kClient, picture));
}

TEST_F(GlSprites, ColourMultiplies) {
    fill(*texture, [](std::uint32_t, std::uint32_t) { return 0x80C0FFu; });
    draw({0, 0, 8, 6}, {0, 0}, 0xFFFF00FF);
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, Picture(48, 0x8000FF)));
}

// Blue first, then a corner of the texture without anything cleared.
TEST_F(GlSprites, CopiedBackBufferStaysAsItWasDrawn) {
    parameters.swapEffect = SwapEffect::Copy;
    sprite.reset();
    ASSERT_EQ(device->reset(parameters), 0u);
    ASSERT_EQ(device->createSprite(sprite), 0u);
    draw({}, {0, 0});
    ASSERT_EQ(device->present(), 0u);
    for (std::int32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(device->beginScene(), 0u);
        EXPECT_EQ(sprite->begin(0), 0u);
        EXPECT_EQ(sprite->setTransform({}), 0u);
        EXPECT_EQ(sprite->draw(*texture, {1, 2, 3, 4}, {static_cast<float>(2 * i), 1}, kWhite), 0u);
        EXPECT_EQ(sprite->end(), 0u);
        EXPECT_EQ(device->endScene(), 0u);
        ASSERT_EQ(device->present(), 0u);
    }
    Picture kept = expected({1, 2, 3, 4}, 0, 1);
    for (const std::uint32_t left : {2u, 4u}) {
        const Picture next = expected({1, 2, 3, 4}, left, 1);
        for (std::size_t i = 0; i < kept.size(); ++i) {
            if (next[i] != kBlue) kept[i] = next[i];
        }
    }
    EXPECT_TRUE(server.looksLike(window, kClient, kept));
}

TEST_F(GlSprites, EmptySourceDrawsNothing) {
    draw({4, 4, 4, 6}, {0, 0});
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, Picture(48, kBlue)));
}

TEST_F(GlSprites, BackBufferIsReadTopRowFirst) {
    draw({0, 0, 8, 5}, {0, 1});
    std::unique_ptr<ISpriteSurface> back;
    ASSERT_EQ(device->backBuffer(back), 0u);
    LockedPixels pixels;
    ASSERT_EQ(back->lock(pixels), 0u);
    const Picture wanted = expected({0, 0, 8, 5}, 0, 1);
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        std::uint32_t value = 0;
        std::memcpy(&value, pixels.bits + i / 8 * pixels.pitch + i % 8 * 4, 4);
        EXPECT_EQ(value & 0xFFFFFF, wanted[i]) << i;
    }
    EXPECT_EQ(back->unlock(), 0u);
    back.reset();
    EXPECT_EQ(device->present(), 0u);
}

TEST_F(GlSprites, TexturesSurviveAReset) {
    draw({0, 0, 8, 6}, {0, 0});
    EXPECT_EQ(device->present(), 0u);
    EXPECT_EQ(device->testCooperativeLevel(), 0u);
    sprite.reset();
    ASSERT_EQ(device->reset(parameters), 0u);
    ASSERT_EQ(device->createSprite(sprite), 0u);
    draw({1, 1, 8, 6}, {0, 0});
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, expected({1, 1, 8, 6}, 0, 0)));
}

// While it lives, threads ask for more stack than there is, and do not start.
class NoThreads {
  public:
    NoThreads() {
        pthread_getattr_default_np(&before_);
        pthread_attr_t attributes = before_;
        EXPECT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{1} << 50), 0);
        EXPECT_EQ(pthread_setattr_default_np(&attributes), 0);
    }
    ~NoThreads() { EXPECT_EQ(pthread_setattr_default_np(&before_), 0); }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;

  private:
    pthread_attr_t before_{};
};

TEST_F(GlSprites, ResetThatFailsIsToBeTriedAgain) {
    draw({0, 0, 8, 6}, {0, 0});
    EXPECT_EQ(device->present(), 0u);
    sprite.reset();
    {
        const NoThreads none;
        EXPECT_NE(device->reset(parameters), 0u);
    }
    EXPECT_EQ(device->testCooperativeLevel(), sprite_error::kDeviceNotReset);
    EXPECT_EQ(device->present(), sprite_error::kDeviceLost);
    ASSERT_EQ(device->reset(parameters), 0u);
    EXPECT_EQ(device->testCooperativeLevel(), 0u);
    ASSERT_EQ(device->createSprite(sprite), 0u);
    draw({1, 1, 8, 6}, {0, 0});
    EXPECT_EQ(device->present(), 0u);
    EXPECT_TRUE(server.looksLike(window, kClient, expected({1, 1, 8, 6}, 0, 0)));
}

// What one thread has drawn, another goes on with; and the texture of a thread that draws nothing may go.
TEST_F(GlSprites, AnyThreadAtATime) {
    std::unique_ptr<ISpriteTexture> other;
    ASSERT_EQ(device->createTexture({8, 8}, SpriteFormat::A8R8G8B8, other), 0u);
    draw({0, 0, 8, 6}, {0, 0});
    EXPECT_EQ(sprite->draw(*other, {0, 0, 1, 1}, {0, 0}, kWhite), 0u);
    EXPECT_EQ(device->present(), 0u);
    std::thread([&] {
        other.reset();
        draw({0, 0, 4, 4}, {4, 2});
        EXPECT_EQ(device->present(), 0u);
    }).join();
    EXPECT_TRUE(server.looksLike(window, kClient, expected({0, 0, 4, 4}, 4, 2)));
}

TEST_F(GlSprites, SurfaceInMemoryIsDrawnOnAndRead) {
    std::unique_ptr<ISpriteSurface> surface;
    ASSERT_EQ(device->createOffscreenSurface({3, 2}, SpriteFormat::X8R8G8B8, surface), 0u);
    TavraDC dc = nullptr, second = nullptr;
    ASSERT_EQ(surface->getDC(dc), 0u);
    EXPECT_NE(surface->getDC(second), 0u);
    EXPECT_TRUE(fillSolid(dc, {1, 0, 3, 2}, 0x332211).ok());
    EXPECT_NE(surface->releaseDC(nullptr), 0u);
    EXPECT_EQ(surface->releaseDC(dc), 0u);
    LockedPixels pixels;
    ASSERT_EQ(surface->lock(pixels), 0u);
    std::uint32_t row[3] = {};
    std::memcpy(row, pixels.bits + pixels.pitch, sizeof row);
    EXPECT_EQ(row[0], 0u);
    EXPECT_EQ(row[1], 0x112233u);  // the highest byte is 0
    EXPECT_EQ(row[2], 0x112233u);
    EXPECT_EQ(surface->unlock(), 0u);
}

TEST_F(GlSprites, WhatCannotBeMadeSaysSo) {
    std::unique_ptr<ISpriteTexture> vast;
    EXPECT_EQ(device->createTexture({0x80000000, 8}, SpriteFormat::X8R8G8B8, vast),
              sprite_error::kInvalidCall);
    EXPECT_EQ(vast, nullptr);
    DeviceRequest nowhere = request();
    std::unique_ptr<ISpriteDevice> none;
    for (const std::uintptr_t number : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{1} << 40}) {
        nowhere.window = reinterpret_cast<TavraWindow>(number);
        EXPECT_EQ(object->createDevice(nowhere, parameters, none), error::kInvalidWindowHandle);
    }
    EXPECT_EQ(none, nullptr);
}

TEST_F(GlSprites, ServerThatIsGoneIsALossForGood) {
    draw({0, 0, 8, 6}, {0, 0});
    server.kill();
    EXPECT_EQ(device->present(), sprite_error::kDeviceLost);
    EXPECT_EQ(device->testCooperativeLevel(), sprite_error::kDeviceLost);
    EXPECT_EQ(device->beginScene(), sprite_error::kDeviceLost);
}

TEST_F(GlSprites, WindowThatIsGoneIsALossForGood) {
    draw({0, 0, 8, 6}, {0, 0});
    server.destroy(window);
    EXPECT_TRUE(server.pixels(window, 1, 1).empty());  // the server has done it
    EXPECT_EQ(device->present(), sprite_error::kDeviceLost);
    EXPECT_EQ(device->testCooperativeLevel(), sprite_error::kDeviceLost);
    EXPECT_EQ(device->beginScene(), sprite_error::kDeviceLost);
}

// A machine where something is missing.

TEST(GlMissing, NoServerIsNoDisplay) {
    setenv("DISPLAY", ":63999", 1);
    std::unique_ptr<ISpriteObject> object;
    EXPECT_EQ(spriteSystem().createObject(object), 1459u);
    EXPECT_EQ(object, nullptr);
}

TEST(GlMissing, LibrariesThatAreNotInstalled) {
    for (const char* const missing : {"libEGL.so.1", "libGLESv2.so.2"}) {
        static const char* absent;
        absent = missing;
        static int anything;
        const GlLoader loader{[](const char* name) -> void* {
                                  return std::strcmp(name, absent) == 0 ? nullptr
                                                                        : static_cast<void*>(&anything);
                              },
                              [](void*, const char*) -> void* { return nullptr; }};
        GlLibrary library;
        EXPECT_EQ(loadGl(loader, library), Status(error::kModuleNotFound)) << missing;
    }
}

TEST(GlMissing, LibrariesThatLackAnOperation) {
    static int anything;
    static const auto found =
        +[](const char*) -> __eglMustCastToProperFunctionPointerType { return nullptr; };
    const GlLoader everything{[](const char*) -> void* { return &anything; },
                              [](void*, const char* name) -> void* {
                                  if (std::strcmp(name, "eglGetProcAddress") != 0) return &anything;
                                  return reinterpret_cast<void*>(found);
                              }};
    GlLibrary library;
    EXPECT_EQ(loadGl(everything, library), Status(error::kOperationNotFound));  // the extension
    const GlLoader lacking{[](const char*) -> void* { return &anything; },
                           [](void*, const char* name) -> void* {
                               return std::strcmp(name, "glFinish") == 0 ? nullptr : &anything;
                           }};
    EXPECT_EQ(loadGl(lacking, library), Status(error::kOperationNotFound));
}

// In a process of its own, because what implements OpenGL is looked for once.
TEST(GlMissingDeathTest, LibrariesWithoutAnImplementation) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nowhere.json", 1);
            XServer server;
            std::unique_ptr<ISpriteObject> object;
            const std::uint32_t result = spriteSystem().createObject(object);
            server.kill();
            _exit(result == sprite_error::kNotAvailable ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tavra::test
