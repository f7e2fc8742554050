// What window managers tell the library, and what it tells them: work area, frame, buttons, visibility.
#include <array>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

#include "display_x11/preview_on_screen.h"

namespace tavra::test {
namespace {

using Words = std::vector<std::uint32_t>;

class WindowManager : public PreviewOnScreen {
  protected:
    xcb_atom_t atom(const std::string& name) {
        xcb_connection_t* const own = server.connection();
        xcb_intern_atom_reply_t* const reply = xcb_intern_atom_reply(
            own, xcb_intern_atom(own, 0, static_cast<std::uint16_t>(name.size()), name.c_str()), nullptr);
        const xcb_atom_t found = reply != nullptr ? reply->atom : 0;
        std::free(reply);
        return found;
    }
    // Of the root: x, y, width, height for each desktop.
    void setWorkArea(const Words& area) {
        xcb_connection_t* const own = server.connection();
        xcb_change_property(own, XCB_PROP_MODE_REPLACE, server.root(), atom("_NET_WORKAREA"),
                            XCB_ATOM_CARDINAL, 32, static_cast<std::uint32_t>(area.size()), area.data());
        EXPECT_NE(atom("_NET_WORKAREA"), 0u);  // the server has both when it answers the second
    }
    Size sizeOnceCreated(Size asked, std::uint32_t style = kVisible, TavraWindow parent = nullptr) {
        createWindow(asked, style, parent);
        const Size got = size();
        endWindow();
        return got;
    }
    void endWindow() {
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        expectMessage(45060);
    }
    // An answer of the library's thread, which has told the server all that was asked of it before.
    Size size() {
        std::uint32_t x = 0, y = 0;
        Size got;
        EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &x, &y, &got.width, &got.height));
        return got;
    }

    // What the window asks of its frame.
    struct Frame {
        std::uint32_t functions = 0xFFFFFFFF;    // 1: all but those of the other bits; 32: to close
        std::uint32_t decorations = 0xFFFFFFFF;  // 0: none, 1: all, 2: only a border
        friend bool operator==(const Frame&, const Frame&) = default;
    };
    Frame frame() {
        constexpr std::uint32_t kTellsFunctionsAndDecorations = 3;
        size();
        xcb_connection_t* const own = server.connection();
        xcb_get_property_reply_t* const reply = xcb_get_property_reply(
            own, xcb_get_property(own, 0, window, atom("_MOTIF_WM_HINTS"), XCB_ATOM_ANY, 0, 5), nullptr);
        std::array<std::uint32_t, 5> words{};
        const bool complete = reply != nullptr && xcb_get_property_value_length(reply) == sizeof words;
        EXPECT_TRUE(complete);
        if (complete) std::memcpy(words.data(), xcb_get_property_value(reply), sizeof words);
        std::free(reply);
        EXPECT_EQ(words[0], kTellsFunctionsAndDecorations);
        return {words[1], words[2]};
    }
    bool isOnScreen() {
        size();
        xcb_connection_t* const own = server.connection();
        xcb_get_window_attributes_reply_t* const reply =
            xcb_get_window_attributes_reply(own, xcb_get_window_attributes(own, window), nullptr);
        const bool viewable = reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
        std::free(reply);
        return viewable;
    }
    Picture image(std::uint32_t number) {
        Picture picture;
        for (std::uint32_t i = 0; i < 24; ++i) picture.push_back(grey(number, i % 6, i / 6));
        return picture;
    }

    static constexpr std::uint32_t kCaption = 0xC00000, kBorder = 0x800000, kDialogFrame = 0x400000;
    static constexpr Frame kWithoutFrame{1, 0}, kWithFrame{1, 1}, kBorderOnly{1, 2};
};

// The work area.

TEST_F(WindowManager, NewWindowsAreAsLargeAsTheWorkAreaAtMost) {
    openMono(6, 4);
    setWorkArea({10, 20, 300, 200});
    EXPECT_EQ(sizeOnceCreated({500, 400}), (Size{300, 200}));
    EXPECT_EQ(sizeOnceCreated({301, 199}), (Size{300, 199}));
    EXPECT_EQ(sizeOnceCreated({299, 201}), (Size{299, 200}));
    EXPECT_EQ(sizeOnceCreated({300, 200}), (Size{300, 200}));
}

TEST_F(WindowManager, FirstDesktopsWorkAreaCounts) {
    openMono(6, 4);
    setWorkArea({0, 0, 310, 210, 0, 0, 100, 100});
    EXPECT_EQ(sizeOnceCreated({500, 400}), (Size{310, 210}));
}

TEST_F(WindowManager, WorkAreaDoesNotLimitAChild) {
    openMono(6, 4);
    setWorkArea({10, 20, 300, 200});
    const xcb_window_t parent = server.makeWindow(60, 40);
    const auto handleOfParent = reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(parent));
    EXPECT_TRUE(server.looksLike(parent, {1, 1}, Picture(1, 0)));  // the server has made it
    EXPECT_EQ(sizeOnceCreated({500, 400}, kVisible | platform::kStyleChild, handleOfParent),
              (Size{500, 400}));
}

TEST_F(WindowManager, WindowsThatExistMayBeLargerThanTheWorkArea) {
    openMono(6, 4);
    setWorkArea({10, 20, 300, 200});
    createWindow({50, 40});
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, 500, 400));
    expectMessage(45061);
    EXPECT_EQ(size(), (Size{500, 400}));
}

TEST_F(WindowManager, ScreenIsTheWorkAreaWhereNoneIsTold) {
    openMono(6, 4);
    EXPECT_EQ(sizeOnceCreated({900, 700}), (Size{800, 600}));
    setWorkArea({0, 0, 300});
    EXPECT_EQ(sizeOnceCreated({900, 700}), (Size{800, 600})) << "an incomplete one is none";
    for (const Words& empty : {Words{0, 0, 0, 0}, {10, 20, 300, 0}, {10, 20, 0, 200}}) {
        setWorkArea(empty);
        EXPECT_EQ(sizeOnceCreated({900, 700}), (Size{800, 600})) << "nor is an empty one";
        EXPECT_EQ(sizeOnceCreated({50, 40}), (Size{50, 40}));
    }
}

// Frame and buttons.

TEST_F(WindowManager, CaptionComesAndGoesWithTheStyle) {
    openMono(6, 4);
    createWindow({50, 40});
    EXPECT_EQ(frame(), kWithoutFrame);
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible | kCaption));
    EXPECT_EQ(frame(), kWithFrame);
    for (const std::uint32_t border : {kBorder, kDialogFrame}) {
        ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible | border));
        EXPECT_EQ(frame(), kBorderOnly) << "one of the two bits is no caption";
    }
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible));
    EXPECT_EQ(frame(), kWithoutFrame);
    EXPECT_TRUE(isOnScreen());
    EXPECT_EQ(size(), (Size{50, 40}));
    endWindow();
    createWindow({50, 40}, kVisible | kCaption);
    EXPECT_EQ(frame(), kWithFrame) << "from the beginning";
}

TEST_F(WindowManager, CloseButtonIsNeverOfAWindowThatIsNotClosable) {
    constexpr std::uint32_t kAllButClose = 1 | 32;
    openMono(6, 4);
    createWindow({50, 40}, kVisible | kCaption, nullptr, false);
    EXPECT_EQ(frame(), (Frame{kAllButClose, 1}));
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible));
    EXPECT_EQ(frame(), (Frame{kAllButClose, 0}));
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible | kCaption));
    EXPECT_EQ(frame(), (Frame{kAllButClose, 1}));
}

// Visibility.

TEST_F(WindowManager, WindowHidesAndShowsAgainWithTheStyle) {
    openMono(6, 4);
    createWindow({6, 4});
    EXPECT_TRUE(isOnScreen());
    start();
    show(1);
    EXPECT_TRUE(server.looksLike(window, {6, 4}, image(1)));
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kCaption));
    EXPECT_FALSE(isOnScreen());
    EXPECT_TRUE(record().preview.alive());
    show(2);
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kCaption | kVisible));
    EXPECT_TRUE(isOnScreen());
    EXPECT_TRUE(server.looksLike(window, {6, 4}, image(2)));
    std::uint32_t style = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowStyle(handle, &style));
    EXPECT_EQ(style, kCaption | kVisible);
    stopAndExpectCode(0);
}

TEST_F(WindowManager, WindowThatIsMadeHiddenShowsLater) {
    openMono(6, 4);
    createWindow({6, 4}, 0);
    EXPECT_FALSE(isOnScreen());
    start();
    show(1);
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kVisible));
    EXPECT_TRUE(isOnScreen());
    EXPECT_TRUE(server.looksLike(window, {6, 4}, image(1)));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
