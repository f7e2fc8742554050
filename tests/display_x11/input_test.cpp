// What somebody does with mouse and keyboard in the window.
#include <array>
#include <utility>

#include "display_x11/preview_on_screen.h"
#include "display_x11/user.h"

namespace tavra::test {
namespace {

using Place = std::array<std::uint32_t, 4>;

class Input : public PreviewOnScreen {
  protected:
    Place mask() {
        Place place{};
        EXPECT_TRUE(Tavra_GetPreviewMaskSize(handle, &place[0], &place[1], &place[2], &place[3]));
        return place;
    }
    // A part of the image, each pixel enlarged.
    Picture part(std::uint32_t fromX, std::uint32_t fromY, Size size, std::uint32_t factor = 1) {
        Picture picture;
        for (std::uint32_t y = 0; y < size.height; ++y) {
            for (std::uint32_t x = 0; x < size.width; ++x) {
                picture.push_back(grey(1, fromX + x / factor, fromY + y / factor));
            }
        }
        return picture;
    }

    void messagesUpTo(std::uint32_t last) {
        for (ReceivedMessage got; got.message != last;) ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    }
    // All input so far has had its effect then.
    void takeUpUntilSized(std::uint32_t width) {
        server.resize(window, width, 48);
        expectMessage(45061);
        expectMessage(45063);
    }

    User user{server};
};

// 64 x 48 in a client area of 64 x 48: each click shows half of it around the point, down to 4 x 3, the
// smallest by whole halves.
TEST_F(Input, ClicksMagnifyAroundThePointAndWithAltShowMore) {
    openMono(64, 48);
    createWindow({64, 48});
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    start();
    show(1);
    user.clickAt(16, 12);
    expectMessage(45062);
    EXPECT_EQ(mask(), (Place{0, 0, 32, 24}));
    EXPECT_TRUE(server.looksLike(window, {64, 48}, part(0, 0, {64, 48}, 2)));
    user.clickAt(63, 47);  // pixel (31, 23), and the middle of the next mask
    expectMessage(45062);
    EXPECT_EQ(mask(), (Place{23, 17, 16, 12}));
    EXPECT_TRUE(server.looksLike(window, {64, 48}, part(23, 17, {64, 48}, 4)));
    const Place smaller[] = {{23 + 8 - 4, 17 + 6 - 3, 8, 6}, {27 + 4 - 2, 20 + 3 - 1, 4, 3}};
    for (const Place& expected : smaller) {
        user.clickAt(32, 24);
        expectMessage(45062);
        EXPECT_EQ(mask(), expected);
    }
    user.clickAt(0, 0);  // at the smallest mask only the position changes
    expectMessage(45062);
    EXPECT_EQ(mask(), (Place{29 - 2, 22 - 1, 4, 3}));
    user.holdAlt();
    const Place larger[] = {{27 + 2 - 4, 21 + 1 - 3, 8, 6},
                            {25 + 4 - 8, 19 + 3 - 6, 16, 12},
                            {21 + 8 - 16, 16 + 6 - 12, 32, 24},
                            {0, 0, 64, 48},
                            {0, 0, 64, 48}};
    for (const Place& expected : larger) {
        user.clickAt(32, 24);
        expectMessage(45062);
        EXPECT_EQ(mask(), expected);
    }
    user.letAltGo();
    EXPECT_TRUE(server.looksLike(window, {64, 48}, part(0, 0, {64, 48})));
    stopAndExpectCode(0);
}

TEST_F(Input, OtherButtonsAndTheWheelDoNotMagnify) {
    openMono(64, 48);
    createWindow({64, 48});
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    for (const std::uint8_t button : {2, 3, 4, 5, 8}) user.clickAt(20, 20, button);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 0));
    user.clickAt(20, 20);
    server.resize(window, 66, 48);
    expectMessage(45061);  // and no 45062 before
    EXPECT_EQ(mask(), (Place{0, 0, 64, 48}));
}

// A track of 208 - 2 x 16 pixels, 208 of 416 positions in sight: the thumb is 88 long and goes 88 pixels
// for 208 positions.
TEST_F(Input, BarsAreDraggedPagedAndStepped) {
    openMono(416, 416);
    createWindow({224, 224}, kVisible | kScrolls, nullptr, true, 2);
    start();
    show(1);
    const Size client{208, 208};
    EXPECT_TRUE(server.looksLike(window, client, part(0, 0, client)));
    user.moveTo(20, 215);  // on the thumb of the lower bar
    user.press(1);
    user.moveTo(20 + 44, 215);
    EXPECT_TRUE(server.looksLike(window, client, part(104, 0, client))) << "follows the thumb";
    user.moveTo(20 + 22, 100);
    EXPECT_TRUE(server.looksLike(window, client, part(52, 0, client))) << "also beside the bar";
    user.moveTo(300, 215);
    user.release(1);
    EXPECT_TRUE(server.looksLike(window, client, part(208, 0, client))) << "to the end";
    user.clickAt(200, 215);  // the arrow on: no further
    user.clickAt(5, 215);    // back
    EXPECT_TRUE(server.looksLike(window, client, part(207, 0, client)));
    user.clickAt(20, 215);  // the track before the thumb: a page, which is below the position no more
    EXPECT_TRUE(server.looksLike(window, client, part(0, 0, client)));
    user.clickAt(215, 180);  // the track below the other thumb
    EXPECT_TRUE(server.looksLike(window, client, part(0, 208, client)));
    user.clickAt(215, 5);
    EXPECT_TRUE(server.looksLike(window, client, part(0, 207, client)));
    user.clickAt(216, 216);  // the corner is nobody's
    user.clickAt(215, 5);
    EXPECT_TRUE(server.looksLike(window, client, part(0, 206, client)));
    stopAndExpectCode(0);
}

// Arrow, track, thumb and corner, and an arrow that is let go over the image.
TEST_F(Input, ClicksOnBarsDoNotMagnify) {
    openMono(416, 416);
    createWindow({224, 224}, kVisible | kScrolls, nullptr, true, 2);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    const Place before = mask();
    user.clickAt(200, 215);
    user.clickAt(180, 215);
    user.clickAt(150, 215);
    user.clickAt(216, 216);
    user.moveTo(215, 5);
    user.press(1);
    user.moveTo(100, 100);
    user.release(1);
    server.resize(window, 226, 224);
    expectMessage(45061);  // and no 45062 before
    EXPECT_EQ(mask(), before);
    user.clickAt(100, 100);
    messagesUpTo(45062);
    EXPECT_NE(mask(), before);
}

// The button was pressed over the image.
TEST_F(Input, ButtonsThatAreLetGoOutsideOfTheImageDoNotMagnify) {
    openMono(416, 416);
    createWindow({224, 224}, kVisible | kScrolls, nullptr, true, 2);
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 50, 50, 224, 224));
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    const Place before = mask();
    const std::pair<int, int> outside[] = {{40, 60}, {60, 40}, {50 + 215, 60}, {60, 50 + 215}, {300, 300}};
    for (const auto& [x, y] : outside) {
        user.moveTo(60, 60);
        user.press(1);
        user.moveTo(x, y);
        user.release(1);
    }
    server.resize(window, 226, 224);
    for (ReceivedMessage got; got.message != 45061;) {
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
        EXPECT_NE(got.message, 45062u);
    }
    EXPECT_EQ(mask(), before);
}

TEST_F(Input, BarsKeepTheMouseToThemselves) {
    openMono(416, 416);
    const xcb_window_t parent = server.makeWindow(300, 300);
    createWindow({224, 224}, kVisible | kScrolls | platform::kStyleChild,
                 reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(parent)), true, 2);
    EXPECT_TRUE(server.looksLike(window, {208, 208}, Picture(208 * 208, 0)));
    // The parent stands at (100, 50) on the screen, the preview in its corner.
    user.clickAt(100 + 215, 50 + 20, 3);
    user.clickAt(100 + 20, 50 + 215, 2);
    user.clickAt(100 + 207, 50 + 207, 3);
    for (;;) {
        xcb_generic_event_t* const event = xcb_wait_for_event(server.connection());
        ASSERT_NE(event, nullptr);
        const auto told = *reinterpret_cast<const xcb_button_press_event_t*>(event);
        std::free(event);
        if ((told.response_type & 0x7F) != XCB_BUTTON_PRESS) continue;
        EXPECT_EQ(told.detail, 3);
        EXPECT_EQ(told.event_x, 207);  // the first over the image
        EXPECT_EQ(told.event_y, 207);
        break;
    }
}

TEST_F(Input, CursorIsTheArrowAgainWhenTheModeIsOff) {
    openMono(64, 48);
    createWindow({64, 48});
    user.moveTo(20, 20);
    const std::vector<std::uint32_t> arrow = user.cursor();
    ASSERT_FALSE(arrow.empty());
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    user.moveTo(21, 20);
    takeUpUntilSized(66);
    EXPECT_NE(user.cursor(), arrow);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 0));
    user.moveTo(22, 20);
    takeUpUntilSized(68);
    EXPECT_EQ(user.cursor(), arrow);
}

TEST_F(Input, BarsGoWhenTheWindowIsLargeEnough) {
    openMono(64, 48);
    createWindow({40, 40}, kVisible | kScrolls, nullptr, true, 2);
    start();
    show(1);
    user.clickAt(20, 30);  // the arrow to the right
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(1, 0, {24, 24})));
    server.resize(window, 64, 48);
    EXPECT_TRUE(server.looksLike(window, {64, 48}, part(0, 0, {64, 48})));
    ASSERT_TRUE(Tavra_StopTransfer(handle));
}

// The pointer stands still: the key alone changes it.
TEST_F(Input, CursorTellsWhetherAClickShowsLessOrMore) {
    openMono(64, 48);
    createWindow({64, 48});
    user.moveTo(20, 20);
    const std::vector<std::uint32_t> arrow = user.cursor();
    ASSERT_FALSE(arrow.empty());
    user.holdAlt();
    takeUpUntilSized(65);
    EXPECT_EQ(user.cursor(), arrow) << "the mode is off";
    user.letAltGo();

    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    user.moveTo(21, 20);
    takeUpUntilSized(66);
    const std::vector<std::uint32_t> less = user.cursor();
    user.holdAlt();
    takeUpUntilSized(67);
    const std::vector<std::uint32_t> more = user.cursor();
    EXPECT_NE(less, arrow);
    EXPECT_NE(more, arrow);
    EXPECT_NE(less, more);
    user.moveTo(22, 20);
    takeUpUntilSized(68);
    EXPECT_EQ(user.cursor(), more) << "still held";
    user.letAltGo();
    takeUpUntilSized(69);
    EXPECT_EQ(user.cursor(), less);
}

// The application sees what happens in the window it has given as parent, in its own coordinates.
TEST_F(Input, IsForwardedToTheParent) {
    openMono(64, 48);
    const xcb_window_t parent = server.makeWindow(200, 150);
    createWindow({64, 48}, kVisible | platform::kStyleChild,
                 reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(parent)));
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 10, 20, 64, 48));
    EXPECT_TRUE(server.looksLike(window, {64, 48}, Picture(64 * 48, 0)));
    const auto nextPress = [this](std::uint8_t button, int x, int y) {
        for (;;) {
            xcb_generic_event_t* const event = xcb_wait_for_event(server.connection());
            ASSERT_NE(event, nullptr);
            const auto press = *reinterpret_cast<const xcb_button_press_event_t*>(event);
            std::free(event);
            if ((press.response_type & 0x7F) != XCB_BUTTON_PRESS) continue;
            EXPECT_EQ(press.detail, button);
            EXPECT_EQ(press.event_x, x);
            EXPECT_EQ(press.event_y, y);
            return;
        }
    };
    // The window stands at (100, 50) on the screen, the preview at (10, 20) in it.
    for (const std::uint8_t button : {1, 3, 4}) {
        user.clickAt(100 + 10 + 5, 50 + 20 + 7, button);
        nextPress(button, 15, 27);
    }
}

TEST_F(Input, CloseButtonEndsAClosableWindow) {
    openMono(64, 48);
    createWindow({64, 48});
    start();
    show(1);
    server.closeByUser(window);
    EXPECT_EQ(expectMessage(45060), 0u);
    EXPECT_FALSE(record().preview.alive());
    sendFrame(2, pattern(2));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
