// Windows that come and go, at any moment and in any order, and servers that go.
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "display_x11/preview_on_screen.h"
#include "display_x11/shared_memory.h"

namespace tavra::test {
namespace {

TavraWindow handleOf(xcb_window_t window) {
    return reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(window));
}

class Life : public PreviewOnScreen {
  protected:
    explicit Life(const std::vector<const char*>& serverArguments = {}) : PreviewOnScreen(serverArguments) {}

    // Whatever was told, in order, until this message.
    std::vector<std::uint32_t> messagesUntil(std::uint32_t last) {
        std::vector<std::uint32_t> told;
        for (ReceivedMessage got; told.empty() || told.back() != last; told.push_back(got.message)) {
            if (receiver.wait(got, kPatienceMs)) continue;
            ADD_FAILURE() << last << " did not come";
            break;
        }
        return told;
    }
    bool createOnly(std::uint32_t style = kVisible, TavraWindow parent = nullptr, std::uint32_t width = 10,
                    std::uint32_t height = 8) {
        return Tavra_CreatePreviewWindowW(handle, u"w", style, 0, 0, width, height, parent, nullptr, 1) != 0;
    }
    xcb_window_t current() {
        TavraWindow known = nullptr;
        EXPECT_TRUE(Tavra_GetPreviewWnd(handle, &known));
        return static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(known));
    }
    std::size_t windowsOnScreen() {
        xcb_query_tree_reply_t* const tree = xcb_query_tree_reply(
            server.connection(), xcb_query_tree(server.connection(), server.root()), nullptr);
        const std::size_t count = tree != nullptr ? tree->children_len : 0;
        std::free(tree);
        return count;
    }
    // A window with each odd frame, none with the others.
    static void destroyOrMake(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t number,
                              std::uint32_t, void* context, std::uint32_t*) {
        auto& self = *static_cast<Life*>(context);
        EXPECT_TRUE(number % 2 == 0 ? Tavra_DestroyPreviewWindow(self.handle) != 0 : self.createOnly());
    }
    // The user closes the window, and it is gone before the callback returns.
    static void closeAndWait(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                             void* context, std::uint32_t*) {
        auto& self = *static_cast<Life*>(context);
        if (!self.record().preview.alive()) return;
        self.server.closeByUser(self.window);
        while (self.record().preview.alive()) std::this_thread::yield();
    }
    static std::size_t openDescriptors() {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            ++count;
        return count;
    }
};

TEST_F(Life, ManyWindowsLeaveNothingBehind) {
    openMono(6, 4);
    collectRaw();
    start();
    const std::size_t onScreen = windowsOnScreen();
    std::size_t descriptors = 0;
    const char* const text = std::getenv("TAVRA_WINDOWS");
    const long windows = text != nullptr ? std::strtol(text, nullptr, 10) : 300;
    for (long i = 0; i < windows; ++i) {
        ASSERT_TRUE(createOnly());
        sendFrame(static_cast<std::uint32_t>(i), pattern(1));
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        messagesUntil(45060);
        if (i == 0) descriptors = openDescriptors();
    }
    EXPECT_LE(openDescriptors(), descriptors);
    EXPECT_TRUE(noSegmentStays());
    EXPECT_EQ(windowsOnScreen(), onScreen);
    ASSERT_TRUE(Tavra_StopTransfer(handle));
}

TEST_F(Life, UserMayCloseItAtAnyMomentOfItsCreation) {
    openMono(6, 4);
    // The user's eye and hand: closes each window as soon as there is one.
    std::atomic<bool> over{false};
    xcb_connection_t* const own = xcb_connect(nullptr, nullptr);
    std::thread user([&] {
        while (!over) {
            xcb_query_tree_reply_t* const tree =
                xcb_query_tree_reply(own, xcb_query_tree(own, server.root()), nullptr);
            for (int i = 0; tree != nullptr && i < xcb_query_tree_children_length(tree); ++i) {
                xcb_destroy_window(own, xcb_query_tree_children(tree)[i]);
            }
            std::free(tree);
        }
    });
    for (int i = 0; i < 100; ++i) {
        const bool made = createOnly();
        const std::vector<std::uint32_t> told = messagesUntil(45060);
        const auto created = std::count(told.begin(), told.end(), 45059u);
        if (made) {
            EXPECT_EQ(created, 1) << "told before its end";
        } else {
            EXPECT_EQ(created, 0);
        }
        EXPECT_FALSE(record().preview.alive());
        EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
        forgetAll();
    }
    over = true;
    user.join();
    xcb_disconnect(own);
}

TEST_F(Life, CallbacksMayDestroyAndMakeWindows) {
    openMono(6, 4);
    collectRaw();
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, destroyOrMake, this, &identifier));
    start();
    for (std::uint32_t number = 1; number <= 40; ++number) sendFrame(number, pattern(1));
    EXPECT_EQ(raws.waitFor(40).size(), 40u);
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    EXPECT_FALSE(record().preview.alive());
}

TEST_F(Life, UserMayCloseItInsideACallback) {
    openMono(6, 4);
    collectRaw();
    createWindow({10, 8});
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, closeAndWait, this, &identifier));
    start();
    sendFrame(1, pattern(1));
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(2).size(), 2u);
    EXPECT_EQ(expectMessage(45060), 0u);
    stopAndExpectCode(0);  // and no picture was told of, as nobody would see it
}

TEST_F(Life, WindowsComeAndGoWhileTheyAreDrawnFromAllSides) {
    openMono(64, 48);
    start();
    std::atomic<bool> over{false};
    std::thread frames([&] {
        for (std::uint32_t i = 0; !over; ++i) {
            if (i % 64 == 0) sendFrame(i / 64, pattern(1));
            record().preview.invalidate();
            std::this_thread::yield();
        }
    });
    std::thread settings([&] {
        for (std::uint32_t i = 0; !over; ++i) {
            Tavra_SetPreviewMaskSize(handle, i % 64, i % 48, i % 70, i % 50);
            Tavra_SetAspectMode(handle, static_cast<std::uint8_t>(i % 5));
            Tavra_SetPreviewDestSize(handle, 0u - i % 30, i % 30, i % 100, i % 100);
            Tavra_SetPreviewWindowSize(handle, 0, 0, i % 90, i % 90);
            Tavra_SetColorKey(handle, i);
            Tavra_SetAlphaChannel(handle, static_cast<std::uint8_t>(i));
            TavraDC dc = nullptr;
            EXPECT_FALSE(Tavra_GetDC(handle, &dc)) << "plain drawing has no surface";
            std::uint32_t value = 0;
            Tavra_GetPreviewImagePixelValue(handle, 1, 1, &value);
        }
    });
    for (int i = 0; i < 30; ++i) {
        ASSERT_TRUE(createOnly(kVisible | kScrolls, nullptr, 40, 40));
        if (i % 3 == 0) server.closeByUser(current());
        if (i % 3 == 1) server.destroy(current());
        if (i % 3 == 2) {
            EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
        }
        forgetAll();
    }
    over = true;
    frames.join();
    settings.join();
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    forgetAll();
}

TEST_F(Life, CreatedOverADeadWindow) {
    openMono(6, 4);
    createWindow({10, 8});
    server.destroy(window);
    expectMessage(45060);
    createWindow({12, 9});
    start();
    show(1);
    EXPECT_EQ(server.pixels(window, 12, 9).size(), 108u);
    stopAndExpectCode(0);
}

// As of toolkits with translucent windows. Nothing of the parent fits the preview: depth, visual, colours.
TEST_F(Life, LivesInAParentOfAnotherDepth) {
    xcb_connection_t* const other = xcb_connect(nullptr, nullptr);
    xcb_visualid_t visual = 0;
    const xcb_screen_t* const screen = xcb_setup_roots_iterator(xcb_get_setup(other)).data;
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0; xcb_depth_next(&depth)) {
        if (depth.data->depth == 32 && depth.data->visuals_len > 0)
            visual = xcb_depth_visuals(depth.data)[0].visual_id;
    }
    ASSERT_NE(visual, 0u) << "this X server has no translucent windows";
    const xcb_colormap_t colors = xcb_generate_id(other);
    xcb_create_colormap(other, XCB_COLORMAP_ALLOC_NONE, colors, screen->root, visual);
    const xcb_window_t parent = xcb_generate_id(other);
    const std::uint32_t values[] = {0, 0, colors};
    xcb_create_window(other, 32, parent, screen->root, 20, 10, 100, 80, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      visual, XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_COLORMAP, values);
    xcb_map_window(other, parent);
    std::free(xcb_get_input_focus_reply(other, xcb_get_input_focus(other), nullptr));

    openMono(6, 4);
    createWindow({6, 4}, kVisible | platform::kStyleChild, handleOf(parent));
    start();
    show(1);
    Picture expected;
    for (std::uint32_t i = 0; i < 24; ++i) expected.push_back(grey(1, i % 6, i / 6));
    EXPECT_TRUE(server.looksLike(window, {6, 4}, expected));

    // The application that has the parent ends first.
    collectRaw();
    xcb_disconnect(other);
    EXPECT_EQ(expectMessage(45060), 0u);
    sendFrame(2, pattern(2));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    stopAndExpectCode(0);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(Life, ExtremeSizesAndPlacesDoNoHarm) {
    openMono(6, 4);
    start();
    const xcb_window_t parent = server.makeWindow(60, 40);
    std::free(
        xcb_get_input_focus_reply(server.connection(), xcb_get_input_focus(server.connection()), nullptr));
    const std::uint32_t sizes[] = {0, 1, 2, 32767, 32768, 0x7FFFFFFF, 0xFFFFFFFF};
    std::uint32_t number = 1;
    for (const std::uint32_t size : sizes) {
        for (const bool child : {false, true}) {
            SCOPED_TRACE(size);
            const std::uint32_t style = kVisible | kScrolls | (child ? platform::kStyleChild : 0);
            ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, nullptr, style, 0u - size, size, size, 1,
                                                   child ? handleOf(parent) : nullptr, nullptr, 1));
            ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, 20, size));
            ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, size, 0u - size, size, size));
            ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, size, size, size, size));
            ASSERT_TRUE(Tavra_SetPreviewMaskSize(handle, size, size, size, size));
            sendFrame(number++, pattern(1));
            ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, 8, 8));
            ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
            forgetAll();
        }
    }
    ASSERT_TRUE(Tavra_StopTransfer(handle));
}

// Plain drawing shows nothing; the others refuse an image without pixels, and their window is gone.
TEST_F(Life, ImageWithoutPixelsHasAWindowOfOnePixelOrNone) {
    openCamera(1, 1, 0, 0);
    for (const std::uint8_t mode : {0, 8, 1, 2, 3, 4}) {
        SCOPED_TRACE(+mode);
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        const bool plain = mode == 0 || mode == 8;
        EXPECT_EQ(createOnly(kVisible, nullptr, 0, 0), plain);
        if (plain) {
            std::uint32_t place[4] = {};
            ASSERT_TRUE(Tavra_GetPreviewWindowSize(handle, &place[0], &place[1], &place[2], &place[3]));
            EXPECT_EQ(place[2], 1u);
            EXPECT_EQ(place[3], 1u);
        } else {
            // An invalid rectangle; of an overlay the last format that was tried in vain.
            EXPECT_EQ(lastError(), mode % 2 == 1 ? 0x88760096u : 0x88760091u);
            EXPECT_FALSE(record().preview.alive());
            EXPECT_EQ(messagesUntil(45060).back(), 45060u);
        }
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        forgetAll();
    }
}

// 4 gigabytes of pixels, of which the screen has half a million.
TEST_F(Life, WindowLargerThanAnyScreenShowsWhatIsOnIt) {
    openMono(6, 4);
    const xcb_window_t parent = server.makeWindow(600, 400);
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_FREE));
    ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, 20000, 20000, 6, 4));
    expectMessage(45063);
    createWindow({32767, 32767}, kVisible | platform::kStyleChild, handleOf(parent));
    start();
    show(1);
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0u - 19998u, 0u - 19997u, 32767, 32767));
    Picture expected(10 * 8, 0);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) expected[(y + 3) * 10 + x + 2] = grey(1, x, y);
    }
    EXPECT_TRUE(server.looksLike(parent, {10, 8}, expected));
    stopAndExpectCode(0);
}

class WithRequestsOfAMegabyte : public Life {
  protected:
    WithRequestsOfAMegabyte() : Life({"-maxbigreqsize", "1"}) {}
};

TEST_F(WithRequestsOfAMegabyte, TitleMayBeLonger) {
    openMono(6, 4);
    createWindow({10, 8});
    const std::u16string title(1 << 20, u'\u00FC');
    ASSERT_TRUE(Tavra_SetPreviewWindowNameW(handle, title.c_str()));
    std::u16string read(title.size() + 1, u'x');
    ASSERT_TRUE(Tavra_GetPreviewWindowNameW(handle, read.data(), static_cast<std::uint32_t>(read.size())));
    EXPECT_EQ(read, title + u'\0');
    server.resize(window, 11, 8);
    expectMessage(45061);  // the connection has lived on
}

TEST_F(Life, CamerasHaveWindowsOfTheirOwn) {
    openMono(6, 4);
    describe(1, 1, 6, 4);
    const TavraHandle other = Tavra_Open(0);
    ASSERT_NE(other, nullptr);
    createWindow({10, 8});
    ASSERT_TRUE(Tavra_CreatePreviewWindowW(other, nullptr, kVisible, 50, 0, 10, 8, nullptr, nullptr, 1));
    server.closeByUser(window);
    expectMessage(45060);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_TRUE(Tavra_SetPreviewWindowSize(other, 50, 0, 20, 8)) << "the other one lives";
    Tavra_Close(other);
    createWindow({10, 8});
}

TEST_F(Life, ServerThatDiesMidStreamCostsTheWindowAndAnotherTakesOver) {
    openMono(6, 4);
    collectRaw();
    createWindow({10, 8});
    start();
    show(1);
    server.kill();
    sendFrame(2, pattern(2));
    const std::vector<std::uint32_t> told = messagesUntil(45060);
    EXPECT_EQ(std::count(told.begin(), told.end(), 45058u), 0);
    sendFrame(3, pattern(3));
    EXPECT_EQ(raws.waitFor(3).size(), 3u);
    // Operations on what is dead.
    std::uint32_t place[4] = {};
    EXPECT_FALSE(Tavra_GetPreviewWindowSize(handle, &place[0], &place[1], &place[2], &place[3]));
    EXPECT_EQ(lastError(), 1400u);
    EXPECT_TRUE(Tavra_SetPreviewWindowNameW(handle, u"dead"));
    EXPECT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible));
    EXPECT_FALSE(Tavra_SetPreviewWindowSize(handle, 0, 0, 5, 5));
    EXPECT_TRUE(Tavra_SetDisplayMode(handle, 8));

    XServer second;
    ASSERT_TRUE(second.started());
    ASSERT_TRUE(createOnly());
    sendFrame(4, pattern(4));
    Picture expected(80, 0);
    for (std::uint32_t y = 0; y < 4; ++y) {
        for (std::uint32_t x = 0; x < 6; ++x) expected[(y + 2) * 10 + x + 2] = grey(4, x, y);
    }
    EXPECT_TRUE(second.looksLike(current(), {10, 8}, expected));
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(Life, HandleMayBeClosedWithItsWindowWhileTheStreamRuns) {
    openMono(6, 4);
    ASSERT_TRUE(createOnly());
    forgetAll();
    start();
    sendFrame(1, pattern(1));
    Tavra_Close(handle);
    handle = nullptr;
    const std::vector<std::uint32_t> told = messagesUntil(45060);
    EXPECT_EQ(std::count(told.begin(), told.end(), 45058u), 1) << "the stream ends first";
    EXPECT_EQ(windowsOnScreen(), 0u);
}

}  // namespace
}  // namespace tavra::test
