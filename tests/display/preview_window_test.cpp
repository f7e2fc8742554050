// What a preview window answers: with and without a window, its drawing surface, style and size.
#include "display/preview_window.h"

#include "display/preview_fixture.h"

namespace tavra::test {
namespace {

TEST_F(Preview, OperationsNeedAWindow) {
    std::u16string title;
    PreviewPlace place;
    TavraDC dc = nullptr;
    const Status none(error::kNoWindow);
    EXPECT_EQ(window.setTitle(u"x"), none);
    EXPECT_EQ(window.title(title), none);
    EXPECT_EQ(window.setStyle(5), none);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), none);
    EXPECT_EQ(window.size(place), none);
    EXPECT_EQ(window.getDC(dc), none);
    EXPECT_EQ(window.getDCWithReset(dc), none);
    EXPECT_EQ(window.releaseDC(dc), none);
    EXPECT_EQ(window.resetOverlay(), none);
    EXPECT_EQ(window.style(), 0u);
}

TEST_F(Preview, PlainModesHaveNoDrawingSurface) {
    for (const std::uint8_t mode : {0, 8}) {
        ASSERT_TRUE(window.destroy().ok());
        ASSERT_TRUE(window.setDisplayMode(mode).ok());
        open();
        TavraDC dc = nullptr;
        const Status refused(error::kLegacyCamera);
        EXPECT_EQ(window.getDC(dc), refused);
        EXPECT_EQ(window.getDCWithReset(dc), refused);
        EXPECT_EQ(window.releaseDC(dc), refused);
        EXPECT_EQ(window.resetOverlay(), refused);
    }
}

// A code that is not listed draws plainly and yet does not refuse.
TEST_F(Preview, UnlistedModesGiveNoContextAndNoError) {
    ASSERT_TRUE(window.setDisplayMode(200).ok());
    open();
    TavraDC dc = &system;
    EXPECT_TRUE(window.getDC(dc).ok());
    EXPECT_EQ(dc, nullptr);
    EXPECT_TRUE(window.getDCWithReset(dc).ok());
    EXPECT_TRUE(window.resetOverlay().ok());
    system.takeLog();
    EXPECT_TRUE(window.releaseDC(dc).ok());
    EXPECT_THAT(system.log, ElementsAre("invalidate"));
}

TEST_F(Preview, DisplayModeIsRefusedWhileTheWindowLives) {
    open();
    EXPECT_EQ(window.setDisplayMode(8), Status(error::kWindowExists));
    EXPECT_EQ(window.displayMode, 0);
}

TEST_F(Preview, ColorKeyRedrawsOnlyALivingWindow) {
    window.setColorKey(0x123456);
    EXPECT_THAT(system.log, IsEmpty());
    EXPECT_EQ(window.colorKey, 0x123456u);
    open();
    window.setColorKey(5);
    EXPECT_THAT(system.log, ElementsAre("invalidate"));
}

TEST_F(Preview, StyleIsKeptAlsoWhereTheSystemRefusesIt) {
    open(5);
    EXPECT_EQ(window.style(), 5u);
    system.styleResult = Status(87);
    EXPECT_TRUE(window.setStyle(7).ok());
    EXPECT_EQ(window.style(), 7u);
    EXPECT_EQ(camera.lastError, 87u);
}

TEST_F(Preview, SizeIsTheClientAreas) {
    open();
    EXPECT_TRUE(window.setSize({1, static_cast<std::uint32_t>(-2), 30, 40}).ok());
    EXPECT_THAT(system.log, ElementsAre("place 1,-2 40x50"));
    system.placeResult = Status(5);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), Status(5));
    system.outerSizeResult = Status(9);
    EXPECT_EQ(window.setSize({1, 2, 3, 4}), Status(9));
}

TEST_F(Preview, PositionIsOnTheScreenOrInTheParent) {
    open();
    system.outer = {20, 30, 130, 120};
    system.client = {25, 35, 125, 115};
    PreviewPlace place;
    ASSERT_TRUE(window.size(place).ok());
    EXPECT_EQ(place, (PreviewPlace{20, 30, 100, 80}));
    parent = system.parentHandle();
    open(platform::kStyleChild);
    system.outer = {90, 70, 200, 160};
    ASSERT_TRUE(window.size(place).ok());
    EXPECT_EQ(place, (PreviewPlace{static_cast<std::uint32_t>(-10), 20, 100, 80}));
}

}  // namespace
}  // namespace tavra::test
