// What each display mode makes of its back-end, seen from what that does.
#include "display/draw_image_factory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "display_seams/seams.h"

namespace tavra::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::EndsWith;
using testing::Not;
using testing::StartsWith;

class DisplayModes : public testing::Test {
  protected:
    DisplayModes() {
        seams().reset();
        window.exists = true;
        window.setClient(20, 30, 100, 80);
        EXPECT_TRUE(bitmap.create({5, 3, 24}).ok());
    }
    // Made, tied to the window, and drawn once, stretched.
    void draw(std::uint8_t mode) {
        const auto object = makeDrawImage(mode, window);
        ASSERT_EQ(object->Create(window.handle(), 5, 3, 8), 0u);
        const platform::Rectangle source{0, 0, 5, 3}, destination{0, 0, 10, 6};
        const DrawImageInfo info{&paint, &bitmap, bitmap.pixels(), 0, 1};
        EXPECT_EQ(object->Draw(&source, &destination, BackgroundRectangles(), info), 0u);
    }

    WindowDouble window;
    RecordingPaint paint;
    platform::Bitmap bitmap;
};

// Three present modes, the first at once, the third waiting for what is drawn; and all of them once more with
// floating point preserved, which is behaviour 2 beside 64 of the vertices.
TEST_F(DisplayModes, WithTexturesDifferInPresentingAndFloatingPoint) {
    struct Row {
        std::uint8_t mode;
        platform::SwapEffect effect;
        std::uint32_t interval;
        bool waits;
        const char* device;
    };
    constexpr auto kDiscard = platform::SwapEffect::Discard, kCopy = platform::SwapEffect::Copy;
    for (const Row& row : {Row{5, kDiscard, 0x80000000, false, "device hardware 64 on 100x80"},
                           Row{6, kCopy, 1, false, "device hardware 64 on 100x80"},
                           Row{7, kCopy, 1, true, "device hardware 64 on 100x80"},
                           Row{9, kDiscard, 0x80000000, false, "device hardware 66 on 100x80"},
                           Row{10, kCopy, 1, false, "device hardware 66 on 100x80"},
                           Row{11, kCopy, 1, true, "device hardware 66 on 100x80"}}) {
        SCOPED_TRACE(+row.mode);
        seams().sprites.log.clear();
        draw(row.mode);
        EXPECT_EQ(seams().sprites.parameters.swapEffect, row.effect);
        EXPECT_EQ(seams().sprites.parameters.interval, row.interval);
        EXPECT_THAT(seams().sprites.log, Contains(row.device));
        if (row.waits) {
            EXPECT_THAT(seams().sprites.log, Contains("backBuffer"));
        } else {
            EXPECT_THAT(seams().sprites.log, Not(Contains("backBuffer")));
        }
    }
}

TEST_F(DisplayModes, PlainOnesDifferInTheStretch) {
    for (const std::uint8_t mode : {0, 12, 255}) {
        paint.log.clear();
        draw(mode);
        EXPECT_EQ(paint.log[0], "stretch 0,0,10,6 from 0,0,5,3 nearest") << +mode;
    }
    paint.log.clear();
    draw(8);
    EXPECT_EQ(paint.log[0], "stretch 0,0,10,6 from 0,0,5,3 smooth");
}

// Surfaces off the screen are as large as the client area first; with order 0 of 16 bits, with order 1 of 32.
TEST_F(DisplayModes, WithSurfacesOffTheScreenDifferInTheFirstFormat) {
    seams().surfaces.memory.resize(std::size_t{100} * 80 * 4);
    seams().surfaces.pitch = 400;
    draw(1);
    EXPECT_THAT(seams().surfaces.takeLog(), Contains("create off1 100x80 16:f800"));
    draw(3);
    EXPECT_THAT(seams().surfaces.takeLog(), Contains("create off1 100x80 32:ff0000"));
}

// An overlay of order 0 is of UYVY first, with as many pixels as that needs.
TEST_F(DisplayModes, WithAnOverlayDifferInTheFirstFormat) {
    seams().surfaces.memory.resize(std::size_t{100} * 80 * 4);
    seams().surfaces.pitch = 400;
    draw(2);
    EXPECT_THAT(seams().surfaces.takeLog(),
                Contains(AllOf(StartsWith("create overlay"), EndsWith(" 16:uyvy"))));
    draw(4);
    EXPECT_THAT(seams().surfaces.takeLog(),
                Contains(AllOf(StartsWith("create overlay"), EndsWith(" 32:ff0000"))));
}

}  // namespace
}  // namespace tavra::test
