#include "stages/multi_roi_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>
#include <vector>

#include "stages/factory.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t kMono8 = 0x01080001;
constexpr std::uint64_t kMono10Packed = 0x010A0046;
constexpr std::uint64_t kMono12Packed = 0x010C0047;
constexpr std::uint64_t kMono16 = 0x01100007;

struct Rect {
    std::uint32_t x, y, width, height;
    bool enabled = true;
};

class Layout final : public IRegionInfo {
  public:
    explicit Layout(std::vector<Rect> all, std::uint32_t regionMode = 0)
        : rects(std::move(all)), mode(regionMode) {}

    std::uint32_t GetMaxROICount() override {
        if (count != 0) return count;
        return static_cast<std::uint32_t>(rects.size());
    }
    std::uint32_t GetROIMode() override { return mode; }
    void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                std::uint32_t* width, std::uint32_t* height) override {
        if (index == failsAt) throw std::runtime_error("no answer");
        const Rect rect = rects.at(index);
        *enabled = rect.enabled ? 1 : 0;
        *x = rect.x;
        *y = rect.y;
        *width = rect.width;
        *height = rect.height;
    }
    std::uint32_t GetROIGroup() override { return 0; }

    std::vector<Rect> rects;
    std::uint32_t mode;
    std::uint32_t count = 0;  // in place of the number of rectangles
    std::uint32_t failsAt = 0xFFFFFFFF;
};

struct Release {
    void operator()(IMultiROIImage* stage) const { stage->Release(); }
};

class MultiRoiImage : public testing::Test {
  protected:
    std::uint32_t setup(std::vector<Rect> rects, std::uint32_t alignment = 1, std::uint32_t mode = 0) {
        Layout layout(std::move(rects), mode);
        return stage->Setup(&layout, alignment);
    }
    Bytes canvas(const std::uint8_t* image) {
        return {image, image + stage->GetComposedStride() * stage->GetComposedSize(1)};
    }
    std::uint8_t* compose(Bytes& frame, std::uint64_t format = kMono8, std::uint64_t id = 0) {
        return stage->Compose(id, frame.data(), frame.size(), format);
    }

    std::unique_ptr<IMultiROIImage, Release> stage{static_cast<IMultiROIImage*>(CreateStageObject(160))};
};

// Every region of a frame of its own value: 1, 2, ...
Bytes plainFrame(const std::vector<Rect>& rects, std::size_t pixelBytes = 1) {
    Bytes frame;
    std::uint8_t value = 0;
    for (const Rect& rect : rects) {
        frame.insert(frame.end(), std::size_t{rect.width} * rect.height * pixelBytes, ++value);
    }
    return frame;
}

// Setup

TEST_F(MultiRoiImage, GapsBetweenRegionsVanish) {
    const std::vector<Rect> rects{{0, 0, 100, 100}, {200, 0, 100, 100}};
    EXPECT_EQ(setup(rects), 2u);
    EXPECT_EQ(stage->GetRegionCount(), 2u);
    EXPECT_EQ(stage->GetComposedSize(0), 200u);
    EXPECT_EQ(stage->GetComposedSize(1), 100u);
    Bytes frame = plainFrame(rects);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 200u);
    for (std::size_t y = 0; y < 100; ++y) {
        ASSERT_THAT(Bytes(image + y * 200, image + y * 200 + 100), Each(1)) << y;
        ASSERT_THAT(Bytes(image + y * 200 + 100, image + y * 200 + 200), Each(2)) << y;
    }
}

TEST_F(MultiRoiImage, WhatNoRegionCoversStaysZero) {
    const std::vector<Rect> rects{{0, 0, 100, 100}, {200, 300, 100, 100}};
    setup(rects);
    EXPECT_EQ(stage->GetComposedSize(0), 200u);
    EXPECT_EQ(stage->GetComposedSize(1), 200u);
    Bytes frame = plainFrame(rects);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    for (std::size_t y = 0; y < 200; ++y) {
        for (std::size_t x = 0; x < 200; ++x) {
            const int expected = x < 100 && y < 100 ? 1 : x >= 100 && y >= 100 ? 2 : 0;
            ASSERT_EQ(image[y * 200 + x], expected) << x << ", " << y;
        }
    }
}

TEST_F(MultiRoiImage, OverlappingRegionsCountOnceAndTheLaterOneIsOnTop) {
    const std::vector<Rect> rects{{0, 0, 100, 100}, {50, 0, 100, 100}};
    setup(rects);
    EXPECT_EQ(stage->GetComposedSize(0), 150u);
    EXPECT_EQ(stage->GetComposedSize(1), 100u);
    Bytes frame = plainFrame(rects);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    for (std::size_t y = 0; y < 100; ++y) {
        ASSERT_THAT(Bytes(image + y * 150, image + y * 150 + 50), Each(1)) << y;
        ASSERT_THAT(Bytes(image + y * 150 + 50, image + y * 150 + 150), Each(2)) << y;
    }
}

TEST_F(MultiRoiImage, RegionsThatAreOffOrEmptyAreLeftOut) {
    EXPECT_EQ(
        setup({{0, 0, 10, 10}, {100, 0, 10, 10, false}, {200, 0, 0, 10}, {300, 0, 10, 0}, {400, 50, 20, 5}}),
        2u);
    EXPECT_EQ(stage->GetComposedSize(0), 30u);
    EXPECT_EQ(stage->GetComposedSize(1), 15u);
    Bytes frame = plainFrame({{0, 0, 10, 10}, {0, 0, 20, 5}});
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image[0], 1);
    EXPECT_EQ(image[10 * 30 + 10], 2);
}

TEST_F(MultiRoiImage, OtherAxesHaveNoSize) {
    setup({{0, 0, 3, 4}, {3, 4, 1, 1}});
    for (std::int32_t axis : {-1, 2, 0x7FFFFFFF}) EXPECT_EQ(stage->GetComposedSize(axis), 0u) << axis;
}

TEST_F(MultiRoiImage, BeforeAnySetupThereIsNothing) {
    Bytes frame(100);
    EXPECT_EQ(stage->GetRegionCount(), 0u);
    EXPECT_EQ(stage->GetComposedSize(0), 0u);
    EXPECT_EQ(stage->GetComposedStride(), 0u);
    EXPECT_EQ(compose(frame), nullptr);
    EXPECT_EQ(stage->PasteRegion(0, frame.data(), 100, kMono8, 0, 0, 1, 1, 0), nullptr);
    stage->ClearComposed();
    EXPECT_EQ(stage->Setup(nullptr, 1), 0u);
}

TEST_F(MultiRoiImage, ALayoutThatCannotBeReadToItsEndIsKeptAsFarAsItWasRead) {
    Layout layout({{0, 0, 4, 4}, {10, 0, 5, 4}, {20, 0, 6, 4}});
    layout.failsAt = 2;
    EXPECT_EQ(stage->Setup(&layout, 1), 2u);
    EXPECT_EQ(stage->GetComposedSize(0), 9u);
    layout.failsAt = 0;
    EXPECT_EQ(stage->Setup(&layout, 1), 0u);
    EXPECT_EQ(stage->GetComposedSize(0), 0u);
}

TEST_F(MultiRoiImage, MoreRegionsThanThereCanBeAreNotAskedFor) {
    std::vector<Rect> rects;
    for (std::uint32_t i = 0; i < 40; ++i) rects.push_back({10 * i, 10 * i, 4, 4});
    Layout layout(rects);
    layout.count = 0xFFFFFFFF;
    EXPECT_EQ(stage->Setup(&layout, 1), 32u);
    EXPECT_EQ(stage->GetComposedSize(0), 128u);
}

TEST_F(MultiRoiImage, ANewSetupReplacesLayoutAndCanvas) {
    setup({{0, 0, 4, 1}, {8, 0, 4, 1}});
    Bytes frame{1, 1, 1, 1, 2, 2, 2, 2};
    ASSERT_NE(compose(frame), nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 8u);
    setup({{8, 0, 2, 1}, {0, 0, 1, 1}});
    EXPECT_EQ(stage->GetComposedStride(), 0u);
    EXPECT_EQ(stage->GetComposedSize(0), 3u);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(1, 1, 1)) << "column 0 of the sensor, then 8 and 9";
}

// Axis

TEST(CoveredAxisOfRegions, AgreesWithASetOfPlaces) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        CoveredAxis axis;
        std::set<std::uint64_t> places;
        const std::uint32_t count = 1 + random() % 32;
        const std::uint32_t span = 1 + random() % 200;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint64_t start = random() % span, length = random() % 12;
            axis.add(start, length);
            for (std::uint64_t at = start; at < start + length; ++at) places.insert(at);
        }
        ASSERT_EQ(axis.total(), places.size());
        for (std::uint64_t at = 0; at < span + 20; ++at) {
            const auto found = places.find(at);
            const std::uint64_t expected =
                found == places.end() ? at : static_cast<std::uint64_t>(std::distance(places.begin(), found));
            ASSERT_EQ(axis.compressed(at), expected) << "place " << at << ", round " << round;
        }
        axis.clear();
        ASSERT_EQ(axis.total(), 0u);
        ASSERT_EQ(axis.compressed(3), 3u);
    }
}

TEST(CoveredAxisOfRegions, OneThatReachesOverManyFillsTheGaps) {
    CoveredAxis axis;
    for (std::uint64_t start : {10, 30, 50}) axis.add(start, 10);
    axis.add(0, 100);
    EXPECT_EQ(axis.total(), 100u);
    EXPECT_EQ(axis.compressed(99), 99u);
}

TEST(CoveredAxisOfRegions, TheMostIntervalsThatThereCanBeFit) {
    CoveredAxis axis;
    for (std::uint64_t i = 0; i < 31; ++i) axis.add(4 * i + 2, 2);
    axis.add(0, 126);  // 31 intervals, and the 31 gaps before them
    EXPECT_EQ(axis.total(), 126u);
    EXPECT_EQ(axis.compressed(125), 125u);
}

// The canvas

TEST_F(MultiRoiImage, CanvasRowsAreRoundedUpToTheAlignment) {
    const std::vector<Rect> rects{{0, 0, 100, 2}, {50, 0, 100, 2}};
    Bytes frame = plainFrame(rects);
    const auto strideWith = [&](std::uint32_t alignment) {
        setup(rects, alignment);
        return compose(frame) != nullptr ? stage->GetComposedStride() : 0;
    };
    EXPECT_EQ(strideWith(0), 150u);
    EXPECT_EQ(strideWith(1), 150u);
    EXPECT_EQ(strideWith(4), 152u);
    EXPECT_EQ(strideWith(7), 154u);
    EXPECT_EQ(strideWith(150), 150u);
    EXPECT_EQ(strideWith(256), 256u);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(Bytes(image + 150, image + 256), Each(0)) << "the padding stays as it was made";
    EXPECT_EQ(image[256], 1);
}

TEST_F(MultiRoiImage, TheCanvasIsKeptFromFrameToFrame) {
    setup({{0, 0, 2, 2}, {5, 5, 2, 2}});
    Bytes frame(8, 9);
    const std::uint8_t* const first = compose(frame);
    const FailAllocationsFrom all(0);
    EXPECT_EQ(compose(frame), first);
    stage->ClearComposed();
    EXPECT_EQ(compose(frame), first);
}

TEST_F(MultiRoiImage, AnotherPixelFormatMakesANewCanvas) {
    const std::vector<Rect> rects{{0, 0, 2, 1}, {4, 1, 2, 1}};
    setup(rects);
    Bytes bytes{1, 2, 3, 4};
    const std::uint8_t* image = compose(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 0, 0, 0, 0, 3, 4));
    Bytes words{1, 0, 2, 0, 3, 0, 4, 0};
    image = compose(words, kMono16);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(stage->GetComposedStride(), 8u);
    EXPECT_THAT(canvas(image), ElementsAre(1, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 4, 0));
    // As many bits, another code: zeroed all the same.
    Bytes half{5, 6};
    EXPECT_NE(compose(bytes, kMono8), nullptr);
    image = compose(half, 0x01080009);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(5, 6, 0, 0, 0, 0, 0, 0));
}

TEST_F(MultiRoiImage, OnlyTheBitsOfThePixelFormatCount) {
    setup({{0, 0, 2, 1}, {4, 0, 2, 1}});
    Bytes frame{1, 2, 3, 4};
    const std::uint8_t* const image = compose(frame, 0xFFFFFFFF'FF08FFFF);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(1, 2, 3, 4));
}

TEST_F(MultiRoiImage, AnUnknownPixelFormatComposesNothing) {
    setup({{0, 0, 2, 1}, {4, 0, 2, 1}});
    Bytes frame(100);
    EXPECT_EQ(compose(frame, 0), nullptr);
    EXPECT_EQ(stage->PasteRegion(0, frame.data(), 100, 0, 0, 0, 2, 1, 0), nullptr);
    std::uint64_t x, y, width, height, stride;
    EXPECT_EQ(stage->GetRegionImage(0, frame.data(), 100, 0, &x, &y, &width, &height, &stride), nullptr);
}

TEST_F(MultiRoiImage, ClearComposedZeroesTheCanvas) {
    setup({{0, 0, 3, 1}, {4, 0, 3, 1}}, 4);
    Bytes frame(6, 255);
    const std::uint8_t* const image = compose(frame);
    ASSERT_NE(image, nullptr);
    stage->ClearComposed();
    EXPECT_THAT(canvas(image), Each(0));
}

TEST_F(MultiRoiImage, WithoutMemoryThereIsNoImageAndTheNextFrameTriesAgain) {
    setup({{0, 0, 50, 50}, {100, 100, 50, 50}});
    Bytes frame(5000, 3);
    {
        const FailAllocationsFrom large(10000);
        EXPECT_EQ(compose(frame), nullptr);
        EXPECT_EQ(stage->PasteRegion(0, frame.data(), 5000, kMono8, 0, 0, 50, 50, 0), nullptr);
    }
    EXPECT_EQ(stage->PasteRegion(0, frame.data(), 5000, kMono8, 0, 0, 50, 50, 0), nullptr)
        << "the first that counts";
    EXPECT_NE(stage->PasteRegion(0, frame.data(), 5000, kMono8, 100, 100, 50, 50, 0), nullptr);
}

TEST_F(MultiRoiImage, CanvasesThatNoMemoryHoldsGiveNoImage) {
    constexpr std::uint32_t kMost = 0xFFFFFFFF;
    std::vector<Rect> rects{{0, 0, 1, 1}};
    for (std::uint32_t i = 0; i < 31; ++i) rects.push_back({kMost - i, kMost - i, kMost, kMost});
    setup(rects);
    EXPECT_EQ(stage->GetRegionCount(), 32u);
    Bytes frame(64, 1);
    for (const std::uint64_t format : {kMono8, kMono10Packed, std::uint64_t{0x00FF0000}}) {
        EXPECT_EQ(compose(frame, format), nullptr) << std::hex << format;
    }
    std::uint64_t x, y, width, height, stride;
    EXPECT_EQ(stage->GetRegionImage(31, frame.data(), ~std::uint64_t{0}, 0x00FF0000, &x, &y, &width, &height,
                                    &stride),
              nullptr);
}

// Pasting

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

// Frames

TEST_F(MultiRoiImage, RegionsBehindTheEndOfTheFrameAreSkipped) {
    setup({{0, 0, 2, 2}, {4, 0, 2, 2}, {8, 0, 1, 1}});
    Bytes frame{1, 1, 1, 1, 2, 2, 2};
    EXPECT_EQ(compose(frame, kMono8, 1), nullptr);
    frame.push_back(2);
    EXPECT_EQ(compose(frame, kMono8, 2), nullptr);
    frame.push_back(3);
    const std::uint8_t* const image = compose(frame, kMono8, 3);
    ASSERT_NE(image, nullptr);
    EXPECT_THAT(canvas(image), ElementsAre(1, 1, 2, 2, 3, 1, 1, 2, 2, 0));
    frame.resize(3);
    EXPECT_EQ(compose(frame, kMono8, 3), nullptr) << "none of its regions is whole";
    frame.clear();
    EXPECT_EQ(compose(frame, kMono8, 3), nullptr);
    EXPECT_EQ(stage->Compose(3, nullptr, 100, kMono8), nullptr);
}

TEST_F(MultiRoiImage, AFrameThatTheCameraComposedGoesOnAsItIs) {
    setup({{0, 0, 2, 2}, {4, 0, 2, 2}}, 1, 2);
    Bytes frame{1, 2, 3, 4, 5, 6, 7, 8};
    const Bytes before = frame;
    EXPECT_EQ(compose(frame), frame.data());
    EXPECT_EQ(frame, before);
    EXPECT_EQ(stage->GetComposedSize(0), 4u);
    EXPECT_EQ(stage->GetComposedStride(), 0u) << "there is no canvas";
    setup({{0, 0, 2, 2}, {4, 0, 2, 2}}, 1, 3);
    EXPECT_NE(compose(frame), frame.data()) << "any other mode is composed here";
}

// One pixel after another, and one byte after another where pixels are packed.
Bytes composedPlainly(const std::vector<Rect>& rects, const Bytes& frame, std::size_t bits,
                      std::size_t alignment) {
    std::set<std::size_t> columns, rows;
    for (const Rect& rect : rects) {
        for (std::uint32_t i = 0; i < rect.width; ++i) columns.insert(rect.x + i);
        for (std::uint32_t i = 0; i < rect.height; ++i) rows.insert(rect.y + i);
    }
    const auto bytesOf = [bits](std::size_t pixels) { return pixels * bits / 8 + (pixels * bits % 8 != 0); };
    std::size_t stride = bytesOf(columns.size());
    while (stride % alignment != 0) ++stride;
    Bytes image(stride * rows.size());
    std::size_t at = 0;
    for (const Rect& rect : rects) {
        const auto left = std::distance(columns.begin(), columns.find(rect.x));
        const auto top = std::distance(rows.begin(), rows.find(rect.y));
        for (std::uint32_t y = 0; y < rect.height; ++y) {
            for (std::size_t i = 0; i < bytesOf(rect.width); ++i, ++at) {
                const std::size_t to = (static_cast<std::size_t>(top) + y) * stride +
                                       bytesOf(static_cast<std::size_t>(left)) + i;
                if (to < image.size()) image[to] = frame.at(at);
            }
        }
    }
    return image;
}

TEST_F(MultiRoiImage, AgreesWithPlainComposition) {
    std::mt19937 random(3);
    const auto below = [&](std::uint32_t limit) { return static_cast<std::uint32_t>(random() % limit); };
    struct Format {
        std::uint64_t code;
        std::size_t bits;
    };
    const Format formats[] = {{kMono8, 8}, {kMono10Packed, 10}, {kMono12Packed, 12}, {kMono16, 16}};
    for (int round = 0; round < 200; ++round) {
        const Format format = formats[below(4)];
        std::vector<Rect> rects(2 + below(31));
        std::size_t bytes = 0;
        for (Rect& rect : rects) {
            rect = {below(60), below(60), 1 + below(20), 1 + below(20)};
            bytes += (rect.width * format.bits + 7) / 8 * rect.height;
        }
        Bytes frame(bytes + below(3));
        for (std::uint8_t& byte : frame) byte = static_cast<std::uint8_t>(random());
        const std::uint32_t alignment = 1 + below(8);
        ASSERT_EQ(setup(rects, alignment), rects.size());
        const std::uint8_t* const image = compose(frame, format.code, static_cast<std::uint64_t>(round) + 1);
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(canvas(image), composedPlainly(rects, frame, format.bits, alignment)) << round;
    }
}

// Regions in the frame

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

// The object

TEST_F(MultiRoiImage, ComesFromTheFactoryWithCountOne) {
    EXPECT_EQ(stage->AddRef(), 2u);
    EXPECT_EQ(stage->Release(), 1u);
}

}  // namespace
}  // namespace tavra::test
