#include "camera/image_buffer_set.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tavra {
namespace {

TEST(ImageBufferSet, ThreeZeroedImagesOfTheShape) {
    ImageBufferSet set;
    ASSERT_TRUE(set.create({5, 3, 24}).ok());
    EXPECT_EQ(set.shape().stride(), 16u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        const std::uint8_t* const pixels = set.image(i).bitmap.pixels();
        ASSERT_NE(pixels, nullptr);
        EXPECT_TRUE(std::all_of(pixels, pixels + 48, [](std::uint8_t byte) { return byte == 0; }));
    }
    EXPECT_NE(set.image(0).bitmap.pixels(), set.image(1).bitmap.pixels());
}

TEST(ImageBufferSet, TheChosenImageIsNeitherShownNorReady) {
    ImageBufferSet set;
    ASSERT_TRUE(set.create({4, 4, 8}).ok());
    // Ready and then shown by choice, ready by choice: the image that is left.
    const std::uint32_t chosen[3][3] = {{1, 2, 1}, {2, 0, 0}, {1, 0, 0}};
    for (std::uint32_t display = 0; display < 3; ++display) {
        for (std::uint32_t ready = 0; ready < 3; ++ready) {
            set.publish(display);
            EXPECT_EQ(set.takeReady(), display);
            set.publish(ready);
            const std::uint32_t image = set.chooseFree(100 + ready);
            EXPECT_EQ(image, chosen[display][ready]) << display << ' ' << ready;
            EXPECT_EQ(set.image(image).frameNumber, 100 + ready);
        }
    }
}

// A reader of a newer image must not set free the one that is being drawn.
TEST(ImageBufferSet, TheImageThatIsDrawnIsNotChosenWhateverIsReadMeanwhile) {
    for (std::uint32_t drawn = 0; drawn < 3; ++drawn) {
        ImageBufferSet set;
        ASSERT_TRUE(set.create({4, 4, 8}).ok());
        set.publish(drawn);
        set.drawReady([&](const ImageBufferSet::Image& image) {
            ASSERT_EQ(&image, &set.image(drawn));
            for (std::uint32_t frame = 0; frame < 6; ++frame) {
                const std::uint32_t chosen = set.chooseFree(frame);
                EXPECT_NE(chosen, drawn);
                set.publish(chosen);
                set.lookAtReady([&](const platform::BitmapShape&, const ImageBufferSet::Image& ready) {
                    EXPECT_EQ(&ready, &set.image(chosen)) << "the newest is read";
                });
            }
        });
        const std::uint32_t next = set.chooseFree(7);
        set.publish(next);
        set.lookAtReady([](const platform::BitmapShape&, const ImageBufferSet::Image&) {});
        EXPECT_EQ(set.chooseFree(8), next == 0 ? 1u : 0u) << "the one that was read is the shown one";
    }
}

TEST(ImageBufferSet, AnEmptyPictureCanBeMade) {
    ImageBufferSet set;
    EXPECT_TRUE(set.create({0, 0, 8}).ok());
    EXPECT_TRUE(set.create({0, 0xFFFFFFFF, 24}).ok());
}

TEST(ImageBufferSet, SizesThatOverflowAreOutOfMemory) {
    ImageBufferSet set;
    ASSERT_TRUE(set.create({4, 4, 8}).ok());
    for (const platform::BitmapShape shape : {platform::BitmapShape{0x20000000, 1, 8},
                                              {0x08000000, 1, 32},
                                              {0xFFFFFFFF, 0xFFFFFFFF, 32},
                                              {65536, 65536, 8},
                                              {0x15555555, 2, 24}}) {
        EXPECT_EQ(set.create(shape).code(), 8u) << shape.width;
        EXPECT_EQ(set.image(0).bitmap.pixels(), nullptr);
        EXPECT_EQ(set.shape().width, 0u);
    }
}

TEST(ImageBufferSet, DestroyForgetsTheIndices) {
    ImageBufferSet set;
    ASSERT_TRUE(set.create({4, 4, 8}).ok());
    set.publish(2);
    set.destroy();
    EXPECT_EQ(set.takeReady(), 0u);
    EXPECT_EQ(set.image(1).bitmap.pixels(), nullptr);
}

}  // namespace
}  // namespace tavra
