// Single regions: pasted into the canvas, and found in a frame.
#include <gmock/gmock.h>

#include "stages/multi_roi_fixture.h"

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

TEST_F(MultiRoiImage, TheCanvasIsGivenWithTheLastRegionOfAFrame) {
    setup({{0, 0, 1, 1}, {2, 0, 1, 1}, {4, 0, 1, 1}});
    const std::uint8_t pixel = 1;
    const auto paste = [&](std::uint64_t id) {
        return stage->PasteRegion(id, &pixel, 1, kMono8, 0, 0, 1, 1, 0) != nullptr;
    };
    EXPECT_FALSE(paste(5));
    EXPECT_FALSE(paste(5));
    EXPECT_TRUE(paste(5));
    EXPECT_TRUE(paste(5)) << "and with any more of them";
    EXPECT_FALSE(paste(6));
    EXPECT_FALSE(paste(5)) << "another frame begins anew, also one that has been";
    EXPECT_FALSE(paste(5));
    EXPECT_TRUE(paste(5));
}

TEST_F(MultiRoiImage, FramesThatAllHaveIdZeroCountOn) {
    setup({{0, 0, 2, 1}, {4, 0, 2, 1}});
    Bytes whole{1, 2, 3, 4};
    Bytes cut{5, 6, 7};
    EXPECT_EQ(compose(cut), nullptr) << "one region of two";
    EXPECT_NE(compose(whole), nullptr);
    const std::uint8_t* const image = compose(cut);
    ASSERT_NE(image, nullptr) << "counted with those of the frames before";
    EXPECT_THAT(canvas(image), ElementsAre(5, 6, 3, 4));
    setup({{0, 0, 2, 1}, {4, 0, 2, 1}});
    EXPECT_NE(compose(cut), nullptr) << "a setup does not forget them";
}

TEST_F(MultiRoiImage, RowsAreTakenAtTheSourceStride) {
    setup({{10, 20, 3, 2}, {100, 20, 1, 2}});
    const Bytes wide{1, 2, 3, 99, 99, 4, 5, 6};
    EXPECT_EQ(stage->PasteRegion(1, wide.data(), 8, kMono8, 10, 20, 3, 2, 5), nullptr);
    const Bytes dense{7, 8};
    const std::uint8_t* image = stage->PasteRegion(1, dense.data(), 2, kMono8, 100, 20, 1, 2, 0);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 3, 7, 4, 5, 6, 8));
    const Bytes overlapping{1, 2, 3, 4};
    image = stage->PasteRegion(1, overlapping.data(), 4, kMono8, 10, 20, 3, 2, 1);
    ASSERT_NE(image, nullptr) << "a stride shorter than a row";
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 3, 7, 2, 3, 4, 8));
}

TEST_F(MultiRoiImage, RowsBehindTheSourceAreRefused) {
    setup({{0, 0, 3, 2}, {10, 0, 1, 2}});
    const Bytes pixels(16, 1);
    const auto paste = [&](std::uint64_t size, std::uint32_t width, std::uint64_t height,
                           std::uint64_t stride) {
        return stage->PasteRegion(0, pixels.data(), size, kMono8, 0, 0, width, height, stride);
    };
    constexpr std::uint64_t kHuge = ~std::uint64_t{0};
    EXPECT_EQ(paste(5, 3, 2, 0), nullptr);
    EXPECT_EQ(paste(2, 3, 1, 0), nullptr);
    EXPECT_EQ(paste(7, 3, 2, 5), nullptr);
    EXPECT_EQ(paste(16, 3, 2, kHuge), nullptr);
    EXPECT_EQ(paste(16, 3, kHuge, 0), nullptr);
    EXPECT_EQ(paste(16, 0xFFFFFFFF, 1, 0), nullptr);
    EXPECT_EQ(paste(0, 1, 1, 0), nullptr);
    EXPECT_EQ(stage->PasteRegion(0, nullptr, 16, kMono8, 0, 0, 3, 2, 0), nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 0u) << "not even a canvas was made";
    EXPECT_EQ(paste(6, 3, 2, 0), nullptr) << "none of them was counted";
    EXPECT_NE(paste(8, 3, 2, 5), nullptr) << "the last row needs no stride";
}

TEST_F(MultiRoiImage, WhatLiesBehindTheCanvasIsLeftOut) {
    setup({{0, 0, 2, 1}, {4, 1, 2, 1}});
    const Bytes pixels(64, 8);
    const auto paste = [&](std::uint64_t x, std::uint64_t y, std::uint32_t width, std::uint64_t height) {
        stage->ClearComposed();
        const std::uint8_t* const image =
            stage->PasteRegion(0, pixels.data(), 64, kMono8, x, y, width, height, 0);
        return image != nullptr ? canvas(image) : Bytes{};
    };
    paste(0, 0, 1, 1);
    EXPECT_THAT(paste(4, 1, 2, 1), ElementsAre(0, 0, 0, 0, 0, 0, 8, 8));
    EXPECT_THAT(paste(4, 1, 20, 3), ElementsAre(0, 0, 0, 0, 0, 0, 8, 8));
    EXPECT_THAT(paste(5, 0, 1, 64), ElementsAre(0, 0, 0, 8, 0, 0, 0, 8));
    EXPECT_THAT(paste(0, 2, 2, 2), Each(0)) << "row 2 is none of the canvas";
    EXPECT_THAT(paste(0, 0, 0, 5), Each(0));
    EXPECT_THAT(paste(0, 0, 5, 0), Each(0));
    constexpr std::uint64_t kFar = ~std::uint64_t{0};
    EXPECT_THAT(paste(kFar, 0, 2, 2), Each(0));
    EXPECT_THAT(paste(0, kFar, 2, 2), Each(0));
    EXPECT_THAT(paste(kFar / 8, kFar / 8, 2, 2), Each(0));
    // A column that no region covers stays as it is: 6 is the third of the second row, counted on.
    EXPECT_THAT(paste(6, 0, 1, 1), ElementsAre(0, 0, 0, 0, 0, 0, 8, 0));
    EXPECT_THAT(paste(3, 0, 3, 1), ElementsAre(0, 0, 0, 8, 8, 8, 0, 0));
}

// Packed formats

TEST_F(MultiRoiImage, PackedRowsBeginAtTheRoundedByte) {
    // 3 pixels of 10 bits take 4 bytes, 2 take 3; the canvas has 5 pixels, 7 bytes. Column 3 begins at bit
    // 30, so at byte 4.
    setup({{0, 0, 3, 2}, {8, 0, 2, 2}});
    Bytes frame{1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 13, 14, 15, 16};
    const std::uint8_t* const image = compose(frame, kMono10Packed);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 7u);
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 3, 4, 11, 12, 13, 5, 6, 7, 8, 14, 15, 16));
}

TEST_F(MultiRoiImage, APackedRowMayReachIntoTheOneBelowButNotBehindTheCanvas) {
    // 1 + 1 pixels of 10 bits: rows of 3 bytes, the second pixel at byte 2, two bytes long.
    setup({{0, 0, 1, 2}, {8, 0, 1, 2}});
    Bytes frame{1, 2, 3, 4, 11, 12, 13, 14};
    const std::uint8_t* const image = compose(frame, kMono10Packed);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 3u);
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 11, 12, 4, 13));
}

struct Found {
    std::ptrdiff_t offset;
    std::uint64_t x, y, width, height, stride;

    bool operator==(const Found&) const = default;
};

class RegionInFrame : public MultiRoiImage {
  protected:
    Found find(std::uint32_t index, std::uint64_t frameSize, std::uint64_t format = kMono8) {
        Found found{-1, 7, 7, 7, 7, 7};
        const std::uint8_t* const region =
            stage->GetRegionImage(index, frame.data(), frameSize, format, &found.x, &found.y, &found.width,
                                  &found.height, &found.stride);
        if (region != nullptr) found.offset = region - frame.data();
        return found;
    }

    static constexpr Found kNone{-1, 7, 7, 7, 7, 7};
    Bytes frame = Bytes(4096);
};

TEST_F(RegionInFrame, FollowsThoseBeforeIt) {
    setup({{5, 6, 3, 2}, {1, 1, 1, 1, false}, {10, 20, 4, 5}, {30, 2, 2, 1}});
    EXPECT_EQ(find(0, 28), (Found{0, 5, 6, 3, 2, 3}));
    EXPECT_EQ(find(1, 28), (Found{6, 10, 20, 4, 5, 4}));
    EXPECT_EQ(find(2, 28), (Found{26, 30, 2, 2, 1, 2}));
    EXPECT_EQ(find(1, 4096, kMono10Packed), (Found{8, 10, 20, 4, 5, 5})) << "2 rows of 4 bytes before it";
    EXPECT_EQ(find(2, 4096, kMono16), (Found{52, 30, 2, 2, 1, 4}));
}

TEST_F(RegionInFrame, IsNotThereWhenTheFrameEndsBeforeIt) {
    setup({{5, 6, 3, 2}, {10, 20, 4, 5}, {30, 2, 2, 1}});
    EXPECT_EQ(find(0, 5), kNone);
    EXPECT_EQ(find(0, 6).offset, 0);
    EXPECT_EQ(find(1, 25), kNone);
    EXPECT_EQ(find(2, 25), kNone) << "one before it is cut off";
    EXPECT_EQ(find(2, 27), kNone);
    EXPECT_EQ(find(3, 4096), kNone);
    EXPECT_EQ(find(0xFFFFFFFF, 4096), kNone);
    std::uint64_t out = 0;
    EXPECT_EQ(stage->GetRegionImage(0, nullptr, 4096, kMono8, &out, &out, &out, &out, &out), nullptr);
}

TEST_F(RegionInFrame, OfAComposedFrameIsACellOfTheGrid) {
    // Columns 10 + 20 wide, rows 3 + 4 high.
    const std::vector<Rect> cells{{0, 0, 10, 3}, {50, 0, 20, 3}, {0, 90, 10, 4}, {50, 90, 20, 4}};
    setup(cells, 1, 2);
    EXPECT_EQ(find(0, 210), (Found{0, 0, 0, 10, 3, 30}));
    EXPECT_EQ(find(1, 210), (Found{10, 50, 0, 20, 3, 30}));
    EXPECT_EQ(find(2, 210), (Found{90, 0, 90, 10, 4, 30}));
    EXPECT_EQ(find(3, 210), (Found{100, 50, 90, 20, 4, 30}));
    EXPECT_EQ(find(3, 209), kNone);
    EXPECT_EQ(find(2, 190), (Found{90, 0, 90, 10, 4, 30})) << "its last row ends at 3 x 30 + 3 x 30 + 10";
    EXPECT_EQ(find(2, 189), kNone);
    EXPECT_EQ(find(4, 4096), kNone);
    // 30 pixels of 10 bits: 38 bytes; 10 of them: 13.
    EXPECT_EQ(find(3, 4096, kMono10Packed), (Found{3 * 38 + 13, 50, 90, 20, 4, 38}));
}

TEST_F(RegionInFrame, OfAComposedFrameLiesWhereTheSensorHasIt) {
    setup({{50, 90, 20, 4}, {0, 90, 10, 4}, {50, 0, 20, 3}, {0, 0, 10, 3}}, 1, 2);
    EXPECT_EQ(find(0, 210), (Found{100, 50, 90, 20, 4, 30}));
    EXPECT_EQ(find(1, 210), (Found{90, 0, 90, 10, 4, 30}));
    EXPECT_EQ(find(2, 210), (Found{10, 50, 0, 20, 3, 30}));
    EXPECT_EQ(find(3, 210), (Found{0, 0, 0, 10, 3, 30}));
}

}  // namespace
}  // namespace tavra::test
