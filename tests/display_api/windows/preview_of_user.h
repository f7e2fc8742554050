// A camera whose preview is in a window of USER, and what is to be seen there.
#pragma once

#include <windows.h>

#include <array>
#include <cstdint>
#include <vector>

#include "capture_api/stream_fixture.h"

namespace tavra::test {

inline constexpr DWORD kPopup = WS_POPUP | WS_VISIBLE;  // without a frame

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

}  // namespace tavra::test
