// A camera whose preview is in a window on a part of the screen that is the test's own, and what is to be
// seen there.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <thread>
#include <vector>

#include "capture_api/stream_fixture.h"
#include "platform/rectangle.h"
#include "support/drawing.h"

namespace tavra::test {

using platform::Size;

// Of the screen, row by row.
using Picture = std::vector<COLORREF>;

inline constexpr COLORREF kAnything = 0xFF000000;  // in a picture that is expected
inline constexpr COLORREF kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000, kMagenta = 0xFF00FF;

// Shows a mono camera, whose preview is the frame itself.
class PreviewOnScreen : public StreamTest {
  protected:
    // The suite's rows on the screen begin at `top`. Its tests have places side by side, since several of
    // them may run at a time.
    explicit PreviewOnScreen(int top) {
        const testing::UnitTest& all = *testing::UnitTest::GetInstance();
        const testing::TestSuite& suite = *all.current_test_suite();
        int index = 0;
        while (suite.GetTestInfo(index) != all.current_test_info()) ++index;
        left_ = index % kInARow * kPitch;
        top_ = top + index / kInARow * kPitch;
    }
    ~PreviewOnScreen() override {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }

    void openMode(std::uint8_t mode, std::uint32_t width = 6, std::uint32_t height = 4) {
        openCamera(1, 1, width, height);
        imageWidth_ = width;
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        forgetPlaces();
    }
    // False: there is none, and the last error tells why.
    bool tryWindow(Size size) {
        client = size;
        if (!Tavra_CreatePreviewWindowW(handle, u"Preview", WS_POPUP | WS_VISIBLE,
                                        static_cast<std::uint32_t>(left_), static_cast<std::uint32_t>(top_),
                                        size.width, size.height, nullptr, nullptr, 1))
            return false;
        TavraWindow known = nullptr;
        EXPECT_TRUE(Tavra_GetPreviewWnd(handle, &known));
        window = static_cast<HWND>(known);
        return true;
    }
    void createWindow(Size size) {
        ASSERT_TRUE(tryWindow(size)) << std::hex << lastError();
        std::uint64_t told = 0;
        for (ReceivedMessage got; told == 0 && receiver.wait(got, kPatienceMs);) {
            if (got.message == 45059) told = got.parameter2;
        }
        EXPECT_EQ(told, reinterpret_cast<std::uintptr_t>(window));
    }
    // Moves it by so much, and makes it so large.
    void moveBy(int right, int down, Size size) {
        client = size;
        ASSERT_TRUE(Tavra_SetPreviewWindowSize(handle, static_cast<std::uint32_t>(left_ + right),
                                               static_cast<std::uint32_t>(top_ + down), size.width,
                                               size.height));
        forgetAll();  // of sizes
    }
    // No drawing has failed.
    void endWindow() {
        ASSERT_TRUE(Tavra_DestroyPreviewWindow(handle));
        EXPECT_EQ(expectMessage(45060), 0u);
    }
    // As the user does; frame 2 comes when the window is gone.
    void closeByUser() {
        collectRaw();
        PostMessageW(window, WM_CLOSE, 0, 0);
        pump();
        EXPECT_FALSE(IsWindow(window));
        EXPECT_EQ(expectMessage(45060), 0u);
        sendFrame(2, pattern(2));
        EXPECT_EQ(raws.waitFor(1).size(), 1u);
        TavraDC dc = nullptr;
        EXPECT_FALSE(Tavra_GetDC(handle, &dc));
        EXPECT_EQ(lastError(), TAVRA_ERROR_NO_WINDOW);
    }
    // Ends the window, and creates one of another mode.
    void changeMode(std::uint8_t next) {
        EXPECT_FALSE(Tavra_SetDisplayMode(handle, next));
        EXPECT_EQ(lastError(), TAVRA_ERROR_WINDOW_EXISTS);
        endWindow();
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, next));
        createWindow(client);
        TavraDC dc = nullptr;
        const bool plain = next == 0;
        EXPECT_EQ(Tavra_GetDC(handle, &dc), !plain);
        if (plain) {
            EXPECT_EQ(lastError(), TAVRA_ERROR_LEGACY_CAMERA);
        } else {
            EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
        }
    }
    // Nobody else gets one, and no other thread releases it.
    void expectContextOfThisThread(TavraDC dc) {
        TavraDC second = nullptr;
        ASSERT_TRUE(Tavra_GetDC(handle, &second));
        EXPECT_EQ(second, nullptr);
        EXPECT_EQ(lastError(), 1131u);
        std::thread([&] { EXPECT_TRUE(Tavra_ReleaseDC(handle, dc)); }).join();
        EXPECT_EQ(lastError(), 288u);
    }
    // Draws when the window is gone, and creates another.
    void drawBeyondTheWindow() {
        TavraDC dc = nullptr;
        ASSERT_TRUE(Tavra_GetDC(handle, &dc));
        ASSERT_NE(dc, nullptr);
        endWindow();
        EXPECT_TRUE(fillRectangle(dc, {0, 0, 6, 4}, {0, 255, 0}));
        EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
        EXPECT_FALSE(Tavra_ReleaseDC(handle, dc));
        EXPECT_EQ(lastError(), TAVRA_ERROR_NO_WINDOW);
        createWindow(client);
    }
    void forgetAll() {
        for (ReceivedMessage got; receiver.wait(got, 0);) {
        }
    }
    void show(std::uint32_t number) {
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        EXPECT_EQ(expectMessage(45067), number);
    }
    // Opens the camera and a window, and shows the first frame.
    void showImage(std::uint8_t mode, Size size) {
        openMode(mode);
        createWindow(size);
        start();
        show(1);
    }

    // The grey of the frame at (x, y), as the screen has it.
    COLORREF grey(std::uint32_t number, std::uint32_t x, std::uint32_t y) const {
        return static_cast<std::uint8_t>(number + 3 * (y * imageWidth_ + x)) * 0x010101u;
    }
    // A frame of 6 x 4 pixels, unscaled, with its corner at (left, top) of the black client area.
    Picture imageAt(std::uint32_t number, std::uint32_t left, std::uint32_t top) const {
        Picture picture(std::size_t{client.width} * client.height, 0);
        for (std::uint32_t i = 0; i < 24; ++i)
            picture[(i / 6 + top) * client.width + i % 6 + left] = grey(number, i % 6, i / 6);
        return picture;
    }
    void paint(Picture& picture, const Rectangle& area, COLORREF color) const {
        for (int y = area.y; y < area.y + area.height; ++y) {
            for (int x = area.x; x < area.x + area.width; ++x)
                picture[static_cast<std::size_t>(y) * client.width + static_cast<std::size_t>(x)] = color;
        }
    }
    void drawOn(const Rectangle& rectangle, const Color& color) {
        TavraDC dc = nullptr;
        ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
        ASSERT_NE(dc, nullptr) << std::hex << lastError();
        EXPECT_TRUE(fillRectangle(dc, rectangle, color));
        EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    }

    void pump() const {
        for (MSG message; PeekMessageW(&message, window, 0, 0, PM_REMOVE);) DispatchMessageW(&message);
    }
    // Serves the window until the screen is accepted. False: it was not within ten seconds.
    template <typename Accepts>
    bool looks(Accepts accepts) const {
        const ULONGLONG end = GetTickCount64() + kPatienceMs;
        do {
            pump();
            if (accepts(screen())) return true;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        } while (GetTickCount64() < end);
        return false;
    }
    bool looksLike(const Picture& expected) const { return looksNearly(expected, 0); }
    // Channels may be off by so much.
    bool looksNearly(const Picture& expected, int tolerance) const {
        const auto isClose = [tolerance](COLORREF seen, COLORREF asked) {
            if (asked == kAnything) return true;
            for (const unsigned shift : {0u, 8u, 16u}) {
                const int one = seen >> shift & 0xFF, other = asked >> shift & 0xFF;
                if (std::abs(one - other) > tolerance) return false;
            }
            return true;
        };
        return looks([&](const Picture& seen) {
            return std::equal(seen.begin(), seen.end(), expected.begin(), expected.end(), isClose);
        });
    }
    // The client area, as all of the screen's users see it.
    Picture screen() const {
        POINT corner{};
        ClientToScreen(window, &corner);
        Picture picture;
        const HDC dc = GetDC(nullptr);
        for (int y = 0; y < static_cast<int>(client.height); ++y) {
            for (int x = 0; x < static_cast<int>(client.width); ++x)
                picture.push_back(GetPixel(dc, corner.x + x, corner.y + y));
        }
        ReleaseDC(nullptr, dc);
        return picture;
    }

    HWND window = nullptr;
    Size client;

  private:
    static constexpr int kPitch = 40, kInARow = 32;

    int left_ = 0, top_ = 0;
    std::uint32_t imageWidth_ = 0;
};

}  // namespace tavra::test
