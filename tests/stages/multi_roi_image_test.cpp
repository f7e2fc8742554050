#include "stages/multi_roi_image.h"

#include <gmock/gmock.h>

#include <iterator>
#include <random>
#include <set>

#include "stages/multi_roi_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

using testing::Each;
using testing::ElementsAre;

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
    for (int round = 0; round < 2000; ++round) {
        const Format format = formats[below(4)];
        std::vector<Rect> rects(2 + below(round % 8 == 0 ? 31 : 5));
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

// The object

TEST_F(MultiRoiImage, ComesFromTheFactoryWithCountOne) {
    EXPECT_EQ(stage->AddRef(), 2u);
    EXPECT_EQ(stage->Release(), 1u);
}

}  // namespace
}  // namespace tavra::test
