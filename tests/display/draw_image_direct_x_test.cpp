// Drawing with textures: a paint, step by step.
#include "display/draw_image_direct_x.h"

#include "display/draw_image_direct_x_fixture.h"

namespace tavra::test {
namespace {

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

}  // namespace
}  // namespace tavra::test
