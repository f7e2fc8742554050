// The preview window on an X server: what can be seen of it, pixel by pixel, and what happens in it.
#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string>
#include <utility>

#include "display_x11/preview_on_screen.h"

namespace tavra::test {
namespace {

TEST_F(PreviewOnScreen, ImageIsCopiedToTheMiddle) {
    openMono(6, 4);
    createWindow({10, 9});
    start();
    show(1);
    show(2);
    Picture expected(10 * 9, 0);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) expected[(y + 2) * 10 + x + 2] = grey(2, x, y);
    }
    EXPECT_TRUE(server.looksLike(window, {10, 9}, expected));
    stopAndExpectCode(0);
    EXPECT_TRUE(server.looksLike(window, {10, 9}, expected));  // the last image stays
}

TEST_F(PreviewOnScreen, StretchTakesTheNearestPixels) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    createWindow({12, 12});
    start();
    show(1);
    Picture expected(12 * 12);
    for (std::uint32_t y = 0; y < 12; ++y) {
        for (std::uint32_t x = 0; x < 12; ++x) expected[y * 12 + x] = grey(1, x / 2, y / 3);
    }
    EXPECT_TRUE(server.looksLike(window, {12, 12}, expected));
    stopAndExpectCode(0);
}

TEST_F(PreviewOnScreen, MaskShowsAPart) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, 2, 1, 3, 2));
    expectMessage(45062);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_MASK));
    createWindow({5, 4});
    start();
    show(1);
    Picture expected(5 * 4, 0);
    for (std::uint32_t y = 0; y < 2; ++y) {
        for (std::uint32_t x = 0; x < 3; ++x) expected[(y + 1) * 5 + x + 1] = grey(1, x + 2, y + 1);
    }
    EXPECT_TRUE(server.looksLike(window, {5, 4}, expected));
    stopAndExpectCode(0);
}

TEST_F(PreviewOnScreen, BarsScrollALargeImage) {
    openMono(64, 48);
    createWindow({40, 40}, kVisible | kScrolls, nullptr, true, 2);  // the bars take room
    start();
    show(1);
    const auto part = [this](std::uint32_t fromX, std::uint32_t fromY) {
        Picture seen(24 * 24);
        for (std::uint32_t y = 0; y < 24; ++y) {
            for (std::uint32_t x = 0; x < 24; ++x) seen[y * 24 + x] = grey(1, x + fromX, y + fromY);
        }
        return seen;
    };
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(0, 0)));
    server.button(window, true, 1, 20, 30);  // the arrow to the right
    server.button(window, false, 1, 20, 30);
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(1, 0)));
    server.button(window, true, 1, 30, 20);  // and down
    server.button(window, false, 1, 30, 20);
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(1, 1)));
    stopAndExpectCode(0);
}

// A horizontal bar is asked for because of the vertical one's thickness, which the style forbids.
TEST_F(PreviewOnScreen, BarWithoutRoomToScrollIsNotShown) {
    openMono(32, 60);
    createWindow({32, 40}, kVisible | platform::kStyleHorizontalScroll);
    start();
    show(1);
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(std::pair(width, height), std::pair(32u, 40u));
    Picture seen(std::size_t{32} * 40);
    for (std::uint32_t row = 0; row < 40; ++row) {
        for (std::uint32_t column = 0; column < 32; ++column) seen[row * 32 + column] = grey(1, column, row);
    }
    EXPECT_TRUE(server.looksLike(window, {32, 40}, seen));
    stopAndExpectCode(0);
}

TEST_F(PreviewOnScreen, BarsComeAndGoWithTheStyle) {
    openMono(64, 48);
    createWindow({40, 40});
    start();
    show(1);
    const auto part = [this](std::uint32_t side, std::uint32_t fromX) {
        Picture seen(std::size_t{side} * side);
        for (std::uint32_t y = 0; y < side; ++y) {
            for (std::uint32_t x = 0; x < side; ++x) seen[y * side + x] = grey(1, x + fromX, y);
        }
        return seen;
    };
    const auto client = [this] {
        std::uint32_t x = 0, y = 0, width = 0, height = 0;
        EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
        return std::pair(width, height);
    };
    EXPECT_TRUE(server.looksLike(window, {40, 40}, part(40, 0)));

    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible | kScrolls));
    EXPECT_EQ(client(), std::pair(24u, 24u));
    server.button(window, true, 1, 20, 30);  // the arrow to the right
    server.button(window, false, 1, 20, 30);
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(24, 1)));

    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible | platform::kStyleVerticalScroll));
    EXPECT_EQ(client(), std::pair(24u, 40u));
    EXPECT_TRUE(server.looksLike(window, {24, 24}, part(24, 0))) << "scrolled back";

    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible));
    EXPECT_EQ(client(), std::pair(40u, 40u));
    EXPECT_TRUE(server.looksLike(window, {40, 40}, part(40, 0)));
    forgetAll();
    stopAndExpectCode(0);
}

TEST_F(PreviewOnScreen, ResizeMovesTheImage) {
    openMono(6, 4);
    createWindow({6, 4});
    start();
    show(1);
    server.resize(window, 8, 8);
    expectMessage(45061);
    expectMessage(45063);
    Picture expected(8 * 8, 0);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) expected[(y + 2) * 8 + x + 1] = grey(1, x, y);
    }
    EXPECT_TRUE(server.looksLike(window, {8, 8}, expected));
    std::uint32_t x = 9, y = 9, width = 0, height = 0;
    EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(width, 8u);
    EXPECT_EQ(height, 8u);
    stopAndExpectCode(0);
}

TEST_F(PreviewOnScreen, WithoutAnImageYetItIsBlack) {
    openMono(6, 4);
    createWindow({20, 10});
    EXPECT_TRUE(server.looksLike(window, {20, 10}, Picture(200, 0)));
}

TEST_F(PreviewOnScreen, UserClosesItAndTheStreamGoesOn) {
    openMono(6, 4);
    collectRaw();
    createWindow({10, 8});
    start();
    show(1);
    server.closeByUser(window);
    EXPECT_EQ(expectMessage(45060), 0u);
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    char name[8] = "before";
    EXPECT_TRUE(Tavra_GetPreviewWindowNameA(handle, name, sizeof name));
    EXPECT_STREQ(name, "");
    EXPECT_TRUE(Tavra_SetDisplayMode(handle, 8));
    stopAndExpectCode(0);  // and no message of the second frame
    createWindow({10, 8});
}

TEST_F(PreviewOnScreen, WindowThatIsNotClosableStays) {
    openMono(6, 4);
    createWindow({10, 8}, kVisible, nullptr, false);
    server.closeByUser(window);
    server.resize(window, 11, 8);
    expectMessage(45061);  // and no 45060 before
    EXPECT_TRUE(record().preview.alive());
}

TEST_F(PreviewOnScreen, LivesInAWindowOfTheApplication) {
    openMono(6, 4);
    const xcb_window_t parent = server.makeWindow(200, 100);
    const auto native = reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(parent));
    createWindow({10, 8}, kVisible | platform::kStyleChild, native);
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 30, 20, 12, 9));
    expectMessage(45061);
    expectMessage(45063);
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(x, 30u);
    EXPECT_EQ(y, 20u);
    EXPECT_EQ(width, 12u);
    EXPECT_EQ(height, 9u);
    server.button(window, true, 3, 5, 6);  // what the mouse does is the parent's to know
    xcb_generic_event_t* const event = xcb_wait_for_event(server.connection());
    ASSERT_NE(event, nullptr);
    const auto* const press = reinterpret_cast<xcb_button_press_event_t*>(event);
    EXPECT_EQ(press->response_type & 0x7F, XCB_BUTTON_PRESS);
    EXPECT_EQ(press->detail, 3);
    EXPECT_EQ(press->event_x, 35);
    EXPECT_EQ(press->event_y, 26);
    std::free(event);
    server.destroy(parent);
    expectMessage(45060);
    EXPECT_FALSE(record().preview.alive());
}

TEST_F(PreviewOnScreen, ChildNeedsAParentThatExists) {
    openMono(6, 4);
    const std::uint32_t style = kVisible | platform::kStyleChild;
    EXPECT_FALSE(Tavra_CreatePreviewWindowW(handle, nullptr, style, 0, 0, 5, 5, nullptr, nullptr, 1));
    EXPECT_EQ(lastError(), 1406u);
    expectMessage(45060);
    EXPECT_FALSE(
        Tavra_CreatePreviewWindowW(handle, nullptr, style, 0, 0, 5, 5, receiver.window(), nullptr, 1));
    EXPECT_EQ(lastError(), 1400u);
    expectMessage(45060);
}

TEST_F(PreviewOnScreen, ClickMagnifies) {
    openMono(64, 48);
    createWindow({64, 48});
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    server.button(window, true, 1, 32, 24);
    server.button(window, false, 1, 32, 24, XCB_BUTTON_MASK_1);
    expectMessage(45062);
    std::uint32_t mask[4] = {};
    ASSERT_TRUE(Tavra_GetPreviewMaskSize(handle, &mask[0], &mask[1], &mask[2], &mask[3]));
    EXPECT_EQ(mask[0], 16u);
    EXPECT_EQ(mask[1], 12u);
    EXPECT_EQ(mask[2], 32u);
    EXPECT_EQ(mask[3], 24u);
    server.button(window, false, 1, 32, 24, int{XCB_BUTTON_MASK_1} | int{XCB_MOD_MASK_1});  // with Alt
    expectMessage(45062);
    ASSERT_TRUE(Tavra_GetPreviewMaskSize(handle, &mask[0], &mask[1], &mask[2], &mask[3]));
    EXPECT_EQ(mask[2], 64u);
}

TEST_F(PreviewOnScreen, TitleIsSetAndReadCutToTheBuffer) {
    openMono(6, 4);
    createWindow({10, 8});
    TavraWChar wide[8] = {};
    ASSERT_TRUE(Tavra_GetPreviewWindowNameW(handle, wide, 8));
    EXPECT_EQ(std::u16string(wide), u"Preview");
    ASSERT_TRUE(Tavra_SetPreviewWindowNameW(handle, u"Gr\u00FCn \u4E2D"));
    ASSERT_TRUE(Tavra_GetPreviewWindowNameW(handle, wide, 5));
    EXPECT_EQ(std::u16string(wide), u"Gr\u00FCn");
    char narrow[2] = {'?', '?'};
    ASSERT_TRUE(Tavra_GetPreviewWindowNameA(handle, narrow, 0));
    EXPECT_EQ(narrow[0], '?');
    ASSERT_TRUE(Tavra_GetPreviewWindowNameA(handle, narrow, 2));
    EXPECT_STREQ(narrow, "G");
}

// Sizes count characters of the buffer, the terminating zero included; of a narrow one these are bytes.
TEST_F(PreviewOnScreen, TitleFillsBuffersOfAnySizeAndNoMore) {
    openMono(6, 4);
    createWindow({10, 8});
    // In UTF-8: one byte, two, three, and four for the pair.
    ASSERT_TRUE(Tavra_SetPreviewWindowNameW(handle, u"a\u00FC\u4E2D\U0001F4F7"));
    const char* const narrow[] = {"",
                                  "",
                                  "a",
                                  "a",
                                  "a\xC3\xBC",
                                  "a\xC3\xBC",
                                  "a\xC3\xBC",
                                  "a\xC3\xBC\xE4\xB8\xAD",
                                  "a\xC3\xBC\xE4\xB8\xAD",
                                  "a\xC3\xBC\xE4\xB8\xAD",
                                  "a\xC3\xBC\xE4\xB8\xAD",
                                  "a\xC3\xBC\xE4\xB8\xAD\xF0\x9F\x93\xB7",
                                  "a\xC3\xBC\xE4\xB8\xAD\xF0\x9F\x93\xB7"};
    for (std::uint32_t size = 1; size < std::size(narrow); ++size) {
        std::string buffer(size + 1, '#');
        ASSERT_TRUE(Tavra_GetPreviewWindowNameA(handle, buffer.data(), size));
        EXPECT_STREQ(buffer.c_str(), narrow[size]) << size;
        EXPECT_EQ(buffer[size], '#') << size;
    }
    const std::u16string wide = u"a\u00FC\u4E2D\U0001F4F7";
    for (std::uint32_t size = 1; size <= 7; ++size) {
        std::u16string buffer(size + 1, u'#');
        ASSERT_TRUE(Tavra_GetPreviewWindowNameW(handle, buffer.data(), size));
        const std::size_t expected = std::min<std::size_t>(size - 1, wide.size());
        EXPECT_EQ(std::u16string(buffer.c_str()), wide.substr(0, expected)) << size;
        EXPECT_EQ(buffer[size], u'#') << size;
    }
    TavraWChar untouched = u'#';
    ASSERT_TRUE(Tavra_GetPreviewWindowNameW(handle, &untouched, 0));
    EXPECT_EQ(untouched, u'#');
    ASSERT_TRUE(Tavra_SetPreviewWindowNameA(handle, nullptr));
    char empty[2] = {'#', '#'};
    ASSERT_TRUE(Tavra_GetPreviewWindowNameA(handle, empty, 1));
    EXPECT_EQ(empty[0], 0);
}

TEST_F(PreviewOnScreen, SizesAreLimitedToTheScreen) {
    openMono(6, 4);
    createWindow({5000, 20});
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(width, 800u);
    EXPECT_EQ(height, 20u);
}

TEST_F(PreviewOnScreen, NewImageSizeResizesTheWindow) {
    openMono(6, 4);
    createWindow({6, 4});
    record().lastError = 0;
    ASSERT_TRUE(Tavra_SetRotationMode(handle, TAVRA_ROTATION_CLOCKWISE));
    EXPECT_EQ(lastError(), 0u);
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &width, &height));
    EXPECT_EQ(width, 4u);
    EXPECT_EQ(height, 6u);
}

TEST_F(PreviewOnScreen, ServerThatGoesAwayTakesOnlyTheWindow) {
    openMono(6, 4);
    collectRaw();
    createWindow({10, 8});
    start();
    show(1);
    server.kill();
    EXPECT_EQ(expectMessage(45060), 0u);
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    stopAndExpectCode(0);
    EXPECT_FALSE(Tavra_CreatePreviewWindowW(handle, nullptr, kVisible, 0, 0, 5, 5, nullptr, nullptr, 1));
    EXPECT_EQ(lastError(), kNoDisplay);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOnScreen, ManyWindowsLeaveNothingBehind) {
    openMono(6, 4);
    for (int i = 0; i < 100; ++i) {
        createWindow({10, 8});
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
    EXPECT_FALSE(platform::windowSystem().isWindow(
        reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(window))));
}

TEST_F(PreviewOnScreen, ClosingTheCameraEndsItsWindow) {
    openMono(6, 4);
    createWindow({10, 8});
    start();
    show(1);
    Tavra_Close(handle);
    EXPECT_EQ(expectMessage(45058), 0u);
    EXPECT_EQ(expectMessage(45060), 0u);
    handle = nullptr;
}

TEST(PreviewWithoutDisplay, CreationFailsAndTheCameraWorks) {
    setenv("DISPLAY", ":63999", 1);
    class Opened : public StreamTest {
      public:
        void TestBody() override {
            openCamera();
            EXPECT_FALSE(Tavra_CreatePreviewWindowW(handle, u"x", kVisible, 0, 0, 5, 5, nullptr, nullptr, 1));
            EXPECT_EQ(lastError(), kNoDisplay);
            collectRaw();
            start();
            sendFrame(1, pattern(1));
            EXPECT_EQ(raws.waitFor(1).size(), 1u);
            stopAndExpectCode(0);
        }
    } opened;
    opened.TestBody();
}

}  // namespace
}  // namespace tavra::test
