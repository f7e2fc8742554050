// Mouse and keys in the preview window: what is magnified, and what the parent gets.
#include <array>

#include "display_api/windows/preview_of_user.h"

namespace tavra::test {
namespace {

TEST_F(PreviewOfUser, ClickMagnifiesTheActiveWindow) {
    openMono(64, 48);
    create(64, 48);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    SetActiveWindow(window);
    ASSERT_EQ(GetActiveWindow(), window);
    forgetAll();
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(32, 24));
    expectMessage(45062);
    EXPECT_EQ(mask(), (std::array<std::uint32_t, 4>{16, 12, 32, 24}));
    SendMessageW(window, WM_RBUTTONUP, 0, MAKELPARAM(32, 24));
    EXPECT_EQ(mask()[2], 32u);
    const ParentWindow another;
    SetActiveWindow(another.window());
    SendMessageW(window, WM_LBUTTONUP, 0, MAKELPARAM(32, 24));
    EXPECT_EQ(mask()[2], 32u) << "not while another window is active";
}

TEST_F(PreviewOfUser, MouseIsCapturedWhileItMagnifies) {
    openMono(64, 48);
    create(64, 48);
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    EXPECT_NE(GetCapture(), window);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    EXPECT_EQ(GetCapture(), window);
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(64, 5));
    EXPECT_NE(GetCapture(), window) << "outside";
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(63, 47));
    EXPECT_EQ(GetCapture(), window);
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 0));
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(63, 47));
    EXPECT_NE(GetCapture(), window);
}

TEST_F(PreviewOfUser, MouseIsForwardedToTheParent) {
    openMono(64, 48);
    const ParentWindow parent;
    create(64, 48, WS_CHILD | WS_VISIBLE, parent.window());
    while (parent.nextMouse().message != 0) {
    }
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONDBLCLK, WM_MBUTTONUP}) {
        SendMessageW(window, message, MK_SHIFT, MAKELPARAM(7, 8));
        const MSG got = parent.nextMouse();
        EXPECT_EQ(got.message, message);
        EXPECT_EQ(got.wParam, static_cast<WPARAM>(MK_SHIFT));
        EXPECT_EQ(got.lParam, MAKELPARAM(17, 28)) << "the window stands at (10, 20)";
    }
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, WheelIsForwardedToTheParent) {
    openMono(64, 48);
    const ParentWindow parent;
    create(64, 48, WS_CHILD | WS_VISIBLE, parent.window());
    while (parent.nextMouse().message != 0) {
    }
    for (const int turn : {WHEEL_DELTA, -WHEEL_DELTA}) {
        const WPARAM keys = MAKEWPARAM(MK_SHIFT | MK_LBUTTON, turn);
        SendMessageW(window, WM_MOUSEWHEEL, keys, MAKELPARAM(57, 58));
        const MSG got = parent.nextMouse();
        EXPECT_EQ(got.message, static_cast<UINT>(WM_MOUSEWHEEL));
        EXPECT_EQ(got.wParam, keys);
        EXPECT_EQ(got.lParam, MAKELPARAM(67, 78)) << "turned as if it were one in the window";
    }
    EXPECT_EQ(parent.nextMouse().message, 0u);
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

// The cursors that stand for the library's own here, which a program has none of that holds the library.
TEST_F(PreviewOfUser, CursorTellsWhetherAClickShowsLessOrMore) {
    const HCURSOR arrow = LoadCursorW(nullptr, IDC_ARROW);
    const HCURSOR less = LoadCursorW(nullptr, IDC_CROSS), more = LoadCursorW(nullptr, IDC_IBEAM);
    constexpr WPARAM kAnyKey = 'A';
    const auto holdAlt = [](bool held) {
        std::array<BYTE, 256> keys{};
        keys[VK_MENU] = held ? 0x80 : 0;
        SetKeyboardState(keys.data());
    };
    openMono(64, 48);
    create(64, 48);
    SetCursor(arrow);
    for (const UINT message : {WM_SYSKEYDOWN, WM_SYSKEYUP, WM_MOUSEMOVE}) {
        SendMessageW(window, message, kAnyKey, 0);
        EXPECT_EQ(GetCursor(), arrow) << "the mode is off";
    }
    ASSERT_TRUE(Tavra_SetMagnificationMode(handle, 1));
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    EXPECT_EQ(GetCursor(), less) << "taking the mouse";
    for (const UINT message : {WM_SYSKEYDOWN, WM_SYSKEYUP, WM_MOUSEMOVE}) {
        for (const bool held : {true, false}) {
            holdAlt(held);
            SetCursor(arrow);
            SendMessageW(window, message, message == WM_MOUSEMOVE ? 0 : kAnyKey, MAKELPARAM(6, 5));
            EXPECT_EQ(GetCursor(), held ? more : less) << message;
        }
    }
    SetCursor(arrow);
    SendMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(64, 5));
    EXPECT_EQ(GetCursor(), arrow) << "outside the client area";
}

}  // namespace
}  // namespace tavra::test
