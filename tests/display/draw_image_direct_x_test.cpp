// Drawing with textures, step by step, on sprites that write down what they are asked for.
#include "display/draw_image_direct_x.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "display/draw_image_factory.h"
#include "platform/paint.h"
#include "support/drawing.h"
#include "support/sprite_double.h"
#include "support/window_double.h"

namespace tavra::test {
namespace {

using platform::sprite_error::kDeviceLost;
using platform::sprite_error::kDeviceNotReset;
using platform::sprite_error::kNotAvailable;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr std::uint32_t kFailure = SpriteDouble::kFailure;
using Log = std::vector<std::string>;
using Area = platform::Rectangle;

class DrawImageDirectX : public testing::Test {
  protected:
    DrawImageDirectX() {
        system.exists = true;
        system.setClient(20, 30, 100, 80);
        EXPECT_TRUE(bitmap.create({5, 3, 24}).ok());
    }

    CDrawImageDirectX& make(std::uint32_t mode = CDrawImageDirectX::kAtOnce, bool preserve = false) {
        return object.emplace(system, sprites, mode, preserve);
    }
    // Images of 5 x 3 in 24 bits.
    CDrawImageDirectX& open(std::uint32_t mode = CDrawImageDirectX::kAtOnce, std::uint32_t bits = 8) {
        make(mode);
        EXPECT_EQ(object->Create(system.handle(), 5, 3, bits), 0u);
        sprites.takeLog();
        return *object;
    }
    std::uint32_t paint(std::uint32_t frame, std::uint32_t rotated = 0, Area source = {0, 0, 5, 3},
                        Area destination = {10, 20, 15, 23},
                        const BackgroundRectangles& background = BackgroundRectangles()) {
        const DrawImageInfo info{nullptr, &bitmap, bitmap.pixels(), rotated, frame};
        return object->Draw(&source, &destination, background, info);
    }
    Log painted(std::uint32_t frame) {
        EXPECT_EQ(paint(frame), 0u);
        return sprites.takeLog();
    }
    // Fills a rectangle of the drawing surface.
    void drawOn(const Rectangle& rectangle, const Color& color) {
        TavraDC dc = nullptr;
        ASSERT_EQ(object->GetDC(&dc), 0u);
        ASSERT_TRUE(fillRectangle(dc, rectangle, color));
        ASSERT_EQ(object->ReleaseDC(dc), 0u);
    }
    void expectNothingHeld() const {
        EXPECT_EQ(sprites.locks, 0);
        EXPECT_FALSE(sprites.sceneOpen);
        EXPECT_FALSE(sprites.spriteOpen);
    }

    WindowDouble system;
    SpriteDouble sprites;
    platform::Bitmap bitmap;
    std::optional<CDrawImageDirectX> object;
};

// The device.

TEST_F(DrawImageDirectX, CreationMakesDeviceTextureAndSprite) {
    make();
    EXPECT_EQ(object->Create(system.handle(), 5, 3, 8), 0u);
    EXPECT_THAT(sprites.log,
                ElementsAre("object", "mode", "device hardware 64 on 100x80", "texture 8x4 xrgb", "sprite"));
    EXPECT_EQ(sprites.window, system.handle());
    sprites.takeLog();
    object.reset();
    EXPECT_THAT(sprites.log,
                ElementsAre("release sprite", "release texture 0", "release device", "release object"));
    EXPECT_EQ(sprites.alive, 0);
}

TEST_F(DrawImageDirectX, PresentModesChooseEffectAndInterval) {
    struct Row {
        std::uint32_t mode;
        platform::SwapEffect effect;
        std::uint32_t interval;
    };
    for (const Row& row : {Row{0, platform::SwapEffect::Discard, 0x80000000u},
                           Row{1, platform::SwapEffect::Copy, 1u}, Row{2, platform::SwapEffect::Copy, 1u}}) {
        open(row.mode);
        const platform::PresentParameters& parameters = sprites.parameters;
        EXPECT_EQ(parameters.swapEffect, row.effect) << row.mode;
        EXPECT_EQ(parameters.interval, row.interval) << row.mode;
        EXPECT_TRUE(parameters.windowed);
        EXPECT_EQ(parameters.backBufferFormat, platform::SpriteFormat::A8R8G8B8);
        EXPECT_EQ(parameters.backBufferCount, 1u);
        EXPECT_EQ(parameters.backBufferWidth, 0u);
        EXPECT_EQ(parameters.backBufferHeight, 0u);
        EXPECT_TRUE(parameters.autoDepthStencil);
        EXPECT_EQ(parameters.depthStencilFormat, 80u);
        EXPECT_EQ(parameters.flags, 0u);
        EXPECT_EQ(parameters.deviceWindow, nullptr);
    }
}

TEST_F(DrawImageDirectX, ThreeKindsOfDeviceAreTried) {
    for (const bool preserve : {false, true}) {
        sprites.results["device"] = kNotAvailable;
        make(0, preserve);
        sprites.takeLog();
        EXPECT_EQ(object->Create(system.handle(), 5, 3, 8), kNotAvailable);
        EXPECT_THAT(sprites.log,
                    ElementsAre("object", "mode",
                                preserve ? "device hardware 66 on 100x80" : "device hardware 64 on 100x80",
                                preserve ? "device hardware 34 on 100x80" : "device hardware 32 on 100x80",
                                preserve ? "device reference 34 on 100x80" : "device reference 32 on 100x80",
                                "release object"));
        EXPECT_EQ(sprites.alive, 0);
        sprites.results.clear();
    }
}

TEST_F(DrawImageDirectX, EachFailureOfCreationReleasesAllAndTheNextPaintTriesAgain) {
    for (const int failing : {0, 1, 3, 4}) {
        make();
        sprites.failAt = failing;
        EXPECT_EQ(object->Create(system.handle(), 5, 3, 8), kFailure) << failing;
        EXPECT_EQ(sprites.alive, 0) << failing;
        sprites.takeLog();
        EXPECT_EQ(paint(1), 0u);
        EXPECT_THAT(sprites.log, Contains("draw " + std::to_string(sprites.textures.size() - 1) +
                                          " from 0,0,5,3 at 10,20"));
        object.reset();
        EXPECT_EQ(sprites.alive, 0) << failing;
    }
}

TEST_F(DrawImageDirectX, OtherKindsOfDeviceStandIn) {
    for (const int failing : {1, 2}) {
        make();
        sprites.takeLog();
        sprites.failDevices = failing;
        EXPECT_EQ(object->Create(system.handle(), 5, 3, 8), 0u);
        EXPECT_EQ(sprites.log[static_cast<std::size_t>(2 + failing)],
                  failing == 1 ? "device hardware 32 on 100x80" : "device reference 32 on 100x80");
    }
}

TEST_F(DrawImageDirectX, DisplayModesNameIt) {
    for (const std::uint8_t mode : {5, 6, 7, 9, 10, 11}) {
        const auto made = makeDrawImage(mode, system);
        EXPECT_NE(dynamic_cast<CDrawImageDirectX*>(made.get()), nullptr) << +mode;
        EXPECT_FALSE(isPlainDisplayMode(mode));
    }
}

// Painting.

TEST_F(DrawImageDirectX, WithoutADrawingOneTextureIsDrawnOpaque) {
    open();
    EXPECT_THAT(painted(1),
                ElementsAre("lockTexture 0", "unlockTexture 0", "beginScene", "begin 0", "transform 1 1",
                            "draw 0 from 0,0,5,3 at 10,20", "end", "endScene", "present"));
}

TEST_F(DrawImageDirectX, SameFrameIsUploadedOnce) {
    open();
    painted(1);
    EXPECT_THAT(painted(1), Not(Contains("lockTexture 0")));
    EXPECT_THAT(painted(2), Contains("lockTexture 0"));
}

TEST_F(DrawImageDirectX, FrameOfTheStartingNumberIsUploadedToo) {
    open();
    EXPECT_THAT(painted(0xFFFFFFFF), Contains("lockTexture 0"));
}

TEST_F(DrawImageDirectX, ScaledImageHasItsCornerDividedByTheScale) {
    open();
    EXPECT_EQ(paint(1, 0, {1, 1, 5, 3}, {20, 30, 28, 31}), 0u);
    EXPECT_THAT(sprites.log, Contains("transform 2 0.5"));
    EXPECT_THAT(sprites.log, Contains("draw 0 from 1,1,5,3 at 10,60"));
}

TEST_F(DrawImageDirectX, EmptySourceIsNotScaled) {
    open();
    EXPECT_EQ(paint(1, 0, {2, 1, 2, 3}, {20, 30, 28, 34}), 0u);
    EXPECT_THAT(sprites.log, Contains("transform 1 1"));
    EXPECT_THAT(sprites.log, Contains("draw 0 from 2,1,2,3 at 20,30"));
}

TEST_F(DrawImageDirectX, EmptyDestinationDrawsOnlyTheStrips) {
    open();
    EXPECT_EQ(paint(1, 0, {0, 0, 5, 3}, {10, 20, 10, 23}, {Area{0, 0, 100, 80}}), 0u);
    EXPECT_THAT(sprites.takeLog(),
                ElementsAre("lockTexture 0", "unlockTexture 0", "clear 4 0,0,100,80 0,0,0,0 0,0,0,0 0,0,0,0",
                            "beginScene", "begin 0", "end", "endScene", "present"));
}

TEST_F(DrawImageDirectX, StripsAreClearedByFourHoweverMany) {
    open();
    const auto cleared = [this](const BackgroundRectangles& strips) {
        sprites.takeLog();
        EXPECT_EQ(paint(1, 0, {0, 0, 5, 3}, {10, 20, 15, 23}, strips), 0u);
        return sprites.log.front();
    };
    painted(1);
    EXPECT_EQ(cleared({Area{0, 0, 10, 80}, {10, 0, 100, 20}, {15, 20, 100, 80}, {10, 23, 15, 80}}),
              "clear 4 0,0,10,80 10,0,100,20 15,20,100,80 10,23,15,80");
    // One without width only is none that is empty; one that is a point is.
    EXPECT_EQ(cleared({Area{0, 0, 0, 80}, {7, 8, 7, 8}, {15, 20, 100, 20}, {0, 0, 0, 0}}),
              "clear 4 0,0,0,80 15,20,100,20 0,0,0,0 0,0,0,0");
    EXPECT_EQ(cleared({Area{3, 3, 3, 3}, {7, 8, 7, 8}, {}, {}}), "beginScene");
}

TEST_F(DrawImageDirectX, ThirdPresentModeReadsTheBackBuffer) {
    open(CDrawImageDirectX::kEachBlankWaiting);
    const Log log = painted(1);
    EXPECT_THAT(Log(log.end() - 6, log.end()),
                ElementsAre("endScene", "backBuffer", "lock backBuffer", "unlock backBuffer",
                            "release backBuffer", "present"));
    sprites.results["lock"] = kFailure;
    EXPECT_THAT(painted(2), Not(Contains("unlock backBuffer")));
    sprites.results["backBuffer"] = kFailure;
    EXPECT_THAT(painted(3), Contains("present"));
    expectNothingHeld();
}

TEST_F(DrawImageDirectX, ImagesOfEachFormatReachTheTexture) {
    struct Row {
        std::uint32_t bits, bitCount;
    };
    for (const Row& row : {Row{1, 8}, Row{8, 24}, Row{32, 32}}) {
        ASSERT_TRUE(bitmap.create({5, 3, row.bitCount}).ok());
        const std::uint32_t bytes = row.bitCount / 8;
        for (std::size_t i = 0; i < bitmap.shape().bytes(); ++i)
            bitmap.pixels()[i] = static_cast<std::uint8_t>(11 * i + 5);
        open(0, row.bits);
        painted(1);
        const SpriteDouble::Texture& texture = *sprites.textures.back();
        for (std::uint32_t y = 0; y < 3; ++y) {
            for (std::uint32_t x = 0; x < 5; ++x) {
                const std::uint8_t* const p = bitmap.pixels() + y * bitmap.shape().stride() + x * bytes;
                const std::uint32_t expected =
                    bytes == 1 ? p[0] * 0x010101u
                               : p[0] + 256u * p[1] + 65536u * p[2] + (bytes == 4 ? 16777216u * p[3] : 0u);
                EXPECT_EQ(texture.pixels[y * 8 + x], expected) << row.bits << ": " << x << "," << y;
            }
        }
    }
}

TEST_F(DrawImageDirectX, RotationRebuildsTheDeviceAndUploadsAgain) {
    open();
    painted(1);
    ASSERT_TRUE(bitmap.create({3, 5, 24}).ok());
    bitmap.pixels()[4 * bitmap.shape().stride() + 2 * 3] = 0x77;
    EXPECT_EQ(paint(1, 1, {0, 0, 3, 5}, {0, 0, 3, 5}), 0u);
    EXPECT_THAT(sprites.takeLog(),
                ElementsAre("release sprite", "release texture 0", "release device", "release object",
                            "object", "mode", "device hardware 64 on 100x80", "texture 4x8 xrgb", "sprite",
                            "lockTexture 1", "unlockTexture 1", "beginScene", "begin 0", "transform 1 1",
                            "draw 1 from 0,0,3,5 at 0,0", "end", "endScene", "present"));
    EXPECT_EQ(sprites.textures[1]->pixels[4 * 4 + 2], 0x77u);
}

TEST_F(DrawImageDirectX, ImageOfAnotherSizeRebuildsTheDevice) {
    open();
    painted(1);
    ASSERT_TRUE(bitmap.create({17, 3, 24}).ok());
    EXPECT_THAT(painted(1), Contains("texture 32x4 xrgb"));
    EXPECT_THAT(painted(1), Not(Contains("lockTexture 1")));
}

TEST_F(DrawImageDirectX, ImageOfAnotherFormatIsRefusedUntilItIsTold) {
    open();
    ASSERT_TRUE(bitmap.create({5, 3, 8}).ok());
    EXPECT_EQ(paint(1), error::kInvalidData);
    expectNothingHeld();
    EXPECT_EQ(object->SetImageSize(5, 3, 1), 0u);
    EXPECT_EQ(paint(1), 0u);
}

TEST_F(DrawImageDirectX, AnotherClientSizeRebuildsTheDevice) {
    open();
    painted(1);
    system.setClient(20, 30, 50, 40);
    const Log log = painted(1);
    EXPECT_THAT(log, Contains("device hardware 64 on 50x40"));
    EXPECT_THAT(log, Contains("lockTexture 1"));
    system.setClient(0, 0, 50, 40);
    EXPECT_THAT(painted(1), Not(Contains("object")));  // a move is none
}

TEST_F(DrawImageDirectX, FailedUploadIsTriedAgainWithTheSameFrame) {
    open();
    sprites.results["lockTexture"] = kFailure;
    EXPECT_EQ(paint(1), kFailure);
    EXPECT_THAT(sprites.takeLog(), ElementsAre("lockTexture 0"));
    sprites.results.clear();
    EXPECT_THAT(painted(1), Contains("lockTexture 0"));
    sprites.results["unlockTexture"] = kFailure;
    EXPECT_EQ(paint(2), kFailure);
    sprites.results.clear();
    EXPECT_THAT(painted(2), Contains("unlockTexture 0"));
}

TEST_F(DrawImageDirectX, EachFailureOfAPaintLeavesNothingHeldAndTheNextSucceeds) {
    open(CDrawImageDirectX::kEachBlankWaiting);
    drawOn({0, 0, 4, 4}, {1, 2, 3});
    painted(1);
    for (int failing = 0;; ++failing) {
        system.setClient(0, 0, 100 + failing % 2, 80);  // a new device each time
        sprites.takeLog();
        sprites.failAt = failing;
        static_cast<void>(paint(7));
        const bool none = sprites.failAt >= 0;
        expectNothingHeld();
        sprites.failAt = -1;
        EXPECT_EQ(paint(7), 0u) << failing;
        EXPECT_THAT(sprites.log, Contains("present"));
        if (none) break;
        ASSERT_LT(failing, 100);
    }
    object.reset();
    EXPECT_EQ(sprites.alive, 0);
}

// The loss of the device.

TEST_F(DrawImageDirectX, LossIsSeenByClearAndPresentAlone) {
    const BackgroundRectangles strips{Area{0, 0, 10, 80}};
    for (const char* const seen : {"clear", "present"}) {
        open();
        painted(1);
        sprites.results = {{seen, kDeviceLost}, {"test", kDeviceNotReset}};
        EXPECT_EQ(paint(1, 0, {0, 0, 5, 3}, {10, 20, 15, 23}, strips), 0u);
        const Log log = sprites.takeLog();
        EXPECT_THAT(Log(log.end() - 5, log.end()),
                    ElementsAre("present", "test", "release sprite", "reset", "sprite"));
        sprites.results.clear();
        EXPECT_THAT(painted(1), Not(Contains("lockTexture 0")));  // no image is lost
    }
    for (const char* const unseen : {"beginScene", "begin", "draw", "end", "endScene"}) {
        open();
        sprites.results = {{unseen, kDeviceLost}};
        static_cast<void>(paint(1));
        EXPECT_THAT(sprites.log, Not(Contains("test"))) << unseen;
        expectNothingHeld();
        sprites.results.clear();
    }
}

TEST_F(DrawImageDirectX, OnlyADeviceThatMayBeResetIsReset) {
    open();
    painted(1);
    sprites.results = {{"present", kDeviceLost}};
    for (const std::uint32_t level : {0u, kDeviceLost, kNotAvailable}) {
        sprites.results["test"] = level;
        EXPECT_EQ(paint(1), level);
        EXPECT_EQ(sprites.takeLog().back(), "test");
    }
}

TEST_F(DrawImageDirectX, FailedResetEndsAndIsTriedAgain) {
    open();
    painted(1);
    sprites.results = {{"present", kDeviceLost}, {"test", kDeviceNotReset}, {"reset", kDeviceLost}};
    EXPECT_EQ(paint(1), kDeviceLost);
    EXPECT_EQ(sprites.takeLog().back(), "reset");
    sprites.results.erase("reset");
    EXPECT_EQ(paint(1), 0u);
    EXPECT_EQ(sprites.takeLog().back(), "sprite");
    sprites.results.clear();
    EXPECT_THAT(painted(1), Contains("draw 0 from 0,0,5,3 at 10,20"));
}

TEST_F(DrawImageDirectX, SpriteThatAResetCouldNotMakeIsMadeLater) {
    open();
    painted(1);
    sprites.results = {{"present", kDeviceLost}, {"test", kDeviceNotReset}, {"sprite", kFailure}};
    EXPECT_EQ(paint(1), kFailure);
    sprites.results = {{"sprite", kFailure}};
    sprites.takeLog();
    EXPECT_THAT(painted(1), ElementsAre("sprite", "beginScene", "endScene", "present"));
    sprites.results.clear();
    EXPECT_THAT(painted(1), Contains("draw 0 from 0,0,5,3 at 10,20"));
}

// The application's drawing.

TEST_F(DrawImageDirectX, FirstContextMakesSurfaceAndTextureInTheKeyColour) {
    open();
    EXPECT_EQ(object->SetColorKey(0x0000FF), 0u);  // red
    TavraDC dc = nullptr;
    EXPECT_EQ(object->GetDC(&dc), 0u);
    EXPECT_NE(dc, nullptr);
    EXPECT_THAT(sprites.takeLog(),
                ElementsAre("surface 100x80 xrgb", "texture 128x128 argb", "getDC", "releaseDC", "getDC"));
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
    EXPECT_THAT(sprites.takeLog(), ElementsAre("releaseDC", "lock surface", "lockTexture 1",
                                               "unlockTexture 1", "unlock surface"));
    EXPECT_EQ(sprites.textures[1]->pixels[0], 0xFF0000u);
    EXPECT_EQ(sprites.textures[1]->pixels[79 * 128 + 99], 0xFF0000u);
    EXPECT_EQ(sprites.textures[1]->pixels[100], 0xDDDDDDDDu);  // beyond the surface nothing is copied
    EXPECT_EQ(sprites.textures[1]->pixels[80 * 128], 0xDDDDDDDDu);
    EXPECT_EQ(object->GetDC(&dc), 0u);
    EXPECT_THAT(sprites.takeLog(), ElementsAre("getDC"));  // they stay
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
}

TEST_F(DrawImageDirectX, DrawingGetsTheAlphaOfItsRelease) {
    open();
    object->alphaMask = 0x80000000;
    drawOn({3, 2, 1, 1}, {0x11, 0x22, 0x33});
    const std::vector<std::uint32_t>& pixels = sprites.textures[1]->pixels;
    EXPECT_EQ(pixels[2 * 128 + 3], 0x80112233u);
    EXPECT_EQ(pixels[2 * 128 + 4], 0x00FF00FFu);
    object->alphaMask = 0;
    EXPECT_EQ(pixels[2 * 128 + 3], 0x80112233u);
    drawOn({4, 2, 1, 1}, {0, 0, 0});
    EXPECT_EQ(pixels[2 * 128 + 3], 0x00112233u);
    EXPECT_EQ(pixels[2 * 128 + 4], 0u);
}

TEST_F(DrawImageDirectX, DrawingIsBlendedOverTheImageInItsOwnSize) {
    open();
    drawOn({0, 0, 1, 1}, {1, 1, 1});
    sprites.takeLog();
    EXPECT_EQ(paint(1, 0, {0, 0, 5, 3}, {20, 30, 30, 36}), 0u);
    EXPECT_THAT(sprites.takeLog(),
                ElementsAre("lockTexture 0", "unlockTexture 0", "beginScene", "begin 16", "transform 2 2",
                            "draw 0 from 0,0,5,3 at 10,15", "transform 1 1", "draw 1 from 0,0,10,6 at 10,15",
                            "end", "endScene", "present"));
}

TEST_F(DrawImageDirectX, ResetAndKeyColourRemoveTheDrawing) {
    open();
    for (const bool reset : {true, false}) {
        drawOn({0, 0, 1, 1}, {1, 1, 1});
        EXPECT_THAT(painted(1), Contains("begin 16"));
        EXPECT_EQ(reset ? object->ResetOverlay() : object->SetColorKey(0x123456), 0u);
        EXPECT_THAT(painted(1), Contains("begin 0"));
    }
    std::uint32_t key = 0;
    EXPECT_EQ(object->GetColorKey(&key), 0u);
    EXPECT_EQ(key, 0x123456u);
}

TEST_F(DrawImageDirectX, EachFailureOfAContextLeavesNothingHeld) {
    open();
    TavraDC dc = nullptr;
    for (int failing = 0; failing < 5; ++failing) {
        dc = &dc;
        sprites.failAt = failing;
        EXPECT_EQ(object->GetDC(&dc), kFailure) << failing;
        EXPECT_EQ(dc, nullptr);
        expectNothingHeld();
        EXPECT_EQ(paint(1), 0u);  // unlocked
        EXPECT_EQ(object->ResetOverlay(), 0u);
    }
    for (int failing = 0; failing < 5; ++failing) {
        ASSERT_EQ(object->GetDC(&dc), 0u);
        sprites.failAt = failing;
        EXPECT_EQ(object->ReleaseDC(dc), kFailure) << failing;
        expectNothingHeld();
        EXPECT_EQ(paint(1), 0u);
    }
}

TEST_F(DrawImageDirectX, WithoutADeviceThereIsNoContext) {
    make();
    sprites.results["object"] = error::kModuleNotFound;
    EXPECT_EQ(object->Create(system.handle(), 5, 3, 8), error::kModuleNotFound);
    TavraDC dc = nullptr;
    EXPECT_EQ(object->GetDC(&dc), kNotAvailable);
    EXPECT_EQ(object->ReleaseDC(dc), 0u);  // there is nothing to release
}

TEST_F(DrawImageDirectX, WhileAContextIsOutPaintingIsPutOff) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    sprites.takeLog();
    EXPECT_EQ(paint(1), 0u);
    EXPECT_THAT(sprites.log, IsEmpty());
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
    EXPECT_THAT(painted(1), Contains("lockTexture 0"));  // the image that was put off, too
}

TEST_F(DrawImageDirectX, WhileAContextIsOutSizesArePutOff) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    sprites.takeLog();
    system.setClient(0, 0, 60, 50);
    EXPECT_EQ(object->CheckSize(0, 60, 50), 0u);
    EXPECT_EQ(object->SetImageSize(9, 9, 1), 0u);
    EXPECT_THAT(sprites.log, IsEmpty());
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
    EXPECT_THAT(sprites.log, Contains("device hardware 64 on 60x50"));
    EXPECT_THAT(sprites.log, Contains("texture 16x16 xrgb"));
}

TEST_F(DrawImageDirectX, OwnContextAtHandNothingWaitsForItself) {
    open();
    TavraDC dc = nullptr, second = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    EXPECT_EQ(object->GetDC(&second), CDrawImageDirectX::kWouldDeadlock);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(object->SetColorKey(1), CDrawImageDirectX::kWouldDeadlock);
    EXPECT_EQ(object->ResetOverlay(), CDrawImageDirectX::kWouldDeadlock);
    std::uint32_t key = 0;
    EXPECT_EQ(object->GetColorKey(&key), 0u);
    EXPECT_EQ(key, 0xFF00FFu);
    EXPECT_EQ(object->ReleaseDC(&dc), error::kInvalidArgument);
    EXPECT_EQ(object->ReleaseDC(second), 0u);
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 1, 1}, {1, 2, 3}));  // still good
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
    EXPECT_EQ(object->ReleaseDC(dc), CDrawImageDirectX::kNotOwner);
}

TEST_F(DrawImageDirectX, OnlyTheThreadThatHasAContextReleasesIt) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    std::thread([&] { EXPECT_EQ(object->ReleaseDC(dc), CDrawImageDirectX::kNotOwner); }).join();
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
}

TEST_F(DrawImageDirectX, OtherThreadsWaitForTheContext) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    sprites.takeLog();
    auto reset = std::async(std::launch::async, [this] { return object->ResetOverlay(); });
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 100, 80}, {1, 2, 3}));
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
    EXPECT_EQ(reset.get(), 0u);
    EXPECT_EQ(sprites.log.front(), "releaseDC");
    EXPECT_EQ(sprites.log.back(), "release surface");
}

TEST_F(DrawImageDirectX, EndOfTheWindowSendsAwayWhoWaits) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    auto other = std::async(std::launch::async, [this] {
        TavraDC waited = nullptr;
        return object->GetDC(&waited);
    });
    auto reset = std::async(std::launch::async, [this] { return object->ResetOverlay(); });
    auto key = std::async(std::launch::async, [this] { return object->SetColorKey(1); });
    object->endWaiting();
    EXPECT_EQ(other.get(), kNotAvailable);
    EXPECT_EQ(reset.get(), kNotAvailable);
    EXPECT_EQ(key.get(), kNotAvailable);
    EXPECT_TRUE(fillRectangle(dc, {0, 0, 1, 1}, {1, 2, 3}));
    EXPECT_EQ(object->ReleaseDC(dc), 0u);
}

TEST_F(DrawImageDirectX, EndsWithAContextThatIsOut) {
    open();
    TavraDC dc = nullptr;
    ASSERT_EQ(object->GetDC(&dc), 0u);
    object.reset();
    EXPECT_EQ(sprites.alive, 0);
}

}  // namespace
}  // namespace tavra::test
