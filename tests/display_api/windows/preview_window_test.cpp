// The preview window as one of USER: its class, place and messages, and what GDI shows of it.
#include <windows.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>

#include "capture_api/stream_fixture.h"
#include "platform/window.h"

namespace tavra::test {
namespace {

constexpr const wchar_t* kClosableClass = L"904F13E3-D12E-44c5-8E99-B743DAD8D345";
constexpr const wchar_t* kPlainClass = L"8BB6BA46-A351-4729-9DBC-4D051501270B";
constexpr DWORD kPopup = WS_POPUP | WS_VISIBLE;  // without a frame
constexpr DWORD kOwnParentNotification = WS_EX_NOPARENTNOTIFY;

using Pixels = std::vector<std::uint32_t>;

// A window of the application, which writes down what is posted to it.
class ParentWindow {
  public:
    ParentWindow()
        : window_(CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 40, 30, 300, 200, nullptr,
                                  nullptr, nullptr, nullptr)) {}
    ~ParentWindow() { destroy(); }
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;

    HWND window() const { return window_; }
    void destroy() {
        if (window_ != nullptr) DestroyWindow(window_);
        window_ = nullptr;
    }
    // The next posted mouse message; 0 if there is none.
    MSG nextMouse() const {
        MSG message{};
        PeekMessageW(&message, window_, WM_MOUSEFIRST, WM_MOUSELAST, PM_REMOVE);
        return message;
    }

  private:
    HWND window_;
};

class PreviewOfUser : public StreamTest {
  protected:
    ~PreviewOfUser() override {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }

    void openMono(std::uint32_t width = 6, std::uint32_t height = 4) {
        openCamera(1, 1, width, height);
        imageWidth = width;
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
        forgetPlaces();
    }
    void create(std::uint32_t width, std::uint32_t height, DWORD style = kPopup, HWND parent = nullptr,
                bool closable = true, HMENU menu = nullptr) {
        ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, u"Preview", style, 10, 20, width, height, parent, menu,
                                               closable ? 1 : 0))
            << lastError();
        TavraWindow known = nullptr;
        ASSERT_TRUE(Tavra_GetPreviewWnd(handle, &known));
        window = static_cast<HWND>(known);
        ASSERT_TRUE(IsWindow(window));
    }
    void forgetAll() {
        for (ReceivedMessage got; receiver.wait(got, 0);) {
        }
    }
    // What is posted to the window.
    void pump() const {
        for (MSG message; PeekMessageW(&message, window, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
    }
    Pixels pixels(int width, int height) const {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        const HDC screen = GetDC(window);
        const HDC memory = CreateCompatibleDC(screen);
        const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        const HGDIOBJ before = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, width, height, screen, 0, 0, SRCCOPY);
        GdiFlush();
        const auto* const first = static_cast<const std::uint32_t*>(bits);
        Pixels result(first, first + width * height);
        for (std::uint32_t& pixel : result) pixel &= 0xFFFFFF;
        SelectObject(memory, before);
        DeleteObject(bitmap);
        DeleteDC(memory);
        ReleaseDC(window, screen);
        return result;
    }
    // Looks again and again, on top of whatever else is on the screen.
    template <typename Accepts>
    bool looks(int width, int height, Accepts accepts) const {
        const ULONGLONG end = GetTickCount64() + kPatienceMs;
        do {
            SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
            InvalidateRect(window, nullptr, TRUE);
            pump();
            UpdateWindow(window);
            if (accepts(pixels(width, height))) return true;
        } while (GetTickCount64() < end);
        return false;
    }
    bool looksLike(int width, int height, const Pixels& expected) const {
        return looks(width, height, [&](const Pixels& seen) { return seen == expected; });
    }
    void show(std::uint32_t number) {
        forgetAll();
        ASSERT_TRUE(Tavra_StartTransfer(handle));
        expectMessage(45057);
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        EXPECT_EQ(expectMessage(45067), number);
        stopAndExpectCode(0);
    }
    std::uint32_t grey(std::uint32_t number, int x, int y) const {
        const auto at = static_cast<std::uint32_t>(y) * imageWidth + static_cast<std::uint32_t>(x);
        return static_cast<std::uint8_t>(number + 3 * at) * 0x010101u;
    }
    // The image, or a part of it, enlarged and with its corner somewhere.
    Pixels picture(int width, int height, int left, int top, int partWidth, int partHeight, int factor = 1,
                   int fromX = 0, int fromY = 0) const {
        Pixels result(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (x < left || y < top) continue;
                const int column = (x - left) / factor, row = (y - top) / factor;
                if (column >= partWidth || row >= partHeight) continue;
                result[static_cast<std::size_t>(y * width + x)] = grey(1, fromX + column, fromY + row);
            }
        }
        return result;
    }
    std::array<std::uint32_t, 4> place() {
        std::array<std::uint32_t, 4> got{};
        EXPECT_TRUE(Tavra_GetPreviewWindowSize(handle, &got[0], &got[1], &got[2], &got[3]));
        return got;
    }
    std::array<std::uint32_t, 4> mask() {
        std::array<std::uint32_t, 4> got{};
        EXPECT_TRUE(Tavra_GetPreviewMaskSize(handle, &got[0], &got[1], &got[2], &got[3]));
        return got;
    }
    SCROLLINFO bar(int which) const {
        SCROLLINFO info{};
        info.cbSize = sizeof info;
        info.fMask = SIF_ALL;
        GetScrollInfo(window, which, &info);
        return info;
    }

    HWND window = nullptr;
    std::uint32_t imageWidth = 0;
};

TEST_F(PreviewOfUser, IsOfTheClassThatCanBeClosedOrNot) {
    openMono();
    for (const bool closable : {true, false}) {
        create(30, 20, kPopup, nullptr, closable);
        wchar_t name[64] = {};
        GetClassNameW(window, name, 64);
        EXPECT_STREQ(name, closable ? kClosableClass : kPlainClass);
        EXPECT_EQ(GetClassLongW(window, GCL_STYLE), closable ? 11u : 523u);
        EXPECT_EQ(GetClassLongW(window, GCL_CBWNDEXTRA), 8u);
        EXPECT_EQ(GetWindowLongW(window, GWL_EXSTYLE) & kOwnParentNotification, kOwnParentNotification);
        EXPECT_EQ(GetWindowLongPtrW(window, GWLP_HINSTANCE),
                  reinterpret_cast<LONG_PTR>(GetModuleHandleW(nullptr)));
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        WNDCLASSW description{};
        EXPECT_FALSE(GetClassInfoW(GetModuleHandleW(nullptr), name, &description)) << "unregistered";
    }
}

TEST_F(PreviewOfUser, TellsItsSizeAndThenItself) {
    openMono();
    create(30, 20);
    expectMessage(45061);
    expectMessage(45063);
    EXPECT_EQ(expectMessage(45059), reinterpret_cast<std::uintptr_t>(window));
    ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(expectMessage(45060), 0u);
    expectNoMessage();
}

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

TEST_F(PreviewOfUser, UserClosesItAndTheStreamGoesOn) {
    openMono();
    collectRaw();
    create(30, 20);
    forgetAll();
    start();
    PostMessageW(window, WM_CLOSE, 0, 0);
    pump();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    TavraWindow known = nullptr;
    EXPECT_TRUE(Tavra_GetPreviewWnd(handle, &known));
    EXPECT_EQ(known, window) << "the handle stays";
    EXPECT_TRUE(Tavra_SetDisplayMode(handle, 8));
    EXPECT_FALSE(Tavra_SetPreviewWindowSize(handle, 0, 0, 5, 5));
    EXPECT_EQ(lastError(), 1400u);
    stopAndExpectCode(0);
    create(31, 20);
    EXPECT_FALSE(Tavra_SetDisplayMode(handle, 0));
    EXPECT_EQ(lastError(), TAVRA_ERROR_WINDOW_EXISTS);
}

TEST_F(PreviewOfUser, ImageIsCopiedToTheMiddleOnBlack) {
    openMono();
    create(10, 9);
    show(1);
    EXPECT_TRUE(looksLike(10, 9, picture(10, 9, 2, 2, 6, 4)));
}

TEST_F(PreviewOfUser, ImageIsStretchedAndPlaced) {
    openMono();
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_FREE));
    create(20, 15);
    show(1);
    const int places[][2] = {{0, 0}, {3, 2}, {14, 11}, {-4, -2}, {-12, 3}};
    for (const auto& corner : places) {
        ASSERT_TRUE(Tavra_SetPreviewDestSize(handle, static_cast<std::uint32_t>(corner[0]),
                                             static_cast<std::uint32_t>(corner[1]), 12, 8));
        EXPECT_TRUE(looksLike(20, 15, picture(20, 15, corner[0], corner[1], 6, 4, 2)))
            << corner[0] << ' ' << corner[1];
    }
}

TEST_F(PreviewOfUser, ImageOfItsOwnSizeIsCopiedInTheSmoothModeToo) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    create(10, 9);
    show(1);
    EXPECT_TRUE(looksLike(10, 9, picture(10, 9, 2, 2, 6, 4)));
}

// How exactly is the system's matter: each pixel lies between the image's around it, and there are shades
// that the image has not.
TEST_F(PreviewOfUser, SmoothModeMixesNeighbours) {
    openMono();
    ASSERT_TRUE(Tavra_SetDisplayMode(handle, 8));
    ASSERT_TRUE(Tavra_SetAspectMode(handle, TAVRA_ASPECT_STRETCH));
    create(48, 32);
    show(1);
    const auto isBetween = [this](std::uint32_t seen, int x, int y) {
        const std::uint32_t least = grey(1, std::max(x - 1, 0), std::max(y - 1, 0));
        const std::uint32_t most =
            grey(1, std::min(x + 1, 5), std::min(y + 1, 3));  // they grow to both sides
        return seen == (seen & 0xFF) * 0x010101 && seen >= least && seen <= most;
    };
    EXPECT_TRUE(looks(48, 32, [&](const Pixels& seen) {
        bool mixed = false;
        for (int i = 0; i < 48 * 32; ++i) {
            const std::uint32_t pixel = seen[static_cast<std::size_t>(i)];
            if (!isBetween(pixel, i % 48 / 8, i / 48 / 8)) return false;
            mixed = mixed || (pixel & 0xFF) % 3 != 1;  // the image's own are 1, 4, 7 and so on
        }
        return mixed;
    }));
}

TEST_F(PreviewOfUser, IsBlackWithoutAnImage) {
    openMono();
    create(20, 10);
    EXPECT_TRUE(looksLike(20, 10, Pixels(200, 0)));
    const HDC dc = GetDC(window);
    EXPECT_EQ(SendMessageW(window, WM_ERASEBKGND, reinterpret_cast<WPARAM>(dc), 0), 1);
    ReleaseDC(window, dc);
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

TEST_F(PreviewOfUser, EndsWithItsParent) {
    openMono();
    ParentWindow parent;
    create(30, 20, WS_CHILD | WS_VISIBLE, parent.window());
    forgetAll();
    parent.destroy();
    EXPECT_EQ(expectMessage(45060), 0u);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
}

TEST_F(PreviewOfUser, IsDestroyedFromAnotherThreadToo) {
    openMono();
    create(30, 20);
    forgetAll();
    std::thread other([this] { EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)); });
    EXPECT_EQ(expectMessage(45060), 0u);  // this thread takes messages meanwhile
    other.join();
    EXPECT_FALSE(IsWindow(window));
}

TEST_F(PreviewOfUser, OfAThreadThatTakesNoMessagesIsLeftWithoutACamera) {
    openMono();
    create(30, 20);
    forgetAll();
    std::thread([this] { Tavra_Close(handle); }).join();
    ReceivedMessage got;
    ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    EXPECT_EQ(got.message, 45060u);
    handle = nullptr;
    pump();
    UpdateWindow(window);
    DestroyWindow(window);
}

// A window without a camera, whose painting takes until the test lets it go on.
class SlowPainting final : public platform::IWindowEvents {
  public:
    void onCreate(TavraWindow) override {}
    void onDestroy() override { ++ends; }
    void onMove() override {}
    void onSize(std::uint32_t, std::uint32_t, std::uint32_t) override {}
    void onPaint(platform::IPaint&, platform::Size) override {
        painting.set();
        endedMeanwhile = ended.wait(3000);  // longer than anybody waits for the thread
    }
    void onErase(platform::IPaint&) override {}
    void onCommand(std::uint64_t) override {}
    void onScroll(platform::Axis, platform::ScrollCode, std::int32_t) override {}
    void onMouse(const platform::MouseMessage&) override {}
    void onAltKey() override {}

    platform::Event painting{platform::Event::Reset::Manual}, ended{platform::Event::Reset::Manual};
    bool endedMeanwhile = false;
    int ends = 0;
};

// Whoever gets the events is freed then.
TEST(WindowOfUser, IsTakenFromItsThreadOnlyBetweenTwoEvents) {
    platform::IWindowSystem& system = platform::windowSystem();
    ASSERT_TRUE(system.registerClass(true).ok());
    SlowPainting events;
    platform::WindowRequest request;
    request.closable = true;
    request.style = kPopup;
    request.size = {30, 20};
    TavraWindow window = nullptr;
    ASSERT_TRUE(system.create(request, events, window).ok());
    std::thread other([&] {
        EXPECT_TRUE(events.painting.wait(kPatienceMs));
        EXPECT_TRUE(system.destroy(window).ok());
        events.ended.set();
    });
    const auto native = static_cast<HWND>(window);
    InvalidateRect(native, nullptr, FALSE);
    UpdateWindow(native);
    EXPECT_FALSE(events.endedMeanwhile);
    other.join();
    EXPECT_EQ(events.ends, 1);
    for (MSG message; PeekMessageW(&message, native, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
    if (IsWindow(native)) DestroyWindow(native);
    EXPECT_EQ(events.ends, 1);
    EXPECT_TRUE(system.unregisterClass(true).ok());
}

struct Subclassed {
    TavraHandle camera = nullptr;
    WNDPROC before = nullptr;
    int destructions = 0;
} subclassed;

LRESULT CALLBACK destroyAgain(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_DESTROY) {
        ++subclassed.destructions;
        EXPECT_TRUE(Tavra_DestroyPreviewWindow(subclassed.camera));
    }
    return CallWindowProcW(subclassed.before, window, message, first, second);
}

TEST_F(PreviewOfUser, ApplicationMayDestroyItInsideOfItsDestruction) {
    openMono();
    create(30, 20);
    forgetAll();
    subclassed = {};
    subclassed.camera = handle;
    subclassed.before = reinterpret_cast<WNDPROC>(
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(destroyAgain)));
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle));
    EXPECT_EQ(subclassed.destructions, 1);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
    expectNoMessage();
    create(30, 20);
}

TEST_F(PreviewOfUser, AltAndF4CloseIt) {
    openMono();
    create(30, 20);
    forgetAll();
    SendMessageW(window, WM_SYSKEYDOWN, VK_F4, LPARAM{1} << 29);  // with Alt held
    pump();
    EXPECT_FALSE(IsWindow(window));
    EXPECT_EQ(expectMessage(45060), 0u);
}

TEST_F(PreviewOfUser, WindowsOfTwoCamerasShareTheirClass) {
    openMono();
    describe(1, 1, 6, 4);
    const TavraHandle other = Tavra_Open(0);
    ASSERT_NE(other, nullptr);
    ASSERT_TRUE(Tavra_CreatePreviewWindowW(other, nullptr, kPopup, 50, 0, 10, 8, nullptr, nullptr, 1));
    create(30, 20);
    EXPECT_TRUE(Tavra_DestroyPreviewWindow(handle)) << "the class stays for the other window";
    create(30, 20);
    Tavra_Close(other);
    EXPECT_TRUE(IsWindow(window));
}

TEST_F(PreviewOfUser, ManyWindowsLeaveNothingBehind) {
    openMono();
    for (int i = 0; i < 100; ++i) {
        create(30, 20);
        if (i % 2 == 0) DestroyWindow(window);
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        ASSERT_FALSE(IsWindow(window));
        forgetAll();
    }
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
