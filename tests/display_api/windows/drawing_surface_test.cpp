// The display modes that draw through surfaces on the screen of Windows: image, background and the
// application's drawing.
#include <windows.h>

#include "capture_api/stream_fixture.h"
#include "support/drawing.h"

namespace tavra::test {
namespace {

constexpr int kTop = 800, kWidth = 12, kHeight = 9;
constexpr COLORREF kRed = 0x0000FF, kKey = 0xFF00FF;

// Shows a mono camera with images of 6 x 4 pixels, which land at (3, 2) of the client area. Each test has a
// place of its own on the screen, far from those of other tests that run at the same time.
class DrawingSurface : public StreamTest {
  protected:
    using Picture = std::vector<COLORREF>;

    void showImage(std::uint8_t mode, int place) {
        left_ = place;
        openCamera(1, 1, 6, 4);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
        ASSERT_TRUE(Tavra_SetDisplayMode(handle, mode));
        ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, u"Preview", WS_POPUP | WS_VISIBLE,
                                               static_cast<std::uint32_t>(place), kTop, kWidth, kHeight,
                                               nullptr, nullptr, 1))
            << std::hex << lastError();
        for (ReceivedMessage told; receiver.wait(told, 0);) {  // of the window's creation
        }
        start();
        sendFrame(1, pattern(1));
        EXPECT_EQ(expectMessage(45067), 1u);
    }
    template <typename ColorOf>
    static Picture pictureOf(ColorOf colorOf) {
        Picture picture(kWidth * kHeight, 0);
        for (std::size_t i = 0; i < 24; ++i) {
            const auto grey = static_cast<COLORREF>(1 + 3 * i);
            picture[(i / 6 + 2) * kWidth + i % 6 + 3] = colorOf(grey);
        }
        return picture;
    }
    static Picture image() {
        return pictureOf([](COLORREF grey) { return grey * 0x010101; });
    }
    void drawRed() {
        TavraDC dc = nullptr;
        ASSERT_TRUE(Tavra_GetDCWithReset(handle, &dc));
        ASSERT_NE(dc, nullptr);
        EXPECT_TRUE(fillRectangle(dc, {1, 1, 3, 1}, {255, 0, 0}));
        EXPECT_TRUE(Tavra_ReleaseDC(handle, dc));
    }
    // Serves the window until the screen looks like this, as far as the bits in `mask` go. False: it did not
    // within ten seconds.
    bool looksLike(const Picture& expected, COLORREF mask = 0xFFFFFF) const {
        const ULONGLONG end = GetTickCount64() + kPatienceMs;
        while (GetTickCount64() < end) {
            MSG message;
            while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
            if (screen(mask) == expected) return true;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
        }
        return false;
    }
    Picture screen(COLORREF mask) const {
        Picture picture;
        const HDC dc = GetDC(nullptr);
        for (int i = 0; i < kWidth * kHeight; ++i) {
            picture.push_back(GetPixel(dc, left_ + i % kWidth, kTop + i / kWidth) & mask);
        }
        ReleaseDC(nullptr, dc);
        return picture;
    }
    static void paintRed(Picture& picture) {
        for (const int at : {3 * kWidth + 4, 3 * kWidth + 5, 3 * kWidth + 6}) {
            picture[static_cast<std::size_t>(at)] = kRed;
        }
    }

  private:
    int left_ = 0;
};

TEST_F(DrawingSurface, ImageIsInTheMiddleOfBlackStrips) {
    showImage(3, 900);
    EXPECT_TRUE(looksLike(image()));
    stopAndExpectCode(0);
}

TEST_F(DrawingSurface, DrawingShowsOverTheImageUntilItIsReset) {
    showImage(3, 1000);
    EXPECT_TRUE(looksLike(image()));
    drawRed();
    Picture drawn = image();
    paintRed(drawn);
    EXPECT_TRUE(looksLike(drawn));
    EXPECT_TRUE(Tavra_ResetOverlay(handle));
    EXPECT_TRUE(looksLike(image()));
    stopAndExpectCode(0);
}

TEST_F(DrawingSurface, FormatsOf16BitsKeepFiveAndSixBits) {
    showImage(1, 1100);
    constexpr COLORREF kKept = 0xF8FCF8;  // how the others are filled up is the system's matter
    EXPECT_TRUE(looksLike(pictureOf([](COLORREF grey) { return grey * 0x010101 & kKept; }), kKept));
    stopAndExpectCode(0);
}

// What an overlay shows cannot be read from the screen: that has the key.
TEST_F(DrawingSurface, OverlayHasTheKeyAndTheDrawingOnTheScreen) {
    showImage(2, 1200);
    Picture expected = pictureOf([](COLORREF) { return kKey; });
    EXPECT_TRUE(looksLike(expected));
    drawRed();
    paintRed(expected);
    EXPECT_TRUE(looksLike(expected));
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
