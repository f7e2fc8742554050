// Drawing with textures: how the device is made, lost and reset.
#include "display/draw_image_direct_x_fixture.h"
#include "display/draw_image_factory.h"

namespace tavra::test {
namespace {

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

}  // namespace
}  // namespace tavra::test
