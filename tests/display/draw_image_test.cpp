// What all back-ends share: the client area that they know, and the clipping of what they are to draw.
#include "display/draw_image.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/window_double.h"

namespace tavra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A back-end that writes down what it is told.
class Backend final : public CDrawImage {
  public:
    using CDrawImage::CDrawImage;
    using CDrawImage::clientRect;
    using CDrawImage::desktopRect;
    using CDrawImage::hasLastDraw;
    using CDrawImage::imageBits;
    using CDrawImage::imageHeight;
    using CDrawImage::imageWidth;
    using CDrawImage::lastBackground;
    using CDrawImage::lastDest;
    using CDrawImage::lastFrameId;
    using CDrawImage::lastSource;

    std::uint32_t OnSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) override {
        log.push_back("size " + std::to_string(kind) + " " + std::to_string(width) + "x" +
                      std::to_string(height));
        return result;
    }
    std::uint32_t OnMove(std::int32_t x, std::int32_t y) override {
        log.push_back("move " + std::to_string(x) + "," + std::to_string(y));
        return result;
    }
    std::uint32_t Initialize() override {
        log.push_back("initialize");
        return result;
    }
    std::uint32_t DrawImage(const Rectangle& from, const Rectangle& to, const BackgroundRectangles&,
                            const DrawImageInfo& info) override {
        log.push_back("draw");
        source = from;
        destination = to;
        EXPECT_NE(lastFrameId, info.frameId);  // still the image before
        return result;
    }

    std::vector<std::string> log;
    Rectangle source, destination;
    std::uint32_t result = 0;
};

class DrawImage : public testing::Test {
  protected:
    DrawImage() {
        system.exists = true;
        system.setClient(20, 30, 100, 80);
    }
    void create() {
        ASSERT_EQ(backend.Create(system.handle(), 64, 48, 8), 0u);
        backend.log.clear();
    }
    void draw(const Rectangle& source, const Rectangle& destination) {
        DrawImageInfo info;
        info.frameId = ++frame;
        EXPECT_EQ(backend.Draw(&source, &destination, {}, info), 0u);
    }

    WindowDouble system;
    Backend backend{system};
    std::uint32_t frame = 0;
};

TEST_F(DrawImage, CreateTakesTheRectanglesAndInitializes) {
    EXPECT_EQ(backend.Create(system.handle(), 64, 48, 32), 0u);
    EXPECT_EQ(backend.desktopRect, (Rectangle{0, 0, 1280, 1024}));
    EXPECT_EQ(backend.clientRect, (Rectangle{20, 30, 120, 110}));
    EXPECT_EQ(backend.imageWidth, 64u);
    EXPECT_EQ(backend.imageHeight, 48u);
    EXPECT_EQ(backend.imageBits, 32u);
    EXPECT_EQ(backend.lastFrameId, 0xFFFFFFFFu);
    EXPECT_EQ(backend.alphaMask, 0xFF000000u);
    EXPECT_THAT(backend.log, ElementsAre("initialize"));
}

TEST_F(DrawImage, CreateGivesTheResultOfInitialize) {
    backend.result = 77;
    EXPECT_EQ(backend.Create(system.handle(), 64, 48, 8), 77u);
}

TEST_F(DrawImage, CreateWithoutADesktopDoesNotInitialize) {
    system.desktopResult = Status(6);
    EXPECT_EQ(backend.Create(system.handle(), 64, 48, 8), 6u);
    EXPECT_THAT(backend.log, IsEmpty());
}

TEST_F(DrawImage, ClientAreaWithoutASizeIsOnePixel) {
    system.setClient(7, 9, 0, 0);
    create();
    EXPECT_EQ(backend.clientRect, (Rectangle{7, 9, 8, 10}));
}

TEST_F(DrawImage, ClientAreaWithoutASizeIsToldOnce) {
    create();
    for (const int width : {0, 7}) {
        system.setClient(20, 30, width, 0);
        draw({0, 0, 64, 48}, {0, 0, 64, 48});
        EXPECT_THAT(backend.log, ElementsAre("size 0 " + std::to_string(width == 0 ? 1 : 7) + "x1", "draw"));
        backend.log.clear();
        draw({0, 0, 64, 48}, {0, 0, 64, 48});
        EXPECT_THAT(backend.log, ElementsAre("draw")) << "nothing has changed since";
        backend.log.clear();
    }
}

TEST_F(DrawImage, CheckMoveTellsPositionOrSizeOrNothing) {
    create();
    EXPECT_EQ(backend.CheckMove(), 0u);
    EXPECT_THAT(backend.log, IsEmpty());
    system.setClient(25, 28, 100, 80);
    EXPECT_EQ(backend.CheckMove(), 0u);
    EXPECT_THAT(backend.log, ElementsAre("move 25,28"));
    backend.log.clear();
    system.setClient(26, 28, 101, 80);  // both: the size counts
    EXPECT_EQ(backend.CheckMove(), 0u);
    EXPECT_THAT(backend.log, ElementsAre("size 0 101x80"));
}

TEST_F(DrawImage, CheckSizeTellsOnlyAChangedSize) {
    create();
    system.setClient(25, 28, 100, 80);
    EXPECT_EQ(backend.CheckSize(2, 100, 80), 0u);
    EXPECT_THAT(backend.log, IsEmpty());
    EXPECT_EQ(backend.clientRect.left, 25);
    system.setClient(25, 28, 100, 60);
    EXPECT_EQ(backend.CheckSize(2, 100, 60), 0u);
    EXPECT_THAT(backend.log, ElementsAre("size 2 100x60"));
}

TEST_F(DrawImage, FailedReadingOfTheClientAreaChangesNothing) {
    create();
    system.clientResult = Status(1);
    EXPECT_EQ(backend.CheckMove(), WindowDouble::kInvalidWindow);
    EXPECT_EQ(backend.CheckSize(0, 5, 5), WindowDouble::kInvalidWindow);
    EXPECT_EQ(backend.clientRect, (Rectangle{20, 30, 120, 110}));
    EXPECT_THAT(backend.log, IsEmpty());
}

TEST_F(DrawImage, CreationWithoutTheClientAreaGoesOn) {
    system.clientResult = Status(1);
    EXPECT_EQ(backend.Create(system.handle(), 64, 48, 8), 0u);
    EXPECT_THAT(backend.log, ElementsAre("initialize"));
    EXPECT_EQ(backend.clientRect, Rectangle());
    system.clientResult = Status();
    draw({0, 0, 64, 48}, {0, 0, 64, 48});
    EXPECT_THAT(backend.log, ElementsAre("initialize", "size 0 100x80", "draw")) << "told when it is known";
}

// The image is drawn as the client area was, and cut to it.
TEST_F(DrawImage, DrawingWithoutTheClientAreaGoesOn) {
    create();
    system.setClient(3, 4, 50, 40);
    system.clientResult = Status(1);
    draw({0, 0, 200, 160}, {0, 0, 200, 160});
    EXPECT_THAT(backend.log, ElementsAre("draw"));
    EXPECT_EQ(backend.destination, (Rectangle{0, 0, 100, 80}));
    EXPECT_EQ(backend.hasLastDraw, 1u);
    system.clientResult = Status();
    draw({0, 0, 200, 160}, {0, 0, 200, 160});
    EXPECT_THAT(backend.log, ElementsAre("draw", "size 0 50x40", "draw"));
}

TEST_F(DrawImage, DrawTellsASizeBeforeIt) {
    create();
    system.setClient(0, 0, 50, 40);
    draw({0, 0, 64, 48}, {0, 0, 50, 40});
    EXPECT_THAT(backend.log, ElementsAre("size 0 50x40", "draw"));
    backend.log.clear();
    system.setClient(3, 0, 50, 40);
    draw({0, 0, 64, 48}, {0, 0, 50, 40});
    EXPECT_THAT(backend.log, ElementsAre("move 3,0", "draw"));
}

TEST_F(DrawImage, NothingIsCutInside) {
    create();
    draw({1, 2, 61, 42}, {10, 20, 40, 60});
    EXPECT_EQ(backend.source, (Rectangle{1, 2, 61, 42}));
    EXPECT_EQ(backend.destination, (Rectangle{10, 20, 40, 60}));
}

// Drawn twice as large, so that two pixels outside are one of the source.
TEST_F(DrawImage, WhatLiesOutsideIsCutInProportion) {
    create();
    draw({0, 0, 100, 30}, {-30, 0, 170, 60});
    // left: trunc(-30 / 2 - 0.5) = -15; right: (170 - 100) / 2 + 0.5 = 35.5, truncated 35
    EXPECT_EQ(backend.source, (Rectangle{15, 0, 65, 30}));
    EXPECT_EQ(backend.destination, (Rectangle{0, 0, 100, 60}));
    draw({0, 0, 30, 60}, {0, -21, 30, 99});
    // top: trunc(-21 / 2 - 0.5) = trunc(-11) = -11; bottom: (99 - 80) / 2 + 0.5 = 10
    EXPECT_EQ(backend.source, (Rectangle{0, 11, 30, 50}));
    EXPECT_EQ(backend.destination, (Rectangle{0, 0, 30, 80}));
}

TEST_F(DrawImage, DestinationLeftOfTheWindowTurnsTheSourceOver) {
    create();
    draw({0, 0, 100, 50}, {-300, 0, -200, 50});
    // trunc(-300 - 0.5) = -300
    EXPECT_EQ(backend.source, (Rectangle{300, 0, 100, 50}));
    EXPECT_EQ(backend.destination, (Rectangle{0, 0, -200, 50}));
}

TEST_F(DrawImage, EmptySourceIsNotCut) {
    create();
    draw({5, 5, 5, 25}, {-10, 0, 300, 20});
    EXPECT_EQ(backend.source, (Rectangle{5, 5, 5, 25}));
    EXPECT_EQ(backend.destination, (Rectangle{-10, 0, 300, 20}));
}

TEST_F(DrawImage, ExtremeRectanglesDoNoHarm) {
    constexpr std::int32_t kLeast = INT32_MIN, kMost = INT32_MAX;
    create();
    draw({0, 0, 64, 48}, {kLeast, kLeast, kMost, kMost});
    EXPECT_EQ(backend.destination, (Rectangle{0, 0, 100, 80}));
    draw({kLeast, kLeast, kMost, kMost}, {-5, -5, -5, -5});
    EXPECT_TRUE(backend.destination.empty());
    draw({0, 0, 64, 48}, {200, 90, 200, 90});
    EXPECT_TRUE(backend.destination.empty());
}

TEST_F(DrawImage, LastDrawIsKept) {
    create();
    EXPECT_EQ(backend.hasLastDraw, 0u);
    const Rectangle source{0, 0, 100, 50}, destination{-10, 0, 90, 50};
    const BackgroundRectangles strips{Rectangle{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}};
    DrawImageInfo info;
    info.frameId = 41;
    backend.Draw(&source, &destination, strips, info);
    EXPECT_EQ(backend.hasLastDraw, 1u);
    EXPECT_EQ(backend.lastFrameId, 41u);
    EXPECT_EQ(backend.lastSource, source);  // as passed
    EXPECT_EQ(backend.lastDest, destination);
    EXPECT_EQ(backend.lastBackground, strips);
    info.frameId = 42;
    backend.Draw(nullptr, nullptr, {}, info);
    EXPECT_EQ(backend.lastSource, Rectangle());
    EXPECT_EQ(backend.lastDest, Rectangle());
    EXPECT_EQ(backend.source, Rectangle());
}

TEST_F(DrawImage, DrawGivesTheResultOfTheBackEnd) {
    create();
    backend.result = 5;
    DrawImageInfo info;
    EXPECT_EQ(backend.Draw(nullptr, nullptr, {}, info), 5u);
}

TEST_F(DrawImage, BaseHasNoDrawingSurface) {
    class Plain final : public CDrawImage {
      public:
        using CDrawImage::CDrawImage;
        std::uint32_t DrawImage(const Rectangle&, const Rectangle&, const BackgroundRectangles&,
                                const DrawImageInfo&) override {
            return 0;
        }
    } plain(system);
    TavraDC dc = &system;
    EXPECT_EQ(plain.GetDC(&dc), 0u);
    EXPECT_EQ(dc, nullptr);
    std::uint32_t color = 9;
    EXPECT_EQ(plain.SetColorKey(0x123456), 0u);
    EXPECT_EQ(plain.GetColorKey(&color), 0u);
    EXPECT_EQ(color, 0u);
    EXPECT_EQ(plain.ReleaseDC(nullptr), 0u);
    EXPECT_EQ(plain.EraseBackground(nullptr), 0u);
    EXPECT_EQ(plain.ResetOverlay(), 0u);
    EXPECT_EQ(plain.OnSize(0, 1, 1), 0u);
    EXPECT_EQ(plain.OnMove(1, 1), 0u);
    EXPECT_EQ(plain.Initialize(), 0u);
}

TEST_F(DrawImage, ImageSizeIsStored) {
    create();
    EXPECT_EQ(backend.SetImageSize(10, 20, 1), 0u);
    EXPECT_EQ(backend.imageWidth, 10u);
    EXPECT_EQ(backend.imageHeight, 20u);
    EXPECT_EQ(backend.imageBits, 1u);
}

}  // namespace
}  // namespace tavra::test
