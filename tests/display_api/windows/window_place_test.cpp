// The preview window as one of USER: its place and size, its frame, title and scroll bars.
#include <array>

#include "display_api/windows/preview_of_user.h"

namespace tavra::test {
namespace {

TEST_F(PreviewOfUser, HasTheClientSizeThatWasAskedFor) {
    openMono();
    create(130, 70, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    EXPECT_EQ(place(), (std::array<std::uint32_t, 4>{10, 20, 130, 70}));
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 33, 44, 150, 90));
    EXPECT_EQ(place(), (std::array<std::uint32_t, 4>{33, 44, 150, 90}));
    RECT whole{};
    GetWindowRect(window, &whole);
    EXPECT_GT(whole.bottom - whole.top, 90) << "with a title bar";
}

TEST_F(PreviewOfUser, MenuTakesRoomBesideTheClientArea) {
    openMono();
    const HMENU menu = CreateMenu();
    AppendMenuW(menu, MF_STRING, 77, L"Save");
    create(300, 70, WS_OVERLAPPEDWINDOW | WS_VISIBLE, nullptr, true, menu);
    EXPECT_EQ(GetMenu(window), menu);
    EXPECT_EQ(place()[3], 70u);
    forgetAll();
    SendMessageW(window, WM_COMMAND, 77, 0);
    EXPECT_EQ(expectMessage(45066), 77u);
}

TEST_F(PreviewOfUser, WorkAreaLimitsAWindowThatIsNoChild) {
    openMono();
    RECT area{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &area, 0);
    create(5000, 20);
    EXPECT_EQ(place()[2], static_cast<std::uint32_t>(area.right - area.left));
    const ParentWindow parent;
    create(5000, 20, WS_CHILD | WS_VISIBLE, parent.window());
    EXPECT_EQ(place()[2], 5000u);
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, ChildIsPlacedInItsParent) {
    openMono();
    const ParentWindow parent;
    create(30, 20, WS_CHILD | WS_VISIBLE, parent.window());
    EXPECT_EQ(GetParent(window), parent.window());
    EXPECT_EQ(place(), (std::array<std::uint32_t, 4>{10, 20, 30, 20}));
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 5, 6, 31, 21));
    EXPECT_EQ(place(), (std::array<std::uint32_t, 4>{5, 6, 31, 21}));
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, StyleIsChangedWithItsFrame) {
    openMono();
    create(130, 70);
    ASSERT_TRUE(Tavra_SetPreviewWindowStyle(handle, kPopup | WS_BORDER));
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & (kPopup | WS_BORDER),
              kPopup | WS_BORDER);
    EXPECT_EQ(place()[2], 128u) << "a border of one pixel on each side, in the same window";
    std::uint32_t style = 0;
    ASSERT_TRUE(Tavra_GetPreviewWindowStyle(handle, &style));
    EXPECT_EQ(style, kPopup | WS_BORDER);
}

TEST_F(PreviewOfUser, TitleIsTheWindows) {
    openMono();
    create(30, 20);
    wchar_t text[32] = {};
    GetWindowTextW(window, text, 32);
    EXPECT_STREQ(text, L"Preview");
    ASSERT_TRUE(Tavra_SetPreviewWindowNameW(handle, u"Gr\u00FCn"));
    GetWindowTextW(window, text, 32);
    EXPECT_STREQ(text, L"Gr\u00FCn");
    char narrow[3] = {};
    ASSERT_TRUE(Tavra_GetPreviewWindowNameA(handle, narrow, 3));
    EXPECT_STREQ(narrow, "Gr");
    DestroyWindow(window);
    TavraWChar wide[8] = u"before";
    EXPECT_TRUE(Tavra_GetPreviewWindowNameW(handle, wide, 8)) << "also of a window that is dead";
    EXPECT_EQ(wide[0], 0);
}

TEST_F(PreviewOfUser, SizeGripOfAChildIsNone) {
    openMono(64, 48);
    const ParentWindow parent;
    for (const bool child : {true, false}) {
        create(100, 80, (child ? WS_CHILD : WS_POPUP) | WS_VISIBLE | WS_THICKFRAME, parent.window());
        RECT whole{};
        GetWindowRect(window, &whole);
        const LPARAM corner = MAKELPARAM(whole.right - 1, whole.bottom - 1);
        EXPECT_EQ(SendMessageW(window, WM_NCHITTEST, 0, corner), child ? 0 : HTBOTTOMRIGHT);
        const LPARAM middle = MAKELPARAM((whole.left + whole.right) / 2, (whole.top + whole.bottom) / 2);
        EXPECT_EQ(SendMessageW(window, WM_NCHITTEST, 0, middle), HTCLIENT);
    }
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, MinimisingTellsNoSize) {
    openMono();
    create(100, 80, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    forgetAll();
    SendMessageW(window, WM_SIZE, SIZE_MINIMIZED, 0);
    expectNoMessage();
    SendMessageW(window, WM_SIZE, SIZE_MAXIMIZED, 0);
    expectMessage(45061);
    expectMessage(45063);
    expectNoMessage();
}

TEST_F(PreviewOfUser, BarsScrollALargeImage) {
    openMono(300, 200);
    create(120, 90, kPopup | WS_HSCROLL | WS_VSCROLL);
    pump();
    const std::uint32_t width = place()[2], height = place()[3];
    EXPECT_LT(width, 120u) << "the bars take room";
    SCROLLINFO info = bar(SB_HORZ);
    EXPECT_EQ(info.nMin, 0);
    EXPECT_EQ(info.nMax, 299);
    EXPECT_EQ(info.nPage, width);
    EXPECT_EQ(bar(SB_VERT).nMax, 199);
    const auto scroll = [this](UINT message, int code, int thumb = 0) {
        SendMessageW(window, message, MAKEWPARAM(code, thumb), 0);
        return bar(message == WM_HSCROLL ? SB_HORZ : SB_VERT).nPos;
    };
    const int lastX = 300 - static_cast<int>(width), lastY = 200 - static_cast<int>(height);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_LINELEFT), 0);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_LINERIGHT), 1);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_PAGERIGHT), 1 + static_cast<int>(width));
    EXPECT_EQ(scroll(WM_HSCROLL, SB_PAGELEFT), 1);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_THUMBTRACK, 17), 17);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_THUMBPOSITION, 50000), lastX);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_ENDSCROLL), lastX);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_LEFT), 0);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_RIGHT), lastX);
    EXPECT_EQ(scroll(WM_HSCROLL, SB_THUMBPOSITION, 40), 40);
    EXPECT_EQ(scroll(WM_VSCROLL, SB_BOTTOM), lastY);
    EXPECT_EQ(scroll(WM_VSCROLL, SB_LINEUP), lastY - 1);
    show(1);
    const int w = static_cast<int>(width), h = static_cast<int>(height);
    EXPECT_TRUE(looksLike(w, h, picture(w, h, 0, 0, w, h, 1, 40, lastY - 1)));
    ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, 0, 0, 320, 220));
    pump();
    EXPECT_EQ(bar(SB_HORZ).nMax, 0) << "all is in sight";
    EXPECT_EQ(place()[2], 320u);
}

TEST_F(PreviewOfUser, ExtremeSizesAndPlacesDoNoHarm) {
    openMono();
    const ParentWindow parent;
    for (const std::uint32_t size : {0u, 1u, 2u, 32767u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        SCOPED_TRACE(size);
        if (!Tavra_CreatePreviewWindowW(handle, nullptr, WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL,
                                        0u - size, size, size, 1, parent.window(), nullptr, 1))
            continue;  // the system refuses it
        Tavra_SetPreviewWindowSize(handle, 0, 0, 20, size);
        EXPECT_TRUE(Tavra_SetPreviewDestSize(handle, size, size, size, size));
        EXPECT_TRUE(Tavra_SetPreviewMaskSize(handle, size, size, size, size));
        TavraWindow known = nullptr;
        ASSERT_TRUE(Tavra_GetPreviewWnd(handle, &known));
        window = static_cast<HWND>(known);
        pump();
        UpdateWindow(window);
        EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
        forgetAll();
    }
}

}  // namespace
}  // namespace tavra::test
