// Drawing with textures: the application's own drawing, and the context that it draws with.
#include <future>
#include <thread>

#include "display/draw_image_direct_x_fixture.h"

namespace tavra::test {
namespace {

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
